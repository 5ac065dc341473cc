"""The desk: a screen, real mouse and keyboard, a recorder window in front, and the program in a folder of its own."""

import json
import math
import os
import shutil
import signal
from contextlib import suppress
from pathlib import Path

import numpy

from desk.input_devices import Keyboard, Mouse, place_cursor
from desk.screen import Screen
from desk.target import make_target
from desk.waiting import TIMEOUT_S, DeskError, holds_within, wait_for
from desk.x11 import save_png

LAYER, CENTRE = (588, 460), (294, 230)
TOGGLE_KEY = "x"
KEYCODES = {"F13": 191}  # as pedals and switch interfaces send it, whatever the layout's keysym
ATTEMPTS = 8  # on a target where input may be lost or doubled
SHIFT, CONTROL, ALT = 1, 4, 8  # modifier bits in an event's state


def field(*steps, **more):
    """A field whose steps are key names, or (key, action, value) with the last two optional."""
    made = [step if isinstance(step, dict) else
            dict(zip(("key", "action", "value"), (step,) if isinstance(step, str) else step)) for step in steps]
    return {"name": str(steps[0] if steps else ""), "steps": made} | more


def field_point(index, count, radius=150):
    turn = 2 * math.pi * (index + 0.5) / count
    return CENTRE[0] + round(math.sin(turn) * radius), CENTRE[1] - round(math.cos(turn) * radius)


