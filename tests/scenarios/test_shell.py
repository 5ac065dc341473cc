"""The program's window, used with mouse and keyboard by somebody who finds things as a screen reader does."""

import json
import shutil
from pathlib import Path

import pytest

from desk.accessible import ENABLED, FOCUSABLE, FOCUSED, SELECTED, Program
from desk.desk import TOGGLE_KEY, field
from desk.hands import LEFT, RIGHT, place_cursor
from desk.waiting import GENEROUS_S, wait_for
from desk.x11 import save_png, xlib

pytestmark = pytest.mark.only("linux")  # Wine passes on nothing of a program's widgets

KEY = "Klawisz lub przycisk myszy"

CONTROLS = ("check box", "combo box", "list", "push button", "slider", "spin box", "text", "tree")


class User:
    def __init__(self, desk):
        self.desk, self.keyboard, self.scale = desk, desk.keyboard, 1
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def start(self):
        self.desk.start_program()
        self.program = Program(self.desk.screen, "Rotika")
        self.window = self.front()

    def front(self, title="Rotika"):
        """Waits until the window of that title has the keyboard, and knows."""
        wait_for(f"{title} in front", lambda: self.desk.is_in_front(title))
        return self.program.window(title)

    def click(self, widget, button=LEFT):
        """In its middle, once it has come to rest."""
        seen = [widget.place()]
        wait_for("the widget to stay where it is", lambda: seen.append(widget.place()) or seen[-1] == seen[-2])
        left, top, width, height = seen[-1]
        place_cursor(self.desk.display, *(round(at * self.scale) for at in (left + width / 2, top + height / 2)))
        self.desk.mouse.click(button)

    def press(self, name, within=None, role="push button"):
        self.click((within or self.window).find(name, role))

    def chord(self, modifier, key):
        self.keyboard.press(modifier)
        self.keyboard.tap(key)
        self.keyboard.release(modifier)

    def go_to(self, page):
        self.press(page, role="list item")
        self.window.find(page, "list item").wait_until(SELECTED)

    def type_over(self, widget, text):
        if not widget.is_in(FOCUSED):
            self.click(widget)
            widget.wait_until(FOCUSED)
        self.chord("Control_L", "a")
        self.keyboard.type(text)
        wait_for(f"{text} in the field", lambda: widget.text() == text)

    def fill(self, name, text, role="text"):
        self.type_over(self.window.find(name, role), text)

    def answer(self, title, text, field_name=None):
        """Types it into the field in front, or the one of that name, of the dialog of that title, and accepts."""
        dialog = self.front(title)
        self.type_over(dialog.find(field_name, "text") if field_name else dialog.focused(), text)
        self.keyboard.tap("Return")

    def answer_box(self, button="OK"):
        self.press(button, self.front("Edytor kół"))
        self.front()

    def open_file(self, name):
        self.go_to("Koła wyboru")
        self.press("Otwórz…")
        self.answer("Otwórz plik kół", name)

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
        return json.loads((self.desk.folder / name).read_text(encoding="utf-8"))

    def close_window(self):
        self.chord("Alt_L", "F4")
        wait_for("the window to go", lambda: "Rotika" not in self.desk.display.titles())

    def corner(self):
        """The colour below the list of pages."""
        left, top, _, height = (round(at * self.scale) for at in self.window.place())
        return int.from_bytes(self.desk.display.picture()[top + height - 40, left + 60].tobytes(), "big")

    def play(self, index, count):
        """Chooses a field of the wheel with the recorder in front."""
        desk = self.desk
        desk.recorder, desk.field_count = desk.target.recorder(), count
        desk.display.activate(desk.recorder.window.value)
        wait_for("the recorder in front", lambda: desk.is_in_front("recorder"))
        desk.recorder.mark()
        desk.choose(index)


@pytest.fixture
def user(desk):
    return User(desk)


