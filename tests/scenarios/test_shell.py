"""The program's window, used with real mouse and keyboard; widgets are found over AT-SPI, as screen readers do."""

import json
import shutil

import pytest

from desk.accessible import ENABLED, FOCUSABLE, FOCUSED, SELECTED, Program
from desk.desk import field
from desk.input_devices import RIGHT, place_cursor
from desk.waiting import TIMEOUT_S, wait_for
from desk.x11 import xlib

pytestmark = pytest.mark.only("linux")  # Wine publishes no widgets

KEY = "Klawisz lub przycisk myszy"
CONTROLS = ("check box", "combo box", "list", "push button", "slider", "spin box", "text", "tree")


class User:
    def __init__(self, desk):
        self.desk, self.keyboard, self.scale, self.keystrokes = desk, desk.keyboard, 1, 0
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def start(self):
        self.desk.start_program()
        self.program = Program(self.desk.screen, "Rotika")
        self.window = self.program.window("Rotika")

    def click(self, widget):
        """Clicks its middle, once it has stopped moving."""
        seen = [widget.extents()]
        wait_for("the widget to stay where it is", lambda: seen.append(widget.extents()) or seen[-1] == seen[-2])
        left, top, width, height = seen[-1]
        place_cursor(self.desk.display, *(round(at * self.scale) for at in (left + width / 2, top + height / 2)))
        self.desk.mouse.click()

    def press(self, name, within=None, role="push button"):
        self.click((within or self.window).find(name, role))

    def wait_until_selected(self, name, role):
        wait_for(f"{name} to be selected", lambda: self.window.find(name, role).has_state(SELECTED))

    def play(self, keystrokes):
        """Presses the keys, as in "Control_L+o Tab", and counts the keystrokes."""
        for keystroke in keystrokes.split():
            keys = keystroke.split("+")
            for key in keys:
                self.keyboard.press(key)
            for key in reversed(keys):
                self.keyboard.release(key)
            self.keystrokes += 1

    def type_over(self, widget, text):
        if not widget.has_state(FOCUSED):
            self.click(widget)
            wait_for("the field to have the keyboard", lambda: widget.has_state(FOCUSED))
        self.play("Control_L+a")
        self.keyboard.type(text)

    def fill(self, name, text, role="text"):
        self.type_over(self.window.find(name, role), text)

    def answer(self, title, text):
        """Types the text into the focused field of the dialog of that title, and accepts."""
        self.type_over(self.program.window(title).focused(), text)
        self.play("Return")

    def answer_box(self, button="OK"):
        self.press(button, self.program.window("Edytor kół"))
        self.program.window("Rotika")

    def open_file(self, name):
        self.press("Koła wyboru", role="list item")
        self.press("Otwórz…")
        self.answer("Otwórz plik kół", name)
        self.program.window("Rotika")

    def add_step(self, kind, what, value=None):
        selector = self.window.find("Rodzaj kroku", "combo box")
        self.click(selector)
        self.press(kind, selector, "list item")
        wait_for("the choice", lambda: selector.name() == kind and selector.focused() is not None)
        self.fill("Adres lub program do otwarcia" if kind == "otwórz" else KEY, what)
        if value is not None:
            self.fill("Liczba kliknięć albo czas w milisekundach", str(value), "spin box")
        self.press("Dodaj krok")

    def file(self, name):
        return json.loads(self.desk.read(name))

    def close_window(self):
        self.desk.display.close_window(self.desk.display.titled("Rotika")[0])
        wait_for("the window to close", lambda: "Rotika" not in self.desk.display.titles())


@pytest.fixture
def user(desk):
    return User(desk)


def test_a_wheel_is_created_saved_activated_and_used(desk, user):
    desk.target.set_handler(desk.target.opener())
    desk.prepare(field("a"))
    user.start()
    user.open_file("default.json")
    user.press("Dodaj koło")
    user.answer("Nowe koło", "Strzelanka")
    user.wait_until_selected("Strzelanka", "tree item")
    heard = user.program.hear_focus()
    user.press("Dodaj funkcję")
    wait_for("its name to have the keyboard", lambda: (now := user.program.focused()) and now.name() == "Nazwa")
    wait_for("only that to be reported", lambda: heard() == ["Dodaj funkcję", "Nazwa"])  # not its row, which is selected
    user.keyboard.type("Leczenie")  # replaces the preset name, which is selected
    user.fill("Fraza głosowa", "leczenie")
    user.press("Ikona: Wybierz…")
    icons = user.program.window("Wybierz ikonę")
    user.press("leczenie", icons, "list item")
    user.press("OK", icons)
    for step in (("klik", "b", 1), ("przytrzymaj", "shift", 0), ("puść", "shift"), ("klik", "q", 2)):
        user.add_step(*step)
    user.press("Przesuń krok wyżej")
    user.fill(KEY, "F6")
    user.press("Zamień")
    user.press("klik:  b", role="list item")
    user.press("Usuń krok")
    user.add_step("otwórz", "handled:strzal")
    for answer in ("Nie", "Tak"):  # after the first answer the wheel is still there
        user.press("Koło", role="tree item")
        user.press("Usuń koło lub funkcję")
        user.answer_box(answer)
    user.wait_until_selected("Strzelanka", "tree item")
    user.press("Aktywuj")
    steps = [{"action": "hold", "key": "shift", "value": 0}, {"action": "click", "key": "F6", "value": 2},
             {"action": "release", "key": "shift"}, {"open": "handled:strzal"}]
    made = {"name": "Leczenie", "voice": "leczenie", "icon": "icons/leczenie.png", "steps": steps}
    wait_for("the file", lambda: user.file("default.json") == {"wheels": [{"name": "Strzelanka", "actions": [made]}]})
    desk.work_in_recorder()
    desk.choose(0)
    wait_for("the address to be opened", lambda: desk.notes() == ["handled:strzal"])
    assert desk.recorder.presses() == ["key-down Shift_L", *2 * ["key-down F6", "key-up F6"], "key-up Shift_L"]


