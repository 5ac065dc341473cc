"""Stand-ins for the libraries of the speech recogniser and the eye tracker; see tests/doubles/."""

import shutil

from gi.repository import GLib

from desk.accessible import Program
from desk.waiting import wait_for

# Of each kind: the library, the device, and its card on the program's first page.
KINDS = {"speech": ("libvosk", "voice", "Komendy głosowe"), "adapter": ("libvosk_adapter", "voice", "Komendy głosowe"),
         "gaze": ("tobii_stream_engine", "gaze", "Tobii Eye Tracker")}


def wait_until_published(screen, name):
    """Until a program has told assistive technology what it shows."""
    published = Program(screen, name)
    wait_for(f"the buttons of {name}", lambda: any(
        window.look_for(lambda widget: widget.role() == "push button") for window in published.children()))


class Device:
    """One of the two devices of the program on a desk, with a double of its library; with none where that is
    "nowhere"."""

    def __init__(self, desk, kind, variant="complete", script="", **settings):
        name, device, self.card = KINDS[kind]
        folder = desk.screen.folder / f"{kind}-{variant}"
        folder.mkdir(exist_ok=True)
        files = desk.screen.folder
        self.desk, self.script, self.log_file = desk, files / f"{kind}_script.txt", files / f"{kind}_log.txt"
        self.log_file.unlink(missing_ok=True)
        self.library = folder / desk.target.library_file(name)
        if variant != "nowhere":
            shutil.copy(desk.doubles / variant / self.library.name, self.library)
        path = desk.target.path_text(self.library)
        self.settings = {f"{device}Enabled": True, f"{device}DllPath": path} | settings
        self.write(script)
        desk.variables["DOUBLES_FOLDER"] = desk.target.path_text(files)
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def write(self, *lines):
        """In place of what the script held; all its lines at once."""
        made = self.script.with_suffix(".new")
        made.write_text("".join(f"{line}\n" for line in lines), encoding="utf-8")
        made.rename(self.script)

    def add(self, line):
        with open(self.script, "a", encoding="utf-8") as script:
            script.write(f"{line}\n")

    def log(self):
        return self.log_file.read_text(encoding="utf-8").splitlines() if self.log_file.exists() else []

    def count(self, call):
        """Lines of the log that begin with this text."""
        return sum(line.startswith(call) for line in self.log())

    def wait_for_call(self, call, times=1):
        wait_for(f"{times} x {call} of the library", lambda: self.count(call) >= times)

    def wait_for_status(self, text):
        """The words of the device's card, where programs tell what they show."""
        if not self.desk.target.is_accessible:
            return

        def shown():
            try:
                value = Program(self.desk.screen, "Rotika").look_for(  # described by the card's title
                    lambda widget: widget.role() == "label" and widget.description() == self.card)
                return value.name() if value else ""
            except GLib.Error:  # of a program that has just ended
                return ""

        wait_for(f"the status {text}", lambda: shown().partition(" ·")[0] == text)
