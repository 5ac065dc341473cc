"""Windows only: messages from other programs, the end of a stalled program, the engine's own editor and its tray."""

import signal

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.input_devices import RIGHT, place_cursor
from desk.waiting import TIMEOUT_S, holds_within, wait_for

pytestmark = pytest.mark.only("windows")

GUARD_S = 3  # by then the guard has acted on a stalled program


def test_other_programs_can_activate_a_wheel_file_and_stray_messages_do_no_harm(desk):
    def activate(name):
        return desk.target.run_helper("activate", desk.target.path_text(desk.folder / name))

    desk.prepare()
    desk.write("inne.json", {"wheels": [{"name": "", "actions": [field(key) for key in "cdef"]}]})
    desk.start(field("a"), field("b"), sendDelay=0)
    assert desk.target.run_helper("stray") == 0
    assert activate("nie-ma.json") == 0
    desk.open_wheel()
    assert activate("inne.json") == 1
    desk.field_count = 4
    desk.pick(1)  # an open wheel is repainted and stays usable
    desk.recorder.expect("d")


def test_a_short_stall_closes_the_wheel_on_resume_and_a_long_one_ends_the_program(desk):
    """Under Wine a stopped program keeps its grab of the X pointer until it ends, even when the clip is lifted."""
    desk.start(field("a"), sendDelay=0)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    desk.program.send_signal(signal.SIGSTOP)
    desk.mouse.click()
    assert not holds_within(GUARD_S, lambda: desk.program.poll() is not None)
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert desk.display.cursor() == place
    desk.mouse.click()  # until this click Wine treats the press during the stall as held
    desk.open_wheel()
    desk.program.send_signal(signal.SIGSTOP)
    wait_for("the cursor to be free", lambda: desk.mouse.move(3, 2) or desk.display.cursor() != place, 2 * TIMEOUT_S)
    desk.program.wait(TIMEOUT_S)
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.wait_for(f"key-up {TOGGLE_KEY}")
    assert "key-down a" not in desk.recorder.presses(), "selected by a press during the stall"


# The engine's own windows. Points are relative to the top left corner of the editor's client area.
EDITOR, BOX, TRAY = "Rotika — edytor funkcji", "Edytor funkcji", "Wine System Tray"
SAVE, ACTIVATE, ADD_FIELD, WRITE_FIELD = (230, 24), (437, 24), (45, 464), (345, 464)
FIELD_NAME, STEP_KEY, STEP_KIND, STEP_VALUE, ADD_STEP = (402, 99), (363, 347), (553, 347), (742, 347), (305, 382)


class User:
    """Waits for the effect of each click: Wine loses clicks while it is busy with the last."""

    def __init__(self, desk):
        self.desk, self.display, self.keyboard, self.mouse = desk, desk.display, desk.keyboard, desk.mouse

    def rest(self):
        wait_for("the screen to stop changing", lambda: (before := self.display.picture()) is not None and
                 not holds_within(0.1, lambda: (self.display.picture() != before).any()), 60)

    def keys(self, *names):
        for name in names:
            self.keyboard.tap(name)

    def front(self, title):
        """Wine may leave the focus where it was, or on no window; the window is then activated."""
        wait_for(f"{title} in front", lambda: holds_within(3, lambda: self.display.focused_title() == title) or
                 any(map(self.display.activate, self.display.titled(title))), 60)
        self.rest()

    def click(self, *points, title=EDITOR):
        for x, y in points:
            left, top = self.display.position_of(title)
            place_cursor(self.display, left + x, top + y)
            self.mouse.click()
            self.rest()

    def fill(self, point, text):
        self.click(point)
        self.keys("End", *["BackSpace"] * 12)
        self.keyboard.type(text)

    def on_tray(self, act, outcome):
        """Repeats `act` on the program's icon until `outcome`: Wine drops some clicks on it."""
        window, = wait_for("the tray", lambda: self.display.titled(TRAY), 60)
        self.desk.screen.run("xdotool", "windowmove", str(window), "1000", "700")  # its balloons cover what is near
        left, top = self.display.position_of(TRAY)
        wait_for("the tray icon to react", lambda: place_cursor(self.display, left + 10, top + 10) or act() or
                 holds_within(3, outcome), 60)

    def choose_last_of_menu(self):
        self.mouse.click(RIGHT)
        self.rest()
        menu = next(self.display.shown_windows())
        place_cursor(self.display, menu.left + menu.width // 2, menu.top + int(0.82 * menu.height))
        self.mouse.click()


def test_a_field_created_in_the_engines_own_editor_works_and_is_saved(desk):
    user, desk.target.executable = User(desk), "rotika-engine.exe"
    desk.prepare(field("a"), field("b"), sendDelay=0)
    desk.program = desk.launch_program()
    user.on_tray(lambda: desk.mouse.click() or desk.mouse.click(), lambda: desk.display.titled("Rotika"))
    user.front("Rotika")
    user.click((105, 496), title="Rotika")
    user.front(EDITOR)
    user.click(ADD_FIELD)
    user.fill(FIELD_NAME, "Skok")
    user.fill(STEP_KEY, "shift")
    user.click(STEP_KIND)
    user.keys("Home", "Down", "Return")
    user.fill(STEP_VALUE, "1")
    user.click(ADD_STEP, WRITE_FIELD, ACTIVATE)
    desk.recorder, desk.field_count = desk.target.recorder(), 3
    desk.choose(2)
    desk.recorder.expect("Shift_L")
    desk.recorder.close()
    desk.recorder = None
    desk.display.close_window(desk.display.titled(EDITOR)[0])
    user.front(BOX)  # the question about unsaved edits
    user.keys("Right", "Return")
    user.front(EDITOR)
    user.click(SAVE)
    wait_for("the file", lambda: '{ "name": "Skok",' in desk.read("default.json"))
    user.on_tray(user.choose_last_of_menu, lambda: desk.program.poll() is not None)
    assert desk.program.returncode == 0
