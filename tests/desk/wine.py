"""The Windows build of the program under Wine: the same screen, mouse and keyboard, a prefix of its own."""

import os
import shutil
import subprocess
from ctypes import c_ulong
from pathlib import Path

from desk.hands import Keyboard, Mouse
from desk.recorder import BUTTONS, Record, Recording
from desk.screen import end
from desk.waiting import GENEROUS_S, DeskError, holds_within, wait_for

ROOT = Path(__file__).parents[2]
SCRIPT = ROOT / "scripts/wine.sh"
PREFIX = ROOT / "build/wine-prefix"
HELPER = ROOT / "build/windows/tests/desk/windows/desk_helper.exe"
# The names of virtual keys, as X has them for keys without shift.
KEYS = {1: "left", 2: "right", 4: "middle", 5: "side1", 6: "side2", 8: "BackSpace", 9: "Tab", 13: "Return",
        16: "Shift_L", 17: "Control_L", 18: "Alt_L", 20: "Caps_Lock", 27: "Escape", 32: "space", 33: "Prior",
        34: "Next", 35: "End", 36: "Home", 37: "Left", 38: "Up", 39: "Right", 40: "Down", 45: "Insert", 46: "Delete",
        91: "Super_L", 175: "XF86AudioRaiseVolume", 179: "XF86AudioPlay"}
KEYS |= {code: chr(code).lower() for code in (*range(48, 58), *range(65, 91))} | {111 + n: f"F{n}" for n in range(1, 25)}
HOT_KEY_FLAGS = {1: 4, 4: 2, 8: 1}  # of shift, ctrl and alt by X11's bits
SERVER = shutil.which("/usr/lib/wine/wineserver64") or "wineserver"


def copy_prefix(made):
    """A prefix is large and nearly all of it is only read: what is not the registry is linked."""
    made.mkdir()
    for entry in PREFIX.iterdir():
        if entry.is_dir() and not entry.is_symlink():
            shutil.copytree(entry, made / entry.name, symlinks=True, copy_function=os.link)
        else:
            shutil.copy2(entry, made / entry.name, follow_symlinks=False)


class WineRecorder(Recording):
    """The window of a Windows program, read from the log that it writes."""

    def __init__(self, target):
        self.screen, self.records, self.held, self.read = target.screen, [], set(), 0
        self.log = self.screen.folder / "recorder.txt"
        self.log.write_text("")
        width, height = self.screen.size  # one row less: below a program that fills the screen Wine puts large layers
        self.process = target.launch(HELPER, "record", target.path_text(self.log), width, height - 1)
        display = self.screen.display
        wait_for("the recorder", lambda: display.active_title() == "recorder", 60)
        self.window = c_ulong(display.active_window())

    def close(self):
        end(self.process)

    def all(self):
        with open(self.log, encoding="ascii") as log:
            log.seek(self.read)
            lines, end_of_line, _ = log.read().rpartition("\n")
        self.read += len(lines + end_of_line)
        for time, kind, keys, state, x, y in map(str.split, lines.splitlines()):
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
        """Nothing tells when Wine has passed everything on, but it does so at once."""
        count = -1
        while count != len(self.all()):
            count = len(self.all())
            holds_within(0.1, lambda: len(self.all()) != count)

    def wait_for_motion(self):
        """To where the cursor is: Wine may tell of other places on the way."""
        place = self.screen.display.cursor()
        wait_for("the cursor's arrival in the recorder",
                 lambda: [record.place for record in self.since_mark("motion")][-1:] == [place])


class WineTarget:
    executable = "rotika.exe"
    runtime_folder = "win-x86_64"
    input_is_exact = is_accessible = False
    turns_per_press = 2

    def __init__(self, screen):
        self.screen, self.window = screen, None
        self.run(SCRIPT, "--prepare", variables={"WINEPREFIX": str(PREFIX)})
        copy_prefix(screen.folder / "prefix")
        screen.environment |= {"WINEPREFIX": str(screen.folder / "prefix"),
                               "DESK_NOTES": self.path_text(screen.folder / "notes.txt")}

    def run(self, *words, variables=()):
        """To its end; the exit status."""
        done = subprocess.run([str(word) for word in words], env=self.screen.environment | dict(variables),
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=6 * GENEROUS_S)
        return done.returncode

    def command(self, program, *words):
        return SCRIPT, program, *words

    def launch(self, program, *words):
        return self.screen.launch(*self.command(program, *words))

    def path_text(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def library_file(self, name):
        return f"{name}.dll"

    def hands(self):
        return Mouse(self.screen.display), Keyboard(self.screen.display)

    def recorder(self):
        self.window = WineRecorder(self)
        return self.window

    def mouse_is_held(self, program=None):
        """Wine pins the cursor by a grab, and by a window as large as the place where it may be, here of one pixel.
        That stays for a while when the program has died; asking for the grab would disturb it."""
        display = self.screen.display
        is_dead = program is not None and program.poll() is not None
        return not is_dead and display.shown_layer(1, 1, display.cursor()) is not None

    def keys_down(self):
        """For the programs, also by injection, which the X server knows nothing of."""
        return (self.window.held_now() if self.window else set()) - set(BUTTONS.values())

    def buttons_down(self):
        return {button for button, name in BUTTONS.items() if self.window and name in self.window.held_now()}

    def hot_key_is_taken(self, key, modifiers):
        flags = sum(flag for bit, flag in HOT_KEY_FLAGS.items() if bit & modifiers)
        return self.tell_engine("taken", ord(key.upper()), flags) == 1

    def tell_engine(self, *words):
        return self.run(*self.command(HELPER, *words))

    def ask_to_quit(self, process):
        self.tell_engine("quit")
        holds_within(2 * GENEROUS_S, lambda: process.poll() is not None)
        return end(process)

    def add_to_registry(self, key, text, name=None):
        """Without a name it is the key's own text."""
        where = ("/v", name) if name else ("/ve",)
        if self.run(*self.command("reg", "add", key, *where, "/d", text, "/f")):
            raise DeskError(f"could not write {key} into the registry")

    def save_theme(self, theme):
        self.add_to_registry(r"HKCU\Software\Rotika\UI", theme, "theme")

    def opener(self):
        return HELPER

    def set_handler(self, handler):
        command = f'"{self.path_text(handler)}" "%1"'
        self.add_to_registry(r"HKCR\.txt", "handledfile")
        self.add_to_registry(r"HKCR\handledfile\shell\open\command", command)
        self.add_to_registry(r"HKCR\handled", "", "URL Protocol")
        self.add_to_registry(r"HKCR\handled\shell\open\command", command)

    def finish(self):
        if "WINEPREFIX" in self.screen.environment:
            self.run(SERVER, "-k")