def test_a_wheel_of_four_functions_is_made_by_few_keystrokes(desk, user):
    desk.prepare(field("z"))
    user.start()
    user.play("Control_L+o")
    user.answer("Otwórz plik kół", "default.json")
    user.program.window("Rotika")
    user.play("Control_L+2 Control_L+Shift_L+n")
    user.answer("Nowe koło", "Gra")
    user.program.window("Rotika")
    functions = {"atak": "a", "blok": "b", "unik": "u", "skok": "s"}
    for name, key in functions.items():
        for goal, text in (("Control_L+n", name), ("Tab", name), ("F6 Tab Tab", key)):
            user.play(goal)
            user.keyboard.type(text)
        user.play("Return")
    user.keyboard.type("q")  # replaces the key, which has been added
    user.play("Control_L+Return Shift_L+Tab Control_L+Up Shift_L+Tab End Delete")  # moves q up and removes s
    user.play("Control_L+2 Home Delete")
    user.program.window("Edytor kół")
    user.play("Control_L+n Tab Return")  # no function is added behind the question
    user.program.window("Rotika")
    user.play("F5")
    assert user.keystrokes <= 90
    made = [field((key, "click", 1), name=name, voice=name) for name, key in (functions | {"skok": "q"}).items()]
    wait_for("the file", lambda: user.file("default.json") == {"wheels": [{"name": "Gra", "actions": made}]})
    desk.screen.run("xdotool", "key", "--delay", "0", *["ctrl+n"] * 4)  # as fast as a program can
    user.play("F5")
    wait_for("each press to count", lambda: len(user.file("default.json")["wheels"][0]["actions"]) == len(made) + 4)
    desk.work_in_recorder()
    desk.field_count = len(made) + 4
    desk.choose(3)
    desk.recorder.wait_for("key-up q")


def test_a_failed_save_loses_nothing_and_settings_reach_the_engine(desk, user):
    desk.variables["QT_NO_GLIB"] = "1"  # an event loop that does not run the engine's GLib sources by itself
    desk.prepare(field("a"), voiceEnabled=True)
    (desk.folder / "dysk").mkdir()
    shutil.copy(desk.folder / "default.json", desk.folder / "dysk")
    (desk.folder / "dysk/urwany.json").write_text('{ "wheels": [ { "name": "X", ')
    user.start()
    user.open_file("dysk/default.json")
    user.press("Otwórz…")
    user.answer("Otwórz plik kół", "urwany.json")
    user.answer_box()  # the file cannot be read; the open document stays
    user.press("Dodaj funkcję")
    shutil.rmtree(desk.folder / "dysk")  # as when a removable medium is taken out
    user.press("Aktywuj")  # saves first, which fails
    user.answer_box()
    desk.write(saved := "../home/ocalone.json", other := {"wheels": [{"name": "Nowe", "actions": [field("n")]}]})
    user.press("Zapisz jako…")
    for answer in ("Nie", "Tak"):
        user.answer("Zapisz jako", "~/ocalone")
        box = wait_for("the question", lambda: user.program.find_shown(lambda each: each.role() == "alert message"))
        assert user.file(saved) == other
        user.press(answer, box)
        wait_for("it to close", lambda: not user.program.find_shown(lambda each: each.role() == "alert message"))
    wait_for("the saved file", lambda: len(user.file(saved)["wheels"][0]["actions"]) == 2)
    desk.write("default.json", other)
    desk.write("config.json", settings := {"toggleKey": "x", "tajemnica": [1, {"a": None}]})
    user.press("Komendy głosowe", role="list item")
    user.press("Komendy głosowe włączone", role="check box")
    settings |= {"voiceEnabled": False, "voiceGlobal": True}
    wait_for("the settings", lambda: user.file("config.json") == settings)
    user.close_window()  # without a tray the toggle key still works
    desk.work_in_recorder()
    desk.choose(0)
    desk.recorder.wait_for("key-up n")


