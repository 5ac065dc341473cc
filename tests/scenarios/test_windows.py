"""What Windows alone has: messages from other programs, UI Automation, the engine's own editor and its tray. And one
walk through the program's window by keyboard, since no program under Wine tells what it shows."""

import signal
import time

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.device import Device
from desk.hands import RIGHT, place_cursor
from desk.sound import SoundServer
from desk.waiting import GENEROUS_S, holds_within, wait_for

pytestmark = pytest.mark.only("windows")

GUARD_S = 3  # by then it has acted on a program that stands still
AUTOMATION = r"HKEY_CLASSES_ROOT\CLSID\{ff48dba4-60ef-4201-aa87-54103eef594e}\InprocServer32"
ELEMENTS = ["root Recorder", "element 1 one 50000 200 150 300 180 enabled focusable",
            "element 1 off 50000 200 200 300 230 focusable", "element 1 two 50005 600 500 701 521 enabled"]


def test_another_program_gives_it_a_wheel_file(desk):
    desk.prepare()
    desk.write("inne.json", {"wheels": [{"name": "", "actions": [field(key) for key in "cdef"]}]})
    desk.write("puste.json", {"wheels": [{"name": "bez pól", "actions": []}]})
    desk.start(field("a"), field("b"), sendDelay=0)
    taken = {name: desk.target.tell_engine("activate", desk.target.path_text(desk.folder / name))
             for name in ("puste.json", "nie-ma.json")}
    assert not any(taken.values())
    desk.choose(1)
    desk.recorder.expect("b")
    desk.open_wheel()
    assert desk.target.tell_engine("activate", desk.target.path_text(desk.folder / "inne.json")) == 1
    desk.field_count = 4
    desk.pick(1)  # an open wheel is painted again and goes on
    desk.recorder.expect("b", "d")


def test_what_other_programs_send_to_its_windows_does_no_harm(desk):
    desk.start(field("a"), sendDelay=0)
    place = desk.display.cursor()
    assert [desk.target.tell_engine(word) for word in ("close", "stray")] == [0, 0]
    desk.open_wheel()
    assert desk.target.tell_engine("close") == 0
    desk.wait_until_closed()
    assert desk.display.cursor() == place
    desk.choose(0)
    desk.recorder.expect("a")


def test_a_program_that_stalls_closes_its_wheel_when_it_goes_on_and_is_ended_if_it_does_not(desk):
    """Under Wine a stopped program keeps the X pointer, whatever becomes of the clip, until it ends."""
    desk.start(field("a"), sendDelay=0)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    desk.program.send_signal(signal.SIGSTOP)
    stopped = time.monotonic()
    desk.mouse.click()
    wait_for("the guard to have acted", lambda: time.monotonic() - stopped > GUARD_S)
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert desk.display.cursor() == place
    desk.open_wheel()
    desk.program.send_signal(signal.SIGSTOP)
    wait_for("the cursor to be free", lambda: desk.mouse.move(3, 2) or desk.display.cursor() != place, 2 * GENEROUS_S)
    desk.program.wait(GENEROUS_S)
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.wait_for(f"key-up {TOGGLE_KEY}")
    assert "key-down a" not in desk.recorder.presses(), "chosen by a press during the stall"


def test_numbers_click_the_elements_of_the_program_in_front(desk):
    def is_colour(x, y, colour):
        return abs(desk.display.picture()[y, x].astype(int) - colour).max() < 60

    def grid_stands():
        return is_colour(640, 100, (0xE0, 0xE0, 0xE0))

    def label_stands():
        return is_colour(603, 516, (0x00, 0x50, 0xD0))

    SoundServer(desk.screen)
    voice = Device(desk, "speech", script="say pokaż elementy\nsay pokaż siatkę")  # Wine has no such elements
    desk.start(field("a"), segmentColor="#0050D0", **voice.settings)
    wait_for("the grid", grid_stands)
    voice.add("say schowaj siatkę")
    wait_for("no grid", lambda: not grid_stands())
    # A program that takes its time to answer keeps nobody waiting.
    automation = Device(desk, "automation", "automation", "\n".join([*ELEMENTS, "hang FindAllBuildCache Recorder"]))
    desk.target.add_to_registry({AUTOMATION: {"": desk.target.path_text(automation.library), "ThreadingModel": "Both"}})
    voice.add("say pokaż elementy")
    automation.wait_for_call("FindAllBuildCache")
    desk.open_wheel()
    desk.close_wheel()
    assert not label_stands()
    automation.write(*ELEMENTS)
    wait_for("the second label", label_stands)
    voice.add("say trzy\nsay dwa")
    desk.recorder.wait_for("button-up left")
    assert {record.place for record in desk.recorder.since_mark("button-down", "button-up")} == {(650, 510)}
    wait_for("no labels", lambda: not label_stands())
    assert automation.log()[-1] == "left behind 0"


