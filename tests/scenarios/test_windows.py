"""What Windows alone has: messages from other programs, UI Automation, the engine's own editor and its tray. And one
walk through the program's window by keyboard, since no program under Wine tells what it shows."""

import signal

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.device import Device
from desk.hands import RIGHT, place_cursor
from desk.sound import SoundServer
from desk.waiting import GENEROUS_S, holds_within, wait_for

pytestmark = pytest.mark.only("windows")

GUARD_S = 3  # by then it has acted on a program that stands still
AUTOMATION = r"HKCR\CLSID\{ff48dba4-60ef-4201-aa87-54103eef594e}\InprocServer32"
ELEMENTS = ["root Recorder", "element 1 one 50000 200 150 300 180 enabled focusable",
            "element 1 off 50000 200 200 300 230 focusable", "element 1 two 50005 600 500 701 521 enabled"]


def test_other_programs_give_it_a_wheel_file_and_do_it_no_harm(desk):
    def tell(word, *files):
        return desk.target.tell_engine(word, *(desk.target.path_text(desk.folder / file) for file in files))

    desk.prepare()
    desk.write("inne.json", {"wheels": [{"name": "", "actions": [field(key) for key in "cdef"]}]})
    desk.write("puste.json", {"wheels": [{"name": "bez pól", "actions": []}]})
    desk.start(field("a"), field("b"), sendDelay=0)
    place = desk.display.cursor()
    assert [tell("close"), tell("stray"), tell("activate", "puste.json"), tell("activate", "nie-ma.json")] == [0] * 4
    desk.open_wheel()
    assert tell("close") == 0
    desk.wait_until_closed()
    assert desk.display.cursor() == place
    desk.choose(1)
    desk.recorder.expect("b")
    desk.open_wheel()
    assert tell("activate", "inne.json") == 1
    desk.field_count = 4
    desk.pick(1)  # an open wheel is painted again and goes on
    desk.recorder.expect("b", "d")


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


def test_numbers_click_the_elements_of_the_program_in_front(desk):
    def shows(x, y, *colour):
        return abs(desk.display.picture()[y, x].astype(int) - colour).max() < 60

    grid, label = (640, 100, 0xE0, 0xE0, 0xE0), (603, 516, 0x00, 0x50, 0xD0)  # of the second element
    SoundServer(desk.screen)
    voice = Device(desk, "speech", script="say pokaż elementy\nsay pokaż siatkę")  # Wine has no such elements
    desk.start(field("a"), segmentColor="#0050D0", **voice.settings)
    wait_for("the grid", lambda: shows(*grid))
    # A program that takes its time to answer keeps nobody waiting.
    automation = Device(desk, "automation", "automation", "\n".join([*ELEMENTS, "hang FindAllBuildCache Recorder"]))
    desk.target.add_to_registry(AUTOMATION, desk.target.path_text(automation.library))
    desk.target.add_to_registry(AUTOMATION, "Both", "ThreadingModel")
    voice.add("say schowaj siatkę\nsay pokaż elementy")
    automation.wait_for_call("FindAllBuildCache")
    desk.open_wheel()
    desk.close_wheel()
    assert not shows(*label)
    automation.write(*ELEMENTS)
    wait_for("the label", lambda: shows(*label))
    voice.add("say trzy\nsay dwa")
    desk.recorder.wait_for("button-up left")
    assert {record.place for record in desk.recorder.since_mark("button-down", "button-up")} == {(650, 510)}
    wait_for("no labels", lambda: not shows(*label))
    assert automation.log()[-1] == "left behind 0"


# The program's windows. Points of the engine's editor lie from its inner top left corner.
EDITOR, BOX, TRAY = "Rotika — edytor funkcji", "Edytor funkcji", "Wine System Tray"
SAVE, SAVE_AS, ACTIVATE, ADD_FIELD, WRITE_FIELD = (230, 24), (330, 24), (437, 24), (45, 464), (345, 464)
FIELD_NAME, STEP_KEY, STEP_KIND, STEP_VALUE = (402, 99), (363, 347), (553, 347), (742, 347)
FIRST_STEP, ADD_STEP, REPLACE_STEP = (400, 183), (305, 382), (415, 382)