def test_closing_hides_to_the_tray_whose_icon_restores_the_window_and_whose_menu_quits(desk, user):
    desk.prepare(field("a"))
    desk.screen.show_tray()
    user.start()
    desk.screen.wait_for_tray_icon()
    user.close_window()
    place_cursor(desk.display, 1266, 780)
    xlib.XGrabServer(desk.display.handle)  # or a busy server might exceed the double-click time
    desk.mouse.click()
    desk.mouse.click()
    xlib.XUngrabServer(desk.display.handle)
    wait_for("the window again", lambda: desk.is_in_front("Rotika"))
    desk.mouse.click(RIGHT)
    menu = wait_for("the menu", lambda: next(  # it is not published over AT-SPI
        (shown for shown in desk.display.shown_windows() if 60 < shown.height < 300), None))
    # "Zakończ" must end the program although its visible window refuses to close.
    x, y = menu.left + 12, menu.top + round(0.82 * menu.height)
    place_cursor(desk.display, x, y)
    wait_for("the entry to be highlighted", lambda: desk.display.pixel(x, y) == (0x18, 0x5F, 0xA5))
    desk.mouse.click()
    assert desk.program.wait(TIMEOUT_S) == 0


def test_an_end_in_any_dialog_keeps_unsaved_edits_and_the_next_start_offers_them(desk, user):
    desk.prepare(first := field("a", color="#FF0000"))
    kept = desk.folder / "default-odzysk.json"
    for count, dialog in enumerate(("Otwórz…", "Dodaj koło", "Kolor pola: #FF0000"), 1):
        user.start()
        if count == 1:
            user.open_file("default.json")
        else:
            user.wait_until_selected("Start", "list item")
            user.press("Przywróć zmiany")  # which shows the page
        user.press("Dodaj funkcję")
        user.press("a", role="tree item")
        user.press(dialog)
        wait_for("the dialog", lambda: desk.display.active_title() != "Rotika")
        desk.program.terminate()
        assert desk.program.wait(2) == 0
        actions = user.file(kept.name)["wheels"][0]["actions"]
        assert actions[0]["color"] == first["color"]  # a cancelled colour dialog clears it
        assert len(actions) == count + 1
    desk.write("default.json", changed := {"wheels": [{"name": "Nowe", "actions": [field("n")]}]})
    user.start()
    user.press("Odrzuć zmiany")
    user.press("Zamknij")
    desk.end_program()
    (desk.folder / "default-odzysk-kopia-1.json").rename(kept)  # nothing is lost
    user.start()
    user.press("Przywróć zmiany")
    user.press("Zapisz")
    user.answer_box()  # what another program has written is kept
    assert user.file("default-kopia-1.json") == changed
    assert len(user.file("default.json")["wheels"][0]["actions"]) == 4
    wait_for("its removal", lambda: not kept.exists())


def in_view(extents, whole, enough=20):
    """Whether at least `enough` of it in each direction, or all if it is smaller, lies within `whole`."""
    return all(min(a + length, b + room) - max(a, b) >= min(length, enough)
               for a, b, length, room in zip(extents, whole, extents[2:], whole[2:]))


@pytest.mark.parametrize("theme, colour, scale", [("Fluent (jasny)", (0xE9, 0xEE, 0xF7), 1),
                                                  ("Pro studio (grafit)", (0x17, 0x19, 0x1D), 1.5),
                                                  ("Neon (gaming)", (0x0B, 0x0E, 0x1A), 2)])
def test_a_saved_theme_fits_the_screen_and_tab_reaches_every_control(desk, user, theme, colour, scale):
    user.scale = scale
    desk.variables["QT_SCALE_FACTOR"] = str(scale)
    desk.prepare(field("a", icon="icons/atak.png", color="#E74C3C", name="Granat z bardzo długim opóźnieniem i nazwą"))
    user.start()
    user.press("Ustawienia", role="list item")
    user.press(theme, role="radio button")
    user.open_file("default.json")
    desk.end_program()
    user.start()
    wait_for("the same theme", lambda: (desk.display.picture() == colour).all(2).sum() > 10000)
    for page in [row.name() for row in user.window.find("Strony", "list").children()]:
        user.press(page, role="list item")
        user.wait_until_selected(page, "list item")
        assert in_view(user.window.extents(), (0, 0, *(side / scale for side in desk.screen.size)), enough=10000)
        unreached = {each.reference: each.name() for each in user.window.shown() if each.role() in CONTROLS and
                     each.description() != KEY and each.has_state(FOCUSABLE) and each.has_state(ENABLED)}
        last, pages = user.window.focused(), user.window.find("Strony", "list")
        while pages.reference in unreached:
            user.keyboard.tap("Tab")
            last = wait_for(f"the control after {last.name()}", lambda: (now := user.window.focused()) and
                            now.reference != last.reference and now)
            for each in last.with_its_list():
                unreached.pop(each.reference, None)
            wait_for(f"{last.name()} in view", lambda: last.name() and in_view(last.extents(), user.window.extents()))
        assert not unreached
