"""What Windows alone has: messages from other programs, the end of a program that stands still, the engine's own editor
and its tray."""

import signal

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.hands import RIGHT, place_cursor
from desk.waiting import GENEROUS_S, holds_within, wait_for

pytestmark = pytest.mark.only("windows")

GUARD_S = 3  # by then it has acted on a program that stands still


def test_other_programs_give_it_a_wheel_file_and_do_it_no_harm(desk):
    def activate(name):
        return desk.target.tell_engine("activate", desk.target.path_text(desk.folder / name))

    desk.prepare()
    desk.write("inne.json", {"wheels": [{"name": "", "actions": [field(key) for key in "cdef"]}]})
    desk.start(field("a"), field("b"), sendDelay=0)
    assert desk.target.tell_engine("stray") == 0
    assert activate("nie-ma.json") == 0
    desk.open_wheel()
    assert activate("inne.json") == 1
    desk.field_count = 4
    desk.pick(1)  # an open wheel is painted again and goes on
    desk.recorder.expect("d")


def test_a_program_that_stalls_closes_its_wheel_when_it_goes_on_and_is_ended_if_it_does_not(desk):
    """Under Wine a stopped program keeps the X pointer, whatever becomes of the clip, until it ends."""
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
    desk.mouse.click()  # Wine takes the press during the stall for held until then
    desk.open_wheel()
    desk.program.send_signal(signal.SIGSTOP)
    wait_for("the cursor to be free", lambda: desk.mouse.move(3, 2) or desk.display.cursor() != place, 2 * GENEROUS_S)
    desk.program.wait(GENEROUS_S)
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.wait_for(f"key-up {TOGGLE_KEY}")
    assert "key-down a" not in desk.recorder.presses(), "chosen by a press during the stall"


# The engine's own windows. Points of the editor lie from its inner top left corner.
EDITOR, BOX, TRAY = "Rotika — edytor funkcji", "Edytor funkcji", "Wine System Tray"
SAVE, ACTIVATE, ADD_FIELD, WRITE_FIELD = (230, 24), (437, 24), (45, 464), (345, 464)
FIELD_NAME, STEP_KEY, STEP_KIND, STEP_VALUE, ADD_STEP = (402, 99), (363, 347), (553, 347), (742, 347), (305, 382)


class User:
    """Somebody who looks what comes of each click: Wine loses clicks while it is busy with the last."""

    def __init__(self, desk):
        self.desk, self.display, self.keyboard, self.mouse = desk, desk.display, desk.keyboard, desk.mouse

    def rest(self):
        wait_for("the screen to come to rest", lambda: (before := self.display.picture()) is not None and
                 not holds_within(0.1, lambda: (self.display.picture() != before).any()), 60)

    def keys(self, *names):
        for name in names:
            self.keyboard.tap(name)

    def front(self, title):
        """Wine may leave the keyboard where it was, or to nobody: then the window is asked for."""
        wait_for(f"{title} in front", lambda: holds_within(3, lambda: self.display.focused_title() == title) or
                 any(map(self.display.activate, self.display.titled(title))), 60)
        self.rest()

    def click(self, *points, title=EDITOR):
        for x, y in points:
            left, top = self.display.place_of(title)
            place_cursor(self.display, left + x, top + y)
            self.mouse.click()
            self.rest()

    def fill(self, point, text):
        self.click(point)
        self.keys("End", *["BackSpace"] * 12)
        self.keyboard.type(text)

    def on_tray(self, act, outcome):
        """On the program's icon, until it has an effect: Wine passes some clicks on it to nobody."""
        window, = wait_for("the tray", lambda: self.display.titled(TRAY), 60)
        self.desk.screen.run("xdotool", "windowmove", str(window), "1000", "700")  # its balloons hide what is near
        left, top = self.display.place_of(TRAY)
        wait_for("the tray to do as told", lambda: place_cursor(self.display, left + 10, top + 10) or act() or
                 holds_within(3, outcome), 60)

    def choose_last_of_menu(self):
        self.mouse.click(RIGHT)
        self.rest()
        menu = next(self.display.shown_windows())
        place_cursor(self.display, menu.left + menu.width // 2, menu.top + int(0.82 * menu.height))
        self.mouse.click()


def test_a_field_made_in_the_engines_own_editor_works_and_is_saved(desk):
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
    user.front(BOX)  # the edits are not to be lost
    user.keys("Right", "Return")
    user.front(EDITOR)
    user.click(SAVE)
    wait_for("the file", lambda: '{ "name": "Skok",' in desk.read("default.json"))
    user.on_tray(user.choose_last_of_menu, lambda: desk.program.poll() is not None)
    assert desk.program.returncode == 0