class Desk:
    """`program` is the folder of the program under test, `target` the system it was built for: linux or windows."""

    toggle_key = TOGGLE_KEY

    def __init__(self, program, target="linux"):
        self.screen = Screen()
        self.display = self.screen.display
        self.target = make_target(target, self.screen)
        self.mouse, self.keyboard = Mouse(self.display), Keyboard(self.display)
        self.open_timeout_s = TIMEOUT_S if self.target.input_is_exact else 3.0
        self.original, self.folder = Path(program), self.screen.folder / "program"
        self.program = self.recorder = None
        self.variables = {}
        self.before = self.state()

    def write(self, name, value):
        (self.folder / name).write_text(json.dumps(value, ensure_ascii=False, indent=1), encoding="utf-8")

    def read(self, name):
        return (self.folder / name).read_text(encoding="utf-8")

    def prepare(self, *fields, name="Koło", more=(), **settings):
        """Writes the program's files: a wheel of these fields, and `more` wheels in the file's own format."""
        if not self.folder.exists() or not any(self.folder.iterdir()):
            shutil.copytree(self.original, self.folder, dirs_exist_ok=True,
                            ignore=shutil.ignore_patterns("config.json", "default.json", "voice.json"))
        self.write("config.json", {"toggleKey": TOGGLE_KEY, "gazeEnabled": False, "voiceEnabled": False} | settings)
        self.write("default.json", {"wheels": [{"name": name, "actions": list(fields)}, *more]})
        self.field_count = len(fields)
        self.toggle_key = KEYCODES.get(name := settings.get("toggleKey", TOGGLE_KEY), name)

    def remember_wheel_file(self, name):
        """As the file that the program opens at its start."""
        file = self.screen.folder / "home/.config/Rotika/UI.conf"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"[General]\nlastWheelFile={self.folder / name}\n")

    def ui_setting(self, name):
        lines = (self.screen.folder / "home/.config/Rotika/UI.conf").read_text().splitlines()
        return dict(line.partition("=")[::2] for line in lines).get(name)

    def launch_program(self, *words, **more):
        return self.screen.launch(*self.target.command(self.folder / self.target.executable, *words),
                                  variables=self.variables, **more)

    def start_program(self, **more):
        self.program = self.launch_program(**more)
        wait_for("the program's window in front", lambda: self.is_in_front("Rotika"), 60)

    def start(self, *fields, cursor=(450, 350), **settings):
        """Program running, recorder in front, cursor at its position, nothing recorded yet."""
        self.prepare(*fields, **settings)
        self.start_program()
        self.work_in_recorder(cursor)

    def work_in_recorder(self, cursor=(450, 350)):
        self.recorder = self.recorder or self.target.recorder()
        self.display.activate(self.recorder.window.value)
        wait_for("the recorder in front", lambda: self.is_in_front("recorder"))
        self.recorder.mark()
        place_cursor(self.display, *cursor)
        self.mouse.move(1, 1)
        self.mouse.move(-1, -1)
        self.recorder.wait_for_motion()
        self.recorder.mark()

    def click(self):
        """In the recorder; waits, since a window manager may pass a press on late."""
        before = self.recorder.presses().count("button-up left")
        self.mouse.click()
        self.recorder.wait_for("button-up left", before + 1)

    def is_in_front(self, title):
        if self.program.poll() is not None:
            raise DeskError(f"the program exited on its own with {self.program.returncode}")
        return self.display.focused_title() == self.display.active_title() == title

    def notes(self):
        """What the target's opener has been called with so far."""
        file = self.screen.folder / "notes.txt"
        return file.read_text().splitlines() if file.exists() else []

    def wheel(self):
        return self.display.shown_layer(*LAYER)

    def mouse_is_held(self):
        return self.target.mouse_is_held(self.program)

    def _arrow_tips(self):
        """Per pixel of the layer, whether the virtual cursor's tip may be there: a white arrow with a black edge on
        its left. Some pixels above and below the tip match too. Reads the layer's own picture: a compositor
        occasionally misses one of many openings in a row."""
        (width, height), whole = LAYER, numpy.zeros((*LAYER[::-1], 3))
        with suppress(AttributeError, OSError):  # closed in the meantime
            whole = self.display.picture(self.wheel().id)
        # Padded by the arrow's overhang on the right and below, and by one column on the left.
        seen = numpy.pad(whole, ((0, 20), (1, 9), (0, 0)), constant_values=200)
        white, dark = seen.min(2) > 247, seen.max(2) < 140

        def at(points, dx, dy):
            return points[dy:dy + height, dx + 1:dx + 1 + width]

        return numpy.logical_and.reduce([at(white, *place) for place in ((2, 6), (2, 12), (2, 17), (6, 12))] +
                                        [at(dark, 0, dy) | at(dark, -1, dy) for dy in (6, 12, 17)])

    def wheel_cursor_is_at(self, x, y):
        return self._arrow_tips()[y, x]

    def find_wheel_cursor(self):
        tips = numpy.argwhere(self._arrow_tips())
        return tuple(int(value) for value in tips[len(tips) // 2][::-1]) if len(tips) else None

    def wait_until_open(self):
        wait_for("the wheel", self.wheel)
        self.virtual = CENTRE
        for _ in range(1 if self.target.input_is_exact else ATTEMPTS):
            if holds_within(self.open_timeout_s, lambda: self.wheel_cursor_is_at(*CENTRE) and self.mouse_is_held()):
                return
            for is_open in (False, True):  # close and open again where an opening may fail
                self.keyboard.tap(self.toggle_key)
                wait_for("another attempt", lambda: bool(self.wheel()) == is_open)
        raise DeskError("the wheel's cursor is not in the middle or the mouse is not captured")

    def wait_until_closed(self):
        wait_for("the wheel to close and release the mouse", lambda: not self.wheel() and not self.mouse_is_held())

    def open_wheel(self):
        self.keyboard.tap(self.toggle_key)
        self.wait_until_open()

    def close_wheel(self):
        self.keyboard.tap(self.toggle_key)
        self.wait_until_closed()

    def aim(self, where):
        """Moves the virtual cursor onto a field (by index) or a point of the layer."""
        x, y = field_point(where, self.field_count) if isinstance(where, int) else where
        for attempt in range(1 if self.target.input_is_exact else ATTEMPTS):
            part = 1 + attempt % 2  # half the distance every other time, for movements that arrive twice
            self.mouse.move(int((x - self.virtual[0]) / part), int((y - self.virtual[1]) / part))
            self.virtual = (x, y)
            if holds_within(self.open_timeout_s, lambda: self.wheel_cursor_is_at(x, y)):
                return
            # Correct from where the cursor is seen, or else from the corner.
            if not (found := self.find_wheel_cursor()):
                self.mouse.move(-2 * LAYER[0], -2 * LAYER[1])
            self.virtual = found or (0, 0)
        raise DeskError(f"the virtual cursor did not reach {x}, {y}")

    def pick(self, where):
        self.aim(where)
        self.mouse.click()
        self.wait_until_closed()

    def choose(self, where):
        self.open_wheel()
        self.pick(where)

    def wait_for_hot_key_with(self, *modifiers):
        """Waits until the toggle key works beside modifiers that a function holds, shortly after they go down."""
        wait_for("the hot key", lambda: self.target.hot_key_is_taken(TOGGLE_KEY, sum(modifiers)), 3)

    def guard(self):
        """The process id of the running input guard, or None. A zombie has no command line."""
        for file in Path("/proc").glob("[0-9]*/cmdline"):
            with suppress(OSError):  # ended in the meantime
                line = file.read_bytes()
                if b"rotika-guard" in line and self.screen.folder.name.encode() in line:
                    return int(file.parent.name)
        return None

    def kill_program(self):
        self.program.kill()
        self.program.wait(TIMEOUT_S)

    def kill_guard(self):
        os.kill(guard := wait_for("a guard", self.guard), signal.SIGKILL)
        return guard

    def end_program(self):
        if self.program and self.program.poll() is None:
            self.target.ask_to_quit(self.program)
        return self.program and self.program.poll()

    def lock_screen(self, is_locked):
        """By XScreenSaver's root property: the state, since when, and whether by hand."""
        state = self.display.atom("LOCK").value if is_locked else 0
        self.screen.run("xprop", "-root", "-f", "_SCREENSAVER_STATUS", "32i", "-set", "_SCREENSAVER_STATUS",
                        f"{state},1700000000,1")

    def state(self):
        return {"floating": self.display.floating(), "keys": self.target.keys_down(),
                "buttons": self.target.buttons_down(), "not repeating": set(range(256)) - self.display.repeating_keys()}

    def next_motion(self):
        """How far a motion of the real mouse by 3, 3, away from the nearer edges, moves the cursor that way."""
        before = self.display.cursor()
        signs = [1 if position < size / 2 else -1 for position, size in zip(before, self.screen.size)]
        self.mouse.move(*(3 * sign for sign in signs))
        return tuple((now - then) * sign for now, then, sign in zip(self.display.cursor(), before, signs))

    def leftovers(self, ignored=(), seconds=2):
        """As texts: what is floating, down or without auto-repeat that was not so at the start and stays so beyond
        the time, and a cursor that does not follow the mouse. A function that is still running may press and release
        during that time."""
        def new():
            return [f"{what}: {sorted(now - self.before[what])}" for what, now in self.state().items()
                    if what not in ignored and now - self.before[what]]

        found = [] if holds_within(seconds, lambda: not new()) else new()
        moved = self.next_motion()  # once only: the first motion applies what the device has accumulated
        return found + ([] if moved == (3, 3) else [f"a motion of 3, 3 moved the cursor by {moved}"])

    def keep(self, folder, name):
        """Screenshot, records and the programs' logs, for a failure."""
        folder.mkdir(parents=True, exist_ok=True)
        save_png(self.display.picture(), folder / f"{name}.png")
        (folder / f"{name}.txt").write_text("\n".join(
            [f"wheel: {self.wheel()}", f"now: {self.state()}", f"keyboard: {self.display.focused_title()}",
             *map(repr, self.recorder.all() if self.recorder else ()),
             *(f"\n{log.name}:\n{log.read_text(errors='replace')}" for log in self.screen.folder.glob("*.log"))]))

    def close(self):
        self.end_program()
        if self.recorder:
            self.recorder.close()
        self.target.finish()
        self.screen.close()