# The program's windows. Points of the editor lie from its inner top left corner; fields are left, middle, width.

EDITOR, BOX, TRAY, BUTTON_FOR_EDITOR = "Rotika — edytor funkcji", "Edytor funkcji", "Wine System Tray", (105, 496)
NOWHERE, SAVE, SAVE_AS, ACTIVATE, ADD_FIELD, WRITE_FIELD = (840, 300), (230, 24), (330, 24), (437, 24), (45, 464), (345, 464)
KIND, ADD_STEP, REPLACE_STEP, SECOND_STEP, ROW = (553, 347), (305, 382), (415, 382), (400, 200), 17
FIELD_NAME, STEP_KEY, STEP_VALUE = (320, 99, 165), (318, 347, 90), (712, 347, 60)
LONGEST_TEXT, QUIT = 12, 0.82  # QUIT: of the height of the tray's menu


class User:
    """Somebody who looks what comes of each click: Wine loses clicks while it is busy with the last."""

    def __init__(self, desk):
        self.desk, self.display, self.keyboard, self.mouse = desk, desk.display, desk.keyboard, desk.mouse

    def rest(self):
        """Until nothing on the screen moves any more."""
        def is_still():
            before = self.display.picture()
            return not holds_within(0.1, lambda: (self.display.picture() != before).any())

        wait_for("the screen to come to rest", is_still, 60)

    def keys(self, *names):
        for name in names:
            self.keyboard.tap(name)

    def front(self, title):
        """When another window has gone, Wine may leave the keyboard to nobody."""
        def is_in_front():
            if not self.display.active_title() and self.display.titled(title):
                self.display.activate(self.display.titled(title)[0])
            return self.display.focused_title() == title

        wait_for(f"{title} in front", is_in_front, 60)
        self.rest()

    def click(self, *points, title=EDITOR):
        for x, y in points:
            left, top = self.display.place_of(title)
            place_cursor(self.display, left + x, top + y)
            self.mouse.click()
            self.rest()

    def fill(self, field_of_text, text):
        """In place of what it holds, once it shows its caret or a selection."""
        (left, top), (x, y, width) = self.display.place_of(EDITOR), field_of_text

        def inside():
            return self.display.picture()[top + y - 9:top + y + 9, left + x + 3:left + x + width - 3].tobytes()

        before = inside()
        self.click((x + width // 2, y))
        wait_for("the caret", lambda: inside() != before)
        self.keys("End", *["BackSpace"] * LONGEST_TEXT)
        self.keyboard.type(text)

    def keys_with(self, modifier, *names):
        self.keyboard.press(modifier)
        self.keys(*names)
        self.keyboard.release(modifier)

    def type_over(self, text):
        self.keys_with("Control_L", "a")
        self.keyboard.type(text)

    def step(self, key, kind, value, button=ADD_STEP):
        self.fill(STEP_KEY, key)
        self.click(KIND, (KIND[0], 368 + ROW * ["click", "hold", "release", "open"].index(kind)))
        self.fill(STEP_VALUE, value)
        self.click(button)

    def answer(self, title, *keys):
        """The box that has come up."""
        self.front(title)
        self.keys(*keys, "Return")
        wait_for("the box to go", lambda: not self.display.titled(title))

    def take_editor(self):
        """Wine may leave the keyboard to nobody until a new window is clicked."""
        wait_for("the editor", lambda: self.display.titled(EDITOR))
        self.rest()
        self.click(NOWHERE)
        self.front(EDITOR)

    def wait_for_tray(self):
        """In a corner, or its balloons would lie over the editor."""
        window, = wait_for("the tray", lambda: self.display.titled(TRAY), 60)
        self.desk.screen.run("xdotool", "windowmove", str(window), "1000", "700")

    def on_tray(self, act, outcome):
        """On the program's icon, until it has an effect: Wine passes some clicks on it to nobody."""
        self.wait_for_tray()
        left, top = self.display.place_of(TRAY)
        wait_for("the tray to do as told", lambda: place_cursor(self.display, left + 10, top + 10) or act() or
                 holds_within(3, outcome), 60)

    def show_by_tray(self):
        self.on_tray(lambda: self.mouse.click() or self.mouse.click(), lambda: self.display.titled("Rotika"))
        self.front("Rotika")

    def quit_by_tray(self):
        def choose():
            before = {shown.id for shown in self.display.shown_windows()}
            self.mouse.click(RIGHT)
            menu = holds_within(3, lambda: next((shown for shown in self.display.shown_windows()
                                                 if shown.id not in before and shown.height > 40), None))
            if menu:
                self.rest()
                place_cursor(self.display, menu.left + menu.width // 2, menu.top + int(menu.height * QUIT))
                self.rest()
                self.mouse.click()

        self.on_tray(choose, lambda: self.desk.program.poll() is not None)
        assert self.desk.program.returncode == 0

    def play(self, count, *presses):
        """The last of so many fields."""
        self.desk.recorder, self.desk.field_count = self.desk.target.recorder(), count
        self.desk.choose(count - 1)
        self.desk.recorder.expect(*presses)
        self.desk.recorder.close()
        self.desk.recorder = None


def test_a_field_made_in_the_engines_own_editor_works_and_is_saved(desk):
    user = User(desk)
    desk.prepare(field("a"), field("b"), sendDelay=0)
    desk.target.executable = "rotika-engine.exe"
    desk.program = desk.launch_program()
    user.wait_for_tray()
    second = desk.launch_program()  # says that it is not alone
    user.answer("Rotika")
    assert second.wait(GENEROUS_S) == 0
    user.show_by_tray()
    user.click(BUTTON_FOR_EDITOR, title="Rotika")
    user.take_editor()
    user.click(ADD_FIELD)
    user.fill(FIELD_NAME, "Skok")
    user.step("nonsense", "click", "")
    user.answer(BOX)
    user.take_editor()
    user.step("shift", "hold", "")
    user.step("e", "click", "1")
    user.step("shift", "release", "")
    user.click(SECOND_STEP)
    user.step("f", "click", "2", REPLACE_STEP)
    user.click(WRITE_FIELD, ACTIVATE)
    before = desk.read("default.json")
    user.play(3, "key-down Shift_L", "f", "f", "key-up Shift_L")
    assert desk.read("default.json") == before, "activating has saved"
    user.take_editor()
    desk.display.close_window(desk.display.titled(EDITOR)[0])
    user.answer(BOX, "Right")  # the edits are not to be lost
    user.take_editor()
    user.click(SAVE)
    wait_for("the file", lambda: '{ "name": "Skok",' in desk.read("default.json"))
    user.click(SAVE_AS)
    user.front("Save As")
    user.keys(*["BackSpace"] * LONGEST_TEXT)  # Wine puts the caret behind the name that is offered
    desk.keyboard.type("kopia")
    user.rest()
    user.keys("Return")
    wait_for("the copy", lambda: (desk.folder / "kopia.json").exists() and
             desk.read("kopia.json") == desk.read("default.json"))
    user.quit_by_tray()


def test_a_function_made_in_the_programs_window_by_keyboard_is_saved_and_played(desk):
    """By stops of Tab: the form follows five stops behind the list of pages."""
    user = User(desk)
    desk.prepare(field("a"), field("b"), sendDelay=0)
    desk.start_program()
    user.front("Rotika")
    user.keys("Home", "Down", "Tab", "space")  # "Otwórz"
    user.front("Otwórz plik kół")
    desk.keyboard.type(desk.target.path_text(desk.folder / "default.json"))
    user.keys("Return")
    user.front("Rotika")
    user.keys(*["Tab"] * 6, "space")  # "Dodaj funkcję", which goes on in its name
    user.type_over("Skok")
    user.keys(*["Tab"] * 6, "Home", "Tab")  # past the steps and the kind of a new one to its key
    user.type_over("e")
    user.keys("Tab")
    user.type_over("2")
    user.keys("Tab", "space")  # "Dodaj krok"
    user.rest()
    user.keys_with("Shift_L", *["Tab"] * 14)
    user.keys("space")  # "Aktywuj", which saves first
    wait_for("the file", lambda: '"Skok"' in desk.read("default.json"))
    user.play(3, "e", "e")
    desk.display.close_window(desk.display.titled("Rotika")[0])
    wait_for("the window to hide", lambda: not desk.display.titled("Rotika"))
    user.show_by_tray()
    user.quit_by_tray()
