"""The program's window, used with mouse and keyboard by somebody who finds things as a screen reader does."""

import json
import shutil
from pathlib import Path
from ctypes import byref, c_ulong

import numpy
import pytest

from desk.accessible import CHECKED, FOCUSABLE, FOCUSED, SELECTED, SHOWING, Program
from desk.desk import TOGGLE_KEY, field
from desk.hands import LEFT, RIGHT, place_cursor
from desk.waiting import GENEROUS_S, holds_within, wait_for
from desk.x11 import IS_VIEWABLE, WindowAttributes, save_png, xlib

pytestmark = pytest.mark.only("linux")  # Wine passes on nothing of a program's widgets


class User:
    def __init__(self, desk):
        self.desk, self.keyboard = desk, desk.keyboard
        self.scale = 1
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def start(self):
        self.desk.start_program()
        self.program = Program(self.desk.screen, "Rotika")
        self.window = self.front()

    def front(self, title="Rotika"):
        """Waits until the window of that title has the keyboard, and knows."""
        wait_for(f"{title} in front", lambda: self.desk.is_in_front(title))
        return self.program.window(title)

    def point_at(self, widget):
        """At its middle, once it has come to rest."""
        before = []
        left, top, width, height = wait_for("the widget to stay where it is", lambda: (
            before.append(widget.place()) or len(before) > 1 and before[-1] == before[-2]) and before[-1])
        place_cursor(self.desk.display, *(round(at * self.scale) for at in (left + width / 2, top + height / 2)))

    def click(self, widget, button=LEFT):
        self.point_at(widget)
        self.desk.mouse.click(button)

    def press(self, name, within=None):
        self.click((within or self.window).find(name, "push button"))

    def go_to(self, page):
        row = self.window.find(page, "list item")
        self.click(row)
        row.holds(SELECTED)

    def focused(self, within):
        return wait_for("the focus", lambda: within.look_for(
            lambda widget: widget.is_in(FOCUSED) and widget.role() == "text"))

    def type_over(self, widget, text):
        if not widget.is_in(FOCUSED):
            self.click(widget)
            widget.holds(FOCUSED)
        self.keyboard.press("Control_L")
        self.keyboard.tap("a")
        self.keyboard.release("Control_L")
        self.keyboard.type(text)
        wait_for(f"{text} in the field", lambda: widget.text() == text)

    def fill(self, name, text, role="text"):
        self.type_over(self.window.find(name, role), text)

    def answer(self, title, text):
        """Types it into the dialog of that title and accepts."""
        dialog = self.front(title)
        self.type_over(self.focused(dialog), text)
        self.keyboard.tap("Return")

    def open_file(self, name, is_readable=True):
        self.go_to("Koła wyboru")
        self.press("Otwórz…")
        self.answer("Otwórz plik kół", name)
        if is_readable:
            self.front()

    def close_window(self):
        self.keyboard.press("Alt_L")
        self.keyboard.tap("F4")
        self.keyboard.release("Alt_L")
        wait_for("the window to go", lambda: "Rotika" not in titles(self.desk))

    def dismiss_box(self):
        self.press("OK", self.front("Edytor kół"))
        self.front()

    def play(self, index, count):
        """Chooses a field of the wheel with the recorder in front."""
        desk = self.desk
        desk.recorder, desk.field_count = desk.target.recorder(), count
        desk.display.activate(desk.recorder.window.value)
        wait_for("the recorder in front", lambda: desk.is_in_front("recorder"))
        desk.recorder.mark()
        desk.choose(index)


    def file(self, name):
        return json.loads((self.desk.folder / name).read_text(encoding="utf-8"))

    def waits_for_file(self, name, content):
        holds_within(GENEROUS_S, lambda: self.file(name) == content)
        assert self.file(name) == content

    def choose(self, name, choice):
        """In a selector."""
        selector = self.window.find(name, "combo box")
        self.click(selector)
        self.click(selector.find(choice, "list item"))
        wait_for(f"the choice of {choice}", lambda: selector.name() == choice and not selector.look_for(
            lambda widget: widget.role() == "list item"))

    def add_step(self, kind, what, value=None):
        self.choose("Rodzaj kroku", kind)
        self.fill("Adres lub program do otwarcia" if kind == "otwórz" else "Klawisz lub przycisk myszy", what)
        if value is not None:
            self.fill("Liczba kliknięć albo czas w milisekundach", str(value), "spin box")
        self.press("Dodaj krok")

    def steps(self):
        return [row.name() for row in self.window.find("Czynności (kroki sekwencji)", "list").children()]

    def wait_for_steps(self, *lines):
        wait_for(f"the steps {lines}", lambda: self.steps() == list(lines))


