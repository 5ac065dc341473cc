"""The Windows build of the program under Wine: the same screen, mouse and keyboard, a private prefix."""

import shutil
import subprocess
from ctypes import c_ulong
from pathlib import Path

from desk.recorder import BUTTONS, Record, Recording
from desk.screen import end
from desk.waiting import TIMEOUT_S, DeskError, holds_within, wait_for

ROOT = Path(__file__).parents[2]
SCRIPT = ROOT / "scripts/wine.sh"
PREFIX = ROOT / "build/wine-prefix"
HELPER = ROOT / "build/windows/tests/desk/windows/desk_helper.exe"
# Virtual key codes to X's names of the unshifted keys, and to button names.
KEYS = {1: "left", 2: "right", 4: "middle", 5: "side1", 6: "side2", 8: "BackSpace", 9: "Tab", 13: "Return",
        16: "Shift_L", 17: "Control_L", 18: "Alt_L", 20: "Caps_Lock", 27: "Escape", 32: "space", 33: "Prior",
        34: "Next", 35: "End", 36: "Home", 37: "Left", 38: "Up", 39: "Right", 40: "Down", 45: "Insert", 46: "Delete",
        91: "Super_L", 175: "XF86AudioRaiseVolume", 179: "XF86AudioPlay"}
KEYS |= {code: chr(code).lower() for code in (*range(48, 58), *range(65, 91))} | {111 + n: f"F{n}" for n in range(1, 25)}
SERVER = shutil.which("/usr/lib/wine/wineserver64") or "wineserver"


def copy_prefix(made):
    """A prefix is large and mostly read-only, so everything but the registry is hard-linked where possible."""
    if subprocess.run(["cp", "-alT", PREFIX.resolve(), made], stderr=subprocess.DEVNULL).returncode != 0:
        subprocess.run(["cp", "-aT", PREFIX.resolve(), made], check=True)
    for registry in PREFIX.glob("*.reg"):
        (made / registry.name).unlink()
        shutil.copy2(registry, made)
    return made


class WineRecorder(Recording):
    """The window of a Windows program, read from the log that it writes."""

    def __init__(self, target):
        self.screen = target.screen
        self.log = self.screen.folder / "recorder.txt"
        self.log.write_text("")
        width, height = self.screen.size  # one row less: Wine puts large layers below a program that fills the screen
        self.process = self.screen.launch(SCRIPT, HELPER, "record", target.path_text(self.log), width, height - 1)
        display = self.screen.display
        wait_for("the recorder", lambda: display.active_title() == "recorder", 60)
        self.window = c_ulong(display.active_window())

    def close(self):
        end(self.process)

    def all(self):
        self.records, self.held = [], set()
        for line in self.log.read_text(encoding="ascii").rpartition("\n")[0].splitlines():
            time, kind, keys, state, x, y = line.split()
            names = [KEYS.get(int(key), "-") for key in keys.split(",")]
            if kind == "held":
                self.held = set(names) - {"-"}
            else:
                self.records.append(Record(kind, names[0], 0, int(state), int(time), (int(x), int(y))))
        return self.records

    def held_now(self):
        self.all()
        return self.held

    def settle(self):
        """Wine does not report when it has delivered everything, but it does so at once: waits for 100 ms of rest."""
        count = -1
        while count != len(self.all()):
            count = len(self.all())
            holds_within(0.1, lambda: len(self.all()) != count)

    def wait_for_motion(self):
        """Waits for a motion to the cursor's position: Wine may report intermediate ones first."""
        place = self.screen.display.cursor()
        wait_for("the cursor's arrival in the recorder",
                 lambda: [record.position for record in self.since_mark("motion")][-1:] == [place])


class WineTarget:
    executable = "rotika.exe"
    runtime_folder = "win-x86_64"
    input_is_exact = is_accessible = gives_focus = False
    has_tray = True
    turns_per_press = 2

    def __init__(self, screen):
        self.screen, self.window = screen, None
        screen.environment |= {"WINEPREFIX": str(PREFIX),
                               "DESK_NOTES": self.path_text(screen.folder / "notes.txt")}
        self.run(SCRIPT, "--prepare")
        screen.environment["WINEPREFIX"] = str(copy_prefix(screen.folder / "prefix"))

    def run(self, *words):
        """Runs a command to its end and returns the exit status."""
        return subprocess.run([str(word) for word in words], env=self.screen.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=6 * TIMEOUT_S).returncode

    def command(self, program, *words):
        return SCRIPT, program, *words

    def path_text(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def library_file(self, name):
        return f"{name}.dll"

    def recorder(self):
        self.window = WineRecorder(self)
        return self.window

    def mouse_is_held(self, program=None):
        """Wine confines the cursor by a grab and a window the size of the confinement, here one pixel. The window stays
        for a while after the program has died; testing the grab itself would disturb it."""
        display = self.screen.display
        is_dead = program is not None and program.poll() is not None
        return not is_dead and display.shown_layer(1, 1, display.cursor()) is not None

    def keys_down(self):
        """As Windows programs see them, including injected presses, which never reach the X server."""
        return (self.window.held_now() if self.window else set()) - set(BUTTONS.values())

    def buttons_down(self):
        return {button for button, name in BUTTONS.items() if self.window and name in self.window.held_now()}

    def hot_key_is_taken(self, key, modifiers):
        flags = sum(flag for bit, flag in {1: 4, 4: 2, 8: 1}.items() if bit & modifiers)  # of shift, ctrl and alt
        return self.run_helper("taken", ord(key.upper()), flags) == 1

    def run_helper(self, *words):
        return self.run(SCRIPT, HELPER, *words)

    def ask_to_quit(self, process):
        """As the system does at the end of a session; returns the exit status."""
        self.run_helper("end-session")
        holds_within(2 * TIMEOUT_S, lambda: process.poll() is not None)
        return end(process)

    def opener(self):
        return HELPER

    def set_handler(self, handler):
        command = f'"{self.path_text(handler)}" "%1"'
        for key, name, text in ((".txt", "", "handledfile"), (r"handledfile\shell\open\command", "", command),
                                ("handled", "URL Protocol", ""), (r"handled\shell\open\command", "", command)):
            if self.run(SCRIPT, "reg", "add", rf"HKCR\{key}", *(("/v", name) if name else ("/ve",)), "/d", text, "/f"):
                raise DeskError(f"could not write {key} into the registry")

    def finish(self):
        self.run(SERVER, "-k")
