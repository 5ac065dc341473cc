"""The Windows build of the program under Wine: the same screen, mouse and keyboard, a prefix of its own."""

import os
import shutil
import subprocess
from ctypes import c_ulong
from pathlib import Path

from desk.hands import LEFT, Keyboard, Mouse
from desk.recorder import Record, Recording
from desk.screen import end
from desk.waiting import GENEROUS_S, DeskError, holds_within, wait_for
from desk.x11 import xtest

ROOT = Path(__file__).parents[2]
SCRIPT = ROOT / "scripts/wine.sh"
PREFIX = ROOT / "build/wine-prefix"
HELPER = ROOT / "build/windows/tests/desk/windows/desk_helper.exe"
SERVERS = ("/usr/lib/wine/wineserver64", "wineserver")  # Debian's, others'


def copy_prefix(made):
    """A prefix is large and nearly all of it is only read: what is not the registry is linked."""
    made.mkdir()
    for entry in PREFIX.iterdir():
        if entry.is_dir() and not entry.is_symlink():
            shutil.copytree(entry, made / entry.name, symlinks=True, copy_function=os.link)
        else:
            shutil.copy2(entry, made / entry.name, follow_symlinks=False)


class TestMouse(Mouse):
    """The core pointer's events: Wine hears these from any device."""

    def __init__(self, display):
        self.display = display

    def move(self, dx, dy):
        xtest.XTestFakeRelativeMotionEvent(self.display.handle, dx, dy, c_ulong(0))
        self.display.sync()

    def press(self, button=LEFT, down=True):
        xtest.XTestFakeButtonEvent(self.display.handle, button, int(down), c_ulong(0))
        self.display.sync()


class TestKeyboard(Keyboard):
    def __init__(self, display):
        self.display = display

    def press(self, key, down=True):
        code = key if isinstance(key, int) else self.display.keycode(key)
        xtest.XTestFakeKeyEvent(self.display.handle, code, int(down), c_ulong(0))
        self.display.sync()


class WineRecorder(Recording):
    """The window of a Windows program, read from the log that it writes."""

    def __init__(self, target):
        self.screen, self.records, self.held, self.read = target.screen, [], set(), 0
        self.log = self.screen.folder / "recorder.txt"
        self.process = target.launch(HELPER, "record", target.path_text(self.log), *self.screen.size)
        display = self.screen.display
        wait_for("the recorder", lambda: display.active_title() == "recorder", 60)
        self.window = c_ulong(display.active_window())

    def close(self):
        end(self.process)

    def all(self):
        if self.log.exists():
            with open(self.log, encoding="ascii") as log:
                log.seek(self.read)
                lines, whole, _ = log.read().rpartition("\n")
                self.read += len(lines + whole)
            for line in lines.splitlines():
                time, kind, name, state, x, y = line.split()
                if kind == "held":
                    self.held = set(name.split(",")[1:])
                else:
                    self.records.append(Record(kind, name, 0, int(state), int(time), (int(x), int(y))))
        return self.records

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
    input_is_exact = False
    turns_per_press = 2

    def __init__(self, screen):
        self.screen = screen
        self.run(SCRIPT, "--prepare", variables={"WINEPREFIX": str(PREFIX)})
        copy_prefix(screen.folder / "prefix")
        screen.environment |= {"WINEPREFIX": str(screen.folder / "prefix"),
                               "DESK_NOTES": self.path_text(screen.folder / "notes.txt")}
        self.server = next(server for server in SERVERS if shutil.which(server))

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
        display = self.screen.display
        return TestMouse(display), TestKeyboard(display)

    def recorder(self):
        return WineRecorder(self)

    def mouse_is_held(self):
        """Wine pins the cursor by a window as large as the place where it may be, here of one pixel."""
        display = self.screen.display
        return display.shown_layer(1, 1, display.cursor()) is not None

    def tell_engine(self, *words):
        return self.run(*self.command(HELPER, *words))

    def ask_to_quit(self, process):
        self.tell_engine("quit")
        try:
            return process.wait(2 * GENEROUS_S)
        except subprocess.TimeoutExpired:
            return end(process)

    def save_theme(self, theme):
        self.add_to_registry({r"HKEY_CURRENT_USER\Software\Rotika\UI": {"theme": theme}})

    def opener(self):
        return HELPER

    def set_handler(self, handler):
        classes, command = r"HKEY_CLASSES_ROOT\%s", f'"{self.path_text(handler)}" "%1"'
        self.add_to_registry({classes % ".txt": {"": "handledfile"},
                              classes % r"handledfile\shell\open\command": {"": command},
                              classes % "handled": {"URL Protocol": ""},
                              classes % r"handled\shell\open\command": {"": command}})

    def add_to_registry(self, keys):
        """For each key the texts by name, the key's own under an empty one."""
        def quoted(text):
            return '"%s"' % text.replace("\\", r"\\").replace('"', r"\"")

        lines = ["REGEDIT4"]
        for key, values in keys.items():
            lines += ["", f"[{key}]"] + [f"{quoted(name) if name else '@'}={quoted(text)}"
                                         for name, text in values.items()]
        file = self.screen.folder / "values.reg"
        file.write_text("\n".join(lines) + "\n", encoding="cp1250")
        if self.run(*self.command("reg", "import", self.path_text(file))):
            raise DeskError(f"could not write {list(keys)} into the registry")

    def finish(self):
        if "WINEPREFIX" in self.screen.environment:
            self.run(self.server, "-k")