def titles(desk):
    """Of the windows that the window manager knows."""
    known = desk.display.property(desk.display.root.value, "_NET_CLIENT_LIST")
    return [desk.display.title(window) for window in known or ()]


@pytest.fixture
def user(desk):
    return User(desk)


def test_a_wheel_is_made_saved_activated_and_played(desk, user):
    desk.target.set_handler(desk.target.opener())
    desk.prepare(field("a"))
    user.start()
    user.open_file("default.json")
    user.press("Dodaj koło")
    user.answer("Nowe koło", "Strzelanka")
    user.window.find("Strzelanka", "tree item").holds(SELECTED)
    user.press("Dodaj funkcję")
    user.window.find("Nazwa", "text").holds(FOCUSED)
    user.keyboard.type("Leczenie")  # in place of the name that it came with
    user.window.find("Leczenie", "tree item")
    user.fill("Fraza głosowa", "leczenie")

    user.press("Ikona: Wybierz…")
    icons = user.front("Wybierz ikonę")
    user.click(icons.find("leczenie", "list item").holds(SHOWING))
    user.press("OK", icons)
    user.window.find("Ikona: leczenie")
    user.press("Kolor pola: domyślny")
    colours = user.front("Kolor pola")
    user.type_over(colours.find("HTML:", "text"), "#E74C3C")
    user.keyboard.tap("Return")
    user.front()
    user.window.find("Kolor pola: #E74C3C")
    user.fill("Odstęp między krokami w milisekundach", "45", "spin box")

    user.add_step("klik", "b", 1)
    user.add_step("przytrzymaj", "shift", 0)
    user.add_step("puść", "shift")
    user.add_step("klik", "q", 2)
    user.press("Przesuń krok wyżej")
    user.wait_for_steps("klik:  b", "przytrzymaj (bez puszczania):  shift", "klik ×2:  q", "puść:  shift")
    user.fill("Klawisz lub przycisk myszy", "F6")
    user.press("Zamień")
    user.click(user.window.find("klik:  b", "list item"))
    user.press("Usuń krok")
    user.add_step("przytrzymaj", "F7", 60)
    user.add_step("otwórz", "handled:strzal")
    user.wait_for_steps("przytrzymaj (bez puszczania):  shift", "klik ×2:  F6", "puść:  shift", "przytrzymaj 60 ms:  F7",
                        "otwórz:  handled:strzal")
    user.click(user.window.find("Koło", "tree item"))
    user.press("Usuń koło lub funkcję")
    box = user.front("Edytor kół")
    user.press("Tak", box)
    wait_for("the wheel to go", lambda: not user.window.look_for(lambda widget: widget.name() == "Koło"))
    user.press("Aktywuj")
    steps = [{"action": "hold", "key": "shift", "value": 0}, {"action": "click", "key": "F6", "value": 2},
             {"action": "release", "key": "shift"}, {"action": "hold", "key": "F7", "value": 60},
             {"open": "handled:strzal"}]
    made = {"name": "Leczenie", "voice": "leczenie", "icon": "icons/leczenie.png", "color": "#E74C3C", "delay": 45,
            "steps": steps}
    user.waits_for_file("default.json", {"wheels": [{"name": "Strzelanka", "actions": [made]}]})

    user.play(0, 1)
    desk.recorder.wait_for("key-up F7")
    assert desk.recorder.presses() == ["key-down Shift_L", *2 * ["key-down F6", "key-up F6"], "key-up Shift_L",
                                       "key-down F7", "key-up F7"]
    wait_for("the address to be opened", lambda: desk.notes() == ["handled:strzal"])


def test_what_another_program_wrote_is_kept_and_a_setting_reaches_the_engine(desk, user):
    desk.prepare(field("a"), voiceEnabled=True)
    user.start()
    user.open_file("default.json")
    user.press("Dodaj funkcję")
    desk.write("default.json", foreign := {"wheels": [{"name": "Nowe", "actions": [field("n")]}]})
    user.press("Zapisz")
    box = user.front("Edytor kół")
    assert user.file("default-kopia-1.json") == foreign
    assert len(user.file("default.json")["wheels"][0]["actions"]) == 2
    user.press("OK", box)
    user.front()
    desk.write("default.json", foreign)
    settings = {"toggleKey": TOGGLE_KEY, "tajemnica": [1, {"a": None}], "gazeDwell": 1250, "sendDelay": 0}
    desk.write("config.json", settings)
    user.go_to("Komendy głosowe")
    user.click(user.window.find("Komendy głosowe włączone", "check box"))
    user.waits_for_file("config.json", settings | {"voiceEnabled": False, "voiceGlobal": True})
    wait_for("the engine to say so", lambda: user.window.look_for(
        lambda widget: widget.name().startswith("wyłączony (voiceEnabled = false)")))
    user.play(0, 1)
    desk.recorder.wait_for("key-up n")