def test_a_wheel_is_made_saved_activated_and_played(desk, user):
    desk.target.set_handler(desk.target.opener())
    desk.prepare(field("a"))
    user.start()
    user.open_file("default.json")
    user.front()
    user.press("Dodaj koło")
    user.answer("Nowe koło", "Strzelanka")
    user.window.find("Strzelanka", "tree item").wait_until(SELECTED)
    user.press("Dodaj funkcję")
    user.window.find("Nazwa", "text").wait_until(FOCUSED)
    user.keyboard.type("Leczenie")  # in place of the name that it came with
    user.window.find("Leczenie", "tree item")
    user.fill("Fraza głosowa", "leczenie")
    user.press("Ikona: Wybierz…")
    icons = user.front("Wybierz ikonę")
    user.press("leczenie", icons, "list item")
    user.press("OK", icons)
    user.window.find("Ikona: leczenie", "push button")
    user.press("Kolor pola: domyślny")
    user.answer("Kolor pola", "#E74C3C", "HTML:")
    user.window.find("Kolor pola: #E74C3C", "push button")
    user.front()
    user.fill("Odstęp między krokami w milisekundach", "45", "spin box")
    for step in (("klik", "b", 1), ("przytrzymaj", "shift", 0), ("puść", "shift"), ("klik", "q", 2)):
        user.add_step(*step)
    user.press("Przesuń krok wyżej")
    user.fill(KEY, "F6")
    user.press("Zamień")
    user.press("klik:  b", role="list item")
    user.press("Usuń krok")
    user.add_step("przytrzymaj", "F7", 60)
    user.add_step("otwórz", "handled:strzal")
    user.press("Koło", role="tree item")
    for answer in ("Nie", "Tak"):
        wheel = user.window.find("Koło", "tree item")  # it is still there
        wheel.wait_until(SELECTED)
        user.press("Usuń koło lub funkcję")
        user.answer_box(answer)
    user.window.find("Strzelanka", "tree item").wait_until(SELECTED)
    user.press("Aktywuj")
    steps = [{"action": "hold", "key": "shift", "value": 0}, {"action": "click", "key": "F6", "value": 2},
             {"action": "release", "key": "shift"}, {"action": "hold", "key": "F7", "value": 60},
             {"open": "handled:strzal"}]
    made = {"name": "Leczenie", "voice": "leczenie", "icon": "icons/leczenie.png", "color": "#E74C3C", "delay": 45,
            "steps": steps}
    wait_for("the file", lambda: user.file("default.json") == {"wheels": [{"name": "Strzelanka", "actions": [made]}]})
    user.play(0, 1)
    desk.recorder.wait_for("key-up F7")
    assert desk.recorder.presses() == ["key-down Shift_L", *2 * ["key-down F6", "key-up F6"], "key-up Shift_L",
                                       "key-down F7", "key-up F7"]
    wait_for("the address to be opened", lambda: desk.notes() == ["handled:strzal"])