class User:
    """Somebody who looks what comes of each click: Wine loses clicks while it is busy with the last."""

    def __init__(self, desk):
        self.desk, self.display, self.keyboard, self.mouse = desk, desk.display, desk.keyboard, desk.mouse
        desk.prepare(field("a"), field("b"), sendDelay=0)

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

    def step(self, key, kind, value, button):
        self.fill(STEP_KEY, key)
        self.click(STEP_KIND)
        self.keys("Home", *["Down"] * kind, "Return")
        self.fill(STEP_VALUE, value)
        self.click(button)

    def on_tray(self, act, outcome):
        """On the program's icon, until it has an effect: Wine passes some clicks on it to nobody."""
        window, = wait_for("the tray", lambda: self.display.titled(TRAY), 60)
        self.desk.screen.run("xdotool", "windowmove", str(window), "1000", "700")  # its balloons hide what is near
        left, top = self.display.place_of(TRAY)
        wait_for("the tray to do as told", lambda: place_cursor(self.display, left + 10, top + 10) or act() or
                 holds_within(3, outcome), 60)

    def show_by_tray(self):
        self.on_tray(lambda: self.mouse.click() or self.mouse.click(), lambda: self.display.titled("Rotika"))
        self.front("Rotika")

    def quit_by_tray(self):
        def choose_last():
            self.mouse.click(RIGHT)
            self.rest()
            menu = next(self.display.shown_windows())
            place_cursor(self.display, menu.left + menu.width // 2, menu.top + int(0.82 * menu.height))
            self.mouse.click()

        self.on_tray(choose_last, lambda: self.desk.program.poll() is not None)
        assert self.desk.program.returncode == 0

    def play_third_field(self, *presses):
        self.desk.recorder, self.desk.field_count = self.desk.target.recorder(), 3
        self.desk.choose(2)
        self.desk.recorder.expect(*presses)
        self.desk.recorder.close()
        self.desk.recorder = None


def test_a_field_made_in_the_engines_own_editor_works_and_is_saved(desk):
    user, desk.target.executable = User(desk), "rotika-engine.exe"
    before, desk.program = desk.read("default.json"), desk.launch_program()
    user.show_by_tray()
    user.click((105, 496), title="Rotika")
    user.front(EDITOR)
    user.click(ADD_FIELD)
    user.fill(FIELD_NAME, "Skok")
    user.step("e", 0, "1", ADD_STEP)
    user.step("shift", 2, "", ADD_STEP)
    user.click(FIRST_STEP)
    user.step("shift", 1, "", REPLACE_STEP)
    user.click(WRITE_FIELD, ACTIVATE)
    user.play_third_field("Shift_L")
    assert desk.read("default.json") == before, "activating has saved"
    desk.display.close_window(desk.display.titled(EDITOR)[0])
    user.front(BOX)  # the edits are not to be lost
    user.keys("Right", "Return")
    user.front(EDITOR)
    user.click(SAVE)
    wait_for("the file", lambda: '{ "name": "Skok",' in desk.read("default.json"))
    user.click(SAVE_AS)
    user.front("Save As")
    user.keys(*["BackSpace"] * 12)  # Wine puts the caret behind the name that is offered
    desk.keyboard.type("kopia")
    user.keys("Return")
    wait_for("the copy", (desk.folder / "kopia.json").exists)
    user.quit_by_tray()


def test_a_function_made_in_the_programs_window_by_keyboard_is_saved_and_played(desk):
    user = User(desk)
    desk.start_program()
    user.front("Rotika")
    user.keys("Home", "Down", "Tab", "space")  # "Otwórz"
    user.front("Otwórz plik kół")
    desk.keyboard.type("default.json")
    user.keys("Return")
    user.front("Rotika")
    user.keys(*["Tab"] * 6, "space")  # "Dodaj funkcję", which goes on in its name
    desk.keyboard.type("Skok")
    user.keys(*["Tab"] * 6, "Home", "Tab", "e", "Tab", "2", "Tab", "space")  # kind, key, value of a step, "Dodaj krok"
    desk.keyboard.press("Shift_L")
    user.keys(*["Tab"] * 14)
    desk.keyboard.release("Shift_L")
    user.keys("space")  # "Aktywuj", which saves first
    wait_for("the file", lambda: '"Skok"' in desk.read("default.json"))
    user.play_third_field("e", "e")
    desk.display.close_window(desk.display.titled("Rotika")[0])
    wait_for("the window to hide", lambda: not desk.display.titled("Rotika"))
    user.show_by_tray()
    user.quit_by_tray()