def test_the_dwell_is_saved_when_the_slider_is_let_go(desk, user):
    desk.prepare(gazeDwell=0)
    user.start()
    user.go_to("Sterowanie wzrokiem")
    slider = user.window.find("Czas wyboru spojrzeniem (dwell)", "slider")
    left, top, _, height = slider.place()
    place_cursor(desk.display, left + 8, top + height // 2)  # on the handle
    desk.mouse.press()
    desk.mouse.move(1000, 0)
    wait_for("the slider's end", lambda: slider.value() == 3000)
    assert user.file("config.json")["gazeDwell"] == 0
    desk.mouse.release()
    wait_for("the dwell in the file", lambda: user.file("config.json")["gazeDwell"] == 3000)


def test_a_theme_takes_effect_at_once_and_is_remembered(desk, user):
    def corner():
        left, top, _, height = user.window.place()
        return tuple(desk.display.picture()[top + height - 40, left + 60])

    desk.prepare()
    user.start()
    wait_for("the light theme", lambda: corner() == (0xE9, 0xEE, 0xF7))
    user.go_to("Ustawienia")
    user.click(user.window.find("Pro studio (grafit)", "radio button"))
    wait_for("the graphite theme", lambda: max(corner()) < 0x40)
    graphite = corner()
    desk.end_program()
    user.start()
    wait_for("the graphite theme again", lambda: corner() == graphite)


def test_what_cannot_be_read_or_saved_leaves_the_open_file_as_it_is(desk, user):
    desk.prepare(field("a"), toggleKey="F9")  # any letter may stand in a path
    (desk.folder / "dysk").mkdir()
    shutil.move(desk.folder / "default.json", desk.folder / "dysk/koła.json".replace("ł", "l"))
    (desk.folder / "urwany.json").write_text(torn := '{ "wheels": [ { "name": "X", ')
    user.start()
    user.open_file(f"{desk.folder}/dysk/kola.json")
    user.open_file(f"{desk.folder}/urwany.json", is_readable=False)
    user.dismiss_box()
    assert (desk.folder / "urwany.json").read_text() == torn
    user.press("Dodaj funkcję")
    user.window.find("Nowa funkcja", "tree item")
    shutil.rmtree(desk.folder / "dysk")  # the medium has been taken out
    for button in ("Zapisz", "Aktywuj"):  # activating saves first, and goes no further when that fails
        user.press(button)
        user.dismiss_box()
    user.press("Zapisz jako…")
    user.answer("Zapisz jako", str(desk.folder / "ocalone"))
    wait_for("the rescued file", (desk.folder / "ocalone.json").exists)
    assert [each["name"] for each in user.file("ocalone.json")["wheels"][0]["actions"]] == ["a", "Nowa funkcja"]


class Tray:
    """At the bottom right; its panel is of one colour but for the icon."""

    SIZE = (200, 40)

    def __init__(self, user):
        self.user, self.desk = user, user.desk
        width, height = map(str, self.SIZE)
        self.desk.screen.launch("trayer", "--edge", "bottom", "--align", "right", "--widthtype", "pixel", "--width", width,
                                "--heighttype", "pixel", "--height", height, "--SetDockType", "true", "--expand", "false")
        display = self.desk.display
        wait_for("the tray", lambda: xlib.XGetSelectionOwner(display.handle, display.atom("_NET_SYSTEM_TRAY_S0")))

    def icon(self):
        """Its middle, or None."""
        screen_width, screen_height = self.desk.screen.size
        panel = self.desk.display.picture()[screen_height - self.SIZE[1] + 4:-4, screen_width - self.SIZE[0] + 4:-4]
        rows, columns = (panel != numpy.median(panel, axis=(0, 1))).any(2).nonzero()
        if len(rows) < 100:
            return None
        return (int(columns.mean()) + screen_width - self.SIZE[0] + 4, int(rows.mean()) + screen_height - self.SIZE[1] + 4)

    def double_click(self):
        place_cursor(self.desk.display, *wait_for("the icon in the tray", self.icon))
        self.desk.mouse.click()
        self.desk.mouse.click()

    def menu(self):
        """Left, top, width and height, or None. It is in no tree of widgets."""
        seen, display = WindowAttributes(), self.desk.display
        for window in display.tree(display.root.value)[1]:
            if (xlib.XGetWindowAttributes(display.handle, c_ulong(window), byref(seen)) and seen.override_redirect and
                    seen.map_state == IS_VIEWABLE and 60 < seen.height < 300):
                return seen.x, seen.y, seen.width, seen.height
        return None

    def choose(self, share):
        """The entry that lies at this share of the menu's height."""
        place_cursor(self.desk.display, *wait_for("the icon in the tray", self.icon))
        self.desk.mouse.click(RIGHT)
        left, top, width, height = wait_for("the menu", self.menu)
        place_cursor(self.desk.display, left + width // 2, top + round(share * height))
        self.desk.mouse.click()


def test_the_window_hides_in_the_tray_which_brings_it_back_or_ends_the_program(desk, user):
    desk.prepare(field("a"))
    tray = Tray(user)
    user.start()
    wait_for("the icon", tray.icon)
    user.close_window()
    tray.double_click()
    user.front()
    user.close_window()
    tray.choose(0.44)
    user.front()
    tray.choose(0.17)
    desk.wait_until_open()
    desk.close_wheel()
    tray.choose(0.82)  # with the window in sight, which a quit would ask and which never agrees to close
    assert desk.program.wait(GENEROUS_S) == 0


def test_without_a_tray_a_closed_window_leaves_the_toggle_key(desk, user):
    """With Qt's other event loop too, which serves no timers of the engine by itself."""
    desk.variables["QT_NO_GLIB"] = "1"
    desk.prepare(field("a"), field("b"))
    user.start()
    user.close_window()
    user.play(1, 2)
    desk.recorder.wait_for("key-up b")


LOOKS = {"fluent": 1, "neon": 1, "pro": 1, "fluent-large": 1.5, "neon-huge": 2}
LEAVES = ("label", "push button", "check box", "radio button", "slider", "spin box", "combo box", "list", "tree")


def lies_within(inner, outer):
    return all(a >= b and a + length <= b + whole for a, b, length, whole in zip(inner, outer, inner[2:], outer[2:]))


def overlap(one, other):
    return all(a < b + length and b < a + whole for a, b, whole, length in zip(one, other, one[2:], other[2:]))


@pytest.mark.parametrize("look", LOOKS)
def test_every_page_fits_on_the_screen_and_nothing_covers_another_or_has_no_name(desk, user, request, look):
    """The pictures are kept, to be looked at."""
    desk.target.save_theme(look.partition("-")[0])
    user.scale = LOOKS[look]
    desk.variables["QT_SCALE_FACTOR"] = str(user.scale)
    desk.prepare(field("a", icon="icons/atak.png", color="#E74C3C", name="Granat z bardzo długim opóźnieniem i nazwą"))
    user.start()
    user.open_file("default.json")
    pictures = Path(request.config.getoption("artefacts")) / "linux"
    pictures.mkdir(parents=True, exist_ok=True)
    for number, page in enumerate(("Start", "Koła wyboru", "Komendy głosowe", "Sterowanie wzrokiem", "Ustawienia")):
        user.go_to(page)
        user.keyboard.press("Shift_L")  # backwards from the list of pages: to the page's last control
        user.keyboard.tap("Tab")
        user.keyboard.release("Shift_L")
        last = wait_for("the focus on the page", lambda: user.window.look_for(
            lambda widget: widget.is_in(FOCUSED) and widget.role() in LEAVES and widget.name() != "Strony"))
        wait_for(f"it to be in view {last.name()} {last.place()} {user.window.place()}", lambda: lies_within(last.place(), user.window.place()))
        save_png(desk.display.picture(), pictures / f"look-{look}-{number}.png")
        assert lies_within(user.window.place(), (0, 0, *(side / user.scale for side in desk.screen.size)))
        seen = [(each, each.place()) for each in user.window.shown() if each.role() in LEAVES]
        for at, (widget, place) in enumerate(seen):
            assert user.scale > 1 or lies_within(place, user.window.place()), widget.name()
            assert not widget.is_in(FOCUSABLE) or widget.name(), place
            assert not (hidden := [other.name() for other, there in seen[:at] if overlap(place, there)]), widget.name()