def test_what_another_program_wrote_is_kept_and_settings_reach_the_engine(desk, user):
    desk.prepare(field("a"), voiceEnabled=True)
    user.start()
    user.open_file("default.json")
    user.press("Dodaj funkcję")
    desk.write("default.json", foreign := {"wheels": [{"name": "Nowe", "actions": [field("n")]}]})
    user.press("Zapisz")
    user.answer_box()
    assert user.file("default-kopia-1.json") == foreign
    assert len(user.file("default.json")["wheels"][0]["actions"]) == 2
    desk.write("default.json", foreign)
    desk.write("config.json", settings := {"toggleKey": TOGGLE_KEY, "tajemnica": [1, {"a": None}], "gazeDwell": 0})
    user.go_to("Komendy głosowe")
    user.press("Komendy głosowe włączone", role="check box")
    settings |= {"voiceEnabled": False, "voiceGlobal": True}
    wait_for("the settings", lambda: user.file("config.json") == settings)
    wait_for("the engine to say so", lambda: user.window.look_for(
        lambda widget: widget.name().startswith("wyłączony (voiceEnabled = false)")))
    user.go_to("Sterowanie wzrokiem")
    slider = user.window.find("Czas wyboru spojrzeniem (dwell)", "slider")
    left, top, width, height = slider.place()
    place_cursor(desk.display, left + 8 + int((width - 16) * slider.value() / 3000), top + height // 2)  # on the handle
    desk.mouse.press()
    desk.mouse.move(1000, 0)
    wait_for("the slider's end", lambda: slider.value() == 3000)
    assert user.file("config.json")["gazeDwell"] == 0  # until it is let go
    desk.mouse.release()
    wait_for("the dwell in the file", lambda: user.file("config.json")["gazeDwell"] == 3000)
    user.play(0, 1)
    desk.recorder.wait_for("key-up n")


def test_what_cannot_be_read_or_saved_leaves_the_open_file_as_it_is(desk, user):
    desk.prepare(field("a"), toggleKey="F9")  # any letter may stand in a path
    (desk.folder / "dysk").mkdir()
    shutil.move(desk.folder / "default.json", desk.folder / "dysk")
    (desk.folder / "urwany.json").write_text(torn := '{ "wheels": [ { "name": "X", ')
    user.start()
    user.open_file(f"{desk.folder}/dysk/default.json")
    user.front()
    user.open_file(f"{desk.folder}/urwany.json")
    user.answer_box()
    assert (desk.folder / "urwany.json").read_text() == torn
    user.press("Dodaj funkcję")
    user.window.find("Nowa funkcja", "tree item")
    shutil.rmtree(desk.folder / "dysk")  # the medium has been taken out
    for button in ("Zapisz", "Aktywuj"):  # activating saves first, and goes no further when that fails
        user.press(button)
        user.answer_box()
    desk.write("ocalone.json", "of somebody else")
    user.press("Zapisz jako…")
    for answer in ("Nie", "Tak"):
        user.answer("Zapisz jako", f"{desk.folder}/ocalone")
        box = wait_for("the question", lambda: user.program.look_for(lambda each: each.role() == "alert message"))
        assert user.file("ocalone.json") == "of somebody else"
        user.press(answer, box)
        wait_for("it to go", lambda: not user.program.look_for(lambda each: each.role() == "alert message"))
    wait_for("the rescued file", lambda: user.file("ocalone.json") != "of somebody else")
    assert [each["name"] for each in user.file("ocalone.json")["wheels"][0]["actions"]] == ["a", "Nowa funkcja"]


def test_the_window_hides_in_the_tray_which_brings_it_back_or_ends_the_program(desk, user):
    def icon():
        """Its middle, once the panel's end looks otherwise than the rest of it."""
        assert wait_for("the icon", lambda: (desk.display.picture()[-20, -14] != desk.display.picture()[-20, -60]).any())
        return desk.screen.size[0] - 14, desk.screen.size[1] - 20

    def choose(share):
        """The entry of the icon's menu that lies at this share of its height."""
        place_cursor(desk.display, *icon())
        desk.mouse.click(RIGHT)
        menu = wait_for("the menu", lambda: next(  # it is in no tree of widgets
            (shown for shown in desk.display.shown_windows() if 60 < shown.height < 300), None))
        x, y = menu.left + 12, menu.top + round(share * menu.height)
        place_cursor(desk.display, x, y)
        wait_for("the entry to light up", lambda: desk.display.picture()[y, x].tobytes() == b"\x18\x5f\xa5")
        desk.mouse.click()

    desk.prepare(field("a"))
    desk.screen.launch(*"trayer --edge bottom --align right --widthtype pixel --width 200 --heighttype pixel --height 40 "
                       "--SetDockType true --expand false".split())
    tray = desk.display.atom("_NET_SYSTEM_TRAY_S0")
    wait_for("the tray", lambda: xlib.XGetSelectionOwner(desk.display.handle, tray))
    user.start()
    icon()
    user.close_window()
    place_cursor(desk.display, *icon())
    desk.mouse.click()
    desk.mouse.click()
    wait_for("the window again", lambda: desk.is_in_front("Rotika"))
    user.close_window()
    choose(0.44)  # "Pokaż okno"
    wait_for("the window again", lambda: desk.is_in_front("Rotika"))
    choose(0.17)  # "Pokaż koło"
    desk.wait_until_open()
    desk.close_wheel()
    choose(0.82)  # "Zakończ", with the window in sight, which a quit would ask and which never agrees to close
    assert desk.program.wait(GENEROUS_S) == 0


def test_without_a_tray_a_closed_window_leaves_the_toggle_key(desk, user):
    """With Qt's other event loop too, which serves no timers of the engine by itself."""
    desk.variables["QT_NO_GLIB"] = "1"
    desk.prepare(field("a"), field("b"))
    user.start()
    user.close_window()
    user.play(1, 2)
    desk.recorder.wait_for("key-up b")


def in_view(place, whole, enough=20):
    """Whether that much of it, or all if it is smaller, is to be seen."""
    return all(min(a + length, b + room) - max(a, b) >= min(length, enough)
               for a, b, length, room in zip(place, whole, place[2:], whole[2:]))


@pytest.mark.parametrize("theme, colour, scale", [
    ("Fluent (jasny)", 0xE9EEF7, 1), ("Pro studio (grafit)", 0x17191D, 1.5), ("Neon (gaming)", 0x0B0E1A, 2)])
def test_a_remembered_theme_fits_on_the_screen_with_every_control_in_reach_of_tab(desk, user, request, theme, colour,
                                                                                  scale):
    """The pictures are kept, to be looked at."""
    user.scale = scale
    desk.variables["QT_SCALE_FACTOR"] = str(scale)
    desk.prepare(field("a", icon="icons/atak.png", color="#E74C3C", name="Granat z bardzo długim opóźnieniem i nazwą"))
    user.start()
    user.go_to("Ustawienia")
    user.press(theme, role="radio button")
    wait_for("the theme", lambda: user.corner() == colour)
    user.open_file("default.json")
    user.front()
    desk.end_program()
    user.start()
    wait_for("the same theme", lambda: user.corner() == colour)
    pictures = Path(request.config.getoption("artefacts")) / "linux"
    pictures.mkdir(parents=True, exist_ok=True)
    for page in [row.name() for row in user.window.find("Strony", "list").children()]:
        user.go_to(page)
        save_png(desk.display.picture(), pictures / f"{theme} {page}.png")
        assert in_view(user.window.place(), (0, 0, *(side / scale for side in desk.screen.size)), enough=10000)
        shown = [(each, each.name(), each.role(), each.place()) for each in user.window.shown()]
        labels = [(name, place) for _, name, role, place in shown if role in ("label", "push button")]
        for at, (name, place) in enumerate(labels):
            assert not [other for other, there in labels[:at] if in_view(place, there, 1)], name
        unreached = {each.reference: name for each, name, role, _ in shown
                     if role in CONTROLS and name != KEY and each.is_in(FOCUSABLE) and each.is_in(ENABLED)}
        last = pages = user.window.focused()
        while pages.reference in unreached:
            user.keyboard.tap("Tab")
            last = wait_for(f"the control after {last.name()}", lambda: (now := user.window.focused()) and
                            now.reference != last.reference and now)
            unreached.pop(last.reference, None)
            wait_for(f"{last.name()} in view", lambda: last.name() and in_view(last.place(), user.window.place()))
        assert not unreached
