"""Doubles of the libraries of the speech recogniser and the eye tracker; see tests/doubles/."""

import shutil

from desk.accessible import Program
from desk.waiting import wait_for

# For each kind: the library, the device, and the title of its card on the program's first page.
KINDS = {"speech": ("libvosk", "voice", "Komendy głosowe"), "adapter": ("libvosk_adapter", "voice", "Komendy głosowe"),
         "gaze": ("tobii_stream_engine", "gaze", "Tobii Eye Tracker")}


class Device:
    """Voice or gaze of the program on a desk, with a double of its library, or with none for "nowhere"."""

    def __init__(self, desk, kind, variant="complete", script="", **settings):
        name, device, self.card = KINDS[kind]
        folder = desk.screen.folder / f"{kind}-{variant}"
        folder.mkdir(exist_ok=True)
        files = desk.screen.folder
        self.desk, self.script, self.log_file = desk, files / f"{kind}_script.txt", files / f"{kind}_log.txt"
        self.log_file.write_text("")
        self.library = folder / desk.target.library_file(name)
        if variant != "nowhere":
            shutil.copy(desk.doubles / variant / self.library.name, self.library)
        path = desk.target.path_text(self.library)
        self.settings = {f"{device}Enabled": True, f"{device}DllPath": path} | settings
        self.write(script)
        desk.variables["DOUBLES_FOLDER"] = desk.target.path_text(files)
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def write(self, *lines):
        """Replaces the script atomically."""
        made = self.script.with_suffix(".new")
        made.write_text("\n".join([*lines, ""]), encoding="utf-8")
        made.rename(self.script)

    def add(self, line):
        with open(self.script, "a", encoding="utf-8") as script:
            script.write(f"{line}\n")

    def log(self):
        return self.log_file.read_text(encoding="utf-8").splitlines()

    def count(self, call):
        """Number of log lines that begin with this text."""
        return sum(line.startswith(call) for line in self.log())

    def wait_for_call(self, call, times=1):
        wait_for(f"{times} x {call} of the library", lambda: self.count(call) >= times)

    def wait_for_status(self, text):
        """Waits for the text of the device's card, on targets that publish their widgets."""
        wait_for(f"the status {text}", lambda: not self.desk.target.is_accessible or
                 Program(self.desk.screen, "Rotika").find_shown(lambda widget: widget.description() == self.card and
                                                              widget.name().partition(" ·")[0] == text))
