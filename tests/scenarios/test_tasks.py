"""The forty everyday tasks of the manual's last chapter, each done without a mouse: by keyboard alone, by voice alone, and
by eyes with one switch. Voice and eyes use the functions of the shipped examples, the keyboard the same keys."""

import json
import shutil
from collections import namedtuple
from pathlib import Path

import pytest

from desk.accessible import FOCUSED, SELECTED, Program
from desk.desk import field, field_point
from desk.device import Device
from desk.recorder import RawKeyPresses
from desk.sound import SoundServer
from desk.waiting import TIMEOUT_S, wait_for

pytestmark = pytest.mark.only("linux")  # Wine publishes no widgets

ROOT = Path(__file__).parents[2]
EXAMPLES = ROOT / "packaging/examples"
FUNCTIONS = {function["voice"]: function for wheel in json.loads((EXAMPLES / "głos.json").read_text())["wheels"]
             for function in wheel["actions"]}
FIELDS = {function.get("voice") for wheel in json.loads((EXAMPLES / "koła.json").read_text())["wheels"]
          for function in wheel["actions"]}
CHARACTERS = {function["steps"][0]["key"]: phrase for phrase, function in FUNCTIONS.items()
              if phrase.startswith(("litera", "cyfra"))} | {".": "kropka"}
KEYSYMS = {"ctrl": "Control_L", "shift": "Shift_L", "alt": "Alt_L", "enter": "Return", "esc": "Escape", "tab": "Tab",
           "pageup": "Prior", "pagedown": "Next", "up": "Up", "down": "Down", "left": "Left", "right": "Right",
           "delete": "Delete", "home": "Home", "end": "End", ".": "period", "backspace": "BackSpace"}
DWELL_MS = 250


class Person:
    """Works at a desk on one road. `act` does what a function of the examples does, by the road's own means."""

    functions = ()  # of the wheel, for the eyes

    def __init__(self, desk):
        self.desk, self.keyboard = desk, desk.keyboard
        self.settings, self.voice_file = {"sendDelay": 20, "keyHold": 20}, {"wheels": []}
        desk.variables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def start(self, *fields, more=(), in_recorder=False, **settings):
        self.desk.prepare(*(fields or [field("b", name="Leczenie")]), more=more, **self.settings | settings)
        self.desk.write("voice.json", self.voice_file)
        self.desk.remember_wheel_file("default.json")
        self.desk.start_program()
        self.get_ready()
        if in_recorder:
            self.desk.work_in_recorder()
        return self

    def get_ready(self):
        pass

    def act(self, *phrases):
        for phrase in phrases:
            self.perform(phrase)

    def write(self, text):
        self.act(*(CHARACTERS[character] for character in text))

    def in_front(self, title):
        wait_for(f"{title} in front", lambda: self.desk.is_in_front(title))

    def wait_for_window(self):
        """Of a program that has started itself again."""
        wait_for("the window", lambda: self.desk.display.focused_title() == "Rotika")

    def page(self, number):
        self.act(("strona start", "strona koła", "strona głos", "strona wzrok", "strona ustawienia")[number - 1])

    def config(self):
        return json.loads(self.desk.read("config.json"))

    def wheels(self, name="default.json"):
        return json.loads(self.desk.read(name))["wheels"]

    def function(self):
        return self.wheels()[0]["actions"][0]

    def focused(self):
        """What has the keyboard: names of the widgets."""
        return [name for widget in Program(self.desk.screen, "Rotika").shown() if widget.has_state(FOCUSED)
                for each in widget.with_its_list() for name in (each.name(), each.description())]

    def go_to(self, name, after=None):
        """By the Tab key, from where a function leads to."""
        if after:
            self.act(after)
        for _ in range(20):
            if name in (now := self.focused()):
                return
            self.act("następne pole")
            wait_for("another widget", lambda: self.focused() != now)
        raise AssertionError(f"Tab does not reach {name}")

    def wait_for_page(self, name):
        pages = Program(self.desk.screen, "Rotika").find("Strony", "list")
        wait_for(f"the page {name}", lambda: pages.find(name, "list item").has_state(SELECTED))

    def shortcut(self, key, phrase):
        """Of the desktop. A voice function presses it."""
        self.keyboard.tap(key)


class Hands(Person):
    def perform(self, phrase):
        for step in FUNCTIONS[phrase]["steps"]:
            key = KEYSYMS.get(step["key"], step["key"])
            for _ in range(step.get("value", 1) if step["action"] == "click" else 0):
                self.keyboard.tap(key)
            if step["action"] != "click":
                self.keyboard.press(key, step["action"] == "hold")

    def write(self, text):
        self.keyboard.type(text)

    def use_mouse_keys(self, *keys):
        """The system's own: the keypad moves the cursor and clicks."""
        self.desk.display.enable_mouse_keys()
        for key in keys:
            self.keyboard.tap(key)


class Automatic(Person):
    """The program presses the keys."""

    def get_ready(self):
        self.presses = RawKeyPresses(self.desk.screen)

    def perform(self, phrase):
        self.open(phrase)
        wanted = self.presses.count() + sum(step.get("value", 1) if step["action"] == "click" else step["action"] == "hold"
                                            for step in FUNCTIONS[phrase]["steps"] if not step["key"].endswith("mb"))
        self.choose(phrase)
        wait_for(f"the keys of {phrase}", lambda: self.presses.count() >= wanted and not self.desk.display.keys_down())


class Voice(Automatic):
    def __init__(self, desk):
        super().__init__(desk)
        SoundServer(desk.screen)
        self.recogniser = Device(desk, "speech")
        self.settings |= self.recogniser.settings
        self.voice_file = json.loads((EXAMPLES / "głos.json").read_text())

    def get_ready(self):
        super().get_ready()
        self.recogniser.wait_for_call("accept_waveform")

    def say(self, phrase):
        self.recogniser.add(f"say {phrase}")

    open, choose = (lambda self, phrase: None), say

    def shortcut(self, key, phrase):
        self.say(phrase)

    def point_by_grid(self, *numbers, to):
        for phrase in ("pokaż siatkę", *numbers):
            self.say(phrase)
        wait_for(f"the cursor at {to}", lambda: self.desk.display.cursor() == to)


class Eyes(Automatic):
    """The toggle key is a switch. The wheel holds the functions that a task needs."""

    def __init__(self, desk):
        super().__init__(desk)
        self.tracker = Device(desk, "gaze", gazeDwell=DWELL_MS)
        self.settings |= self.tracker.settings

    def start(self, *fields, more=(), **settings):
        assert FIELDS.issuperset(self.functions)
        chosen = fields or [FUNCTIONS[phrase] for phrase in self.functions]
        return super().start(*chosen, more=more, **settings)

    def get_ready(self):
        super().get_ready()
        self.tracker.wait_for_status("aktywny")

    def look(self, x, y):
        shown, (width, height) = self.desk.wheel(), self.desk.screen.size
        self.tracker.add(f"look {(shown.left + x + .5) / width} {(shown.top + y + .5) / height} 1")

    def look_at_field(self, index, count):
        self.look(*field_point(index, count))
        self.desk.wait_until_closed()
        self.tracker.write()

    def open(self, phrase=None):
        self.keyboard.tap("x")
        wait_for("the wheel", self.desk.wheel)

    def choose(self, phrase):
        self.look_at_field(self.functions.index(phrase), len(self.functions))


Task = namedtuple("Task", "title play voice eyes")
TASKS = []
ROADS = {"keyboard": Hands, "voice": Voice, "eyes": Eyes}


def task(title, voice="", eyes="bez liter i wielu kroków naraz"):
    """Registers a function that does the task and checks that it is done. `voice` and `eyes`: why there is no such road,
    or for the eyes the functions that the wheel holds."""
    def register(play):
        TASKS.append(Task(title, play, voice, eyes))
        return play
    return register


def cases():
    for done in TASKS:
        has_road = {"keyboard": True, "voice": not done.voice, "eyes": not isinstance(done.eyes, str)}
        for road in filter(has_road.get, ROADS):
            yield pytest.param(done, road, id=f"{done.play.__name__}-{road}")


WHEEL_KEYS = {"takeFocus": True, "sendDelay": 250}  # the keyboard chooses on the open wheel; time to give it back


@task("uruchomienie programu", voice="nic jeszcze nie słucha; program startuje z systemem",
      eyes="koła jeszcze nie ma; program startuje z systemem")
def start(person):
    desk = person.desk
    desk.prepare(field("b"))
    desk.screen.bind_key("F9", desk.folder / "rotika")
    person.keyboard.tap("F9")
    wait_for("the window", lambda: desk.display.titled("Rotika"))
    desk.launch_program("--quit").wait(TIMEOUT_S)


@task("otwarcie koła", eyes=())
def open_wheel(person):
    person.start(field("b"), in_recorder=True)
    person.say("pokaż koło") if isinstance(person, Voice) else person.keyboard.tap("x")
    person.desk.wait_until_open()


@task("zamknięcie koła", eyes=())
def close_wheel(person):
    person.start(field("b"), in_recorder=True)
    person.desk.open_wheel()
    person.say("schowaj koło") if isinstance(person, Voice) else person.keyboard.tap("x")
    person.desk.wait_until_closed()


@task("wybór pola", eyes=())
def choose(person):
    person.start(field("a", voice="leczenie"), field("b", voice="tarcza"), in_recorder=True, **WHEEL_KEYS)
    if isinstance(person, Voice):
        person.say("tarcza")
    elif isinstance(person, Eyes):
        person.open()
        person.look_at_field(1, 2)
    else:
        person.desk.open_wheel()
        person.keyboard.tap("2")
    person.desk.recorder.wait_for("key-up b")


@task("zmiana koła", eyes=())
def turn_page(person):
    others = [{"actions": [field("b", voice="tarcza", color="#3040E0")]}] * 9
    person.start(field("a", color="#E03030"), more=others, in_recorder=True, **WHEEL_KEYS)
    person.desk.open_wheel()
    if isinstance(person, Voice):
        person.say("następne koło")
    elif isinstance(person, Eyes):
        person.look(556, 230)  # the right arrow
    else:
        person.keyboard.tap("Next")
    wait_for("a blue field", lambda: person.desk.display.picture(person.desk.wheel().id)[230, 150].argmax() == 2)
    if isinstance(person, Voice):
        person.say("tarcza")
    elif isinstance(person, Eyes):
        person.look(294, 80)
    else:
        person.keyboard.tap("1")
    person.desk.recorder.wait_for("key-up b")


@task("kliknięcie, podwójne i prawe, w dowolnym miejscu", eyes="wzrok nie rusza prawdziwego kursora")
def click(person):
    person.start(field("lmb"), in_recorder=True)
    if isinstance(person, Hands):
        person.use_mouse_keys("KP_Right")
        for keys, buttons in (("KP_Begin", ("left",)), ("KP_Add", ("left", "left"))):
            person.keyboard.tap(keys)
            person.desk.recorder.expect(*buttons)
            person.desk.recorder.mark()
        for key in ("KP_Subtract", "KP_Begin"):  # chooses the right button
            person.keyboard.tap(key)
    else:
        person.point_by_grid("jedenaście", "dwa", to=(880, 450))
        for phrase, buttons in (("kliknij", ("left",)), ("dwuklik", ("left", "left"))):
            person.say(phrase)
            person.desk.recorder.expect(*buttons)
            person.desk.recorder.mark()
        person.say("prawy klik")
    person.desk.recorder.expect("right")


@task("przewijanie", eyes=("strona w dół",))
def scroll(person):
    person.start(in_recorder=True)
    person.act("strona w dół")
    person.desk.recorder.expect("Next")


@task("przeciąganie", eyes="wzrok nie rusza prawdziwego kursora")
def drag(person):
    person.start(in_recorder=True)
    if isinstance(person, Hands):
        person.use_mouse_keys("KP_Insert", "KP_Right", "KP_Delete")  # holds, moves, releases
    else:
        person.act("chwyć")
        person.desk.recorder.wait_for("button-down left")
        person.point_by_grid("jedenaście", to=(800, 500))
        person.act("upuść")
    person.desk.recorder.wait_for("button-up left")
    begin, end = person.desk.recorder.since_mark("button-down", "button-up")
    assert begin.position != end.position


@task("pisanie", eyes=tuple(CHARACTERS[letter] for letter in "kot"))
def type_text(person):
    person.start(in_recorder=True)
    person.write("kot")
    person.desk.recorder.expect(*"kot")


@task("przejście do innego programu", eyes=("następne okno",))
def switch_program(person):
    person.start(in_recorder=True)
    person.desk.screen.bind_key("F9")
    person.act("następne okno")
    person.in_front("Rotika")


@task("zmiana strony", eyes=("strona ustawienia",))
def change_page(person):
    person.start()
    person.page(5)
    person.wait_for_page("Ustawienia")


@task("motyw", eyes=("strona ustawienia", "w dół"))
def theme(person):
    person.start()
    person.page(5)
    person.act("w dół")
    wait_for("the theme", lambda: person.desk.ui_setting("theme") == "neon")


def switch(person, key):
    """Changes the check box that has the keyboard."""
    was = person.config().get(key, True)
    person.act("spacja")
    wait_for("the setting", lambda: person.config().get(key) is not was)


@task("włączenie i wyłączenie głosu", voice="wyłączony głos nie słyszy, że ma się włączyć", eyes=("strona głos", "spacja"))
def voice_on_off(person):
    person.start()
    person.page(3)
    for _ in range(2):
        switch(person, "voiceEnabled")


@task("frazy zawsze albo tylko przy otwartym kole", eyes=("strona głos", "następne pole", "spacja"))
def global_phrases(person):
    person.start()
    person.page(3)
    person.act("następne pole")
    switch(person, "voiceGlobal")


@task("włączenie i wyłączenie wzroku", eyes="wyłączony wzrok nie wybierze pola, które go włącza")
def gaze_on_off(person):
    person.start()
    person.page(4)
    for _ in range(2):
        switch(person, "gazeEnabled")


@task("czas wyboru spojrzeniem")
def dwell_time(person):
    person.start()
    person.page(4)
    person.act("następne pole", "w prawo", "w prawo", "poprzednie pole", "spacja", "spacja")
    wait_for("the time", lambda: person.config().get("gazeDwell") == 1000)


ONLY_IN_FILE = "ustawienie jest tylko w pliku config.json"


def edit_settings(person, name, old, new):
    """In a terminal, with a desktop's key for it. The letter x is the wheel's key, and so cannot be typed."""
    person.desk.screen.bind_key("F9", "env QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 xterm -T Terminal")
    person.keyboard.tap("F9")
    wait_for("the terminal", lambda: person.desk.display.focused_title() == "Terminal")
    person.keyboard.type(f"cd ../program; sed -i /{name}/s/{old}/{new}/ config.json; setsid ./rotika --restart\n")
    wait_for("the end of the first program", lambda: person.desk.program.poll() is not None)
    person.wait_for_window()


@task("kolor koła", voice=ONLY_IN_FILE, eyes=ONLY_IN_FILE)
def wheel_colour(person):
    person.start(segmentColor="#3498DB")
    edit_settings(person, "segmentColor", "3498DB", "E01010")
    person.desk.open_wheel()
    red, green, _ = person.desk.display.picture(person.desk.wheel().id)[230, 150]
    assert red > 2 * green
    person.desk.close_wheel()


@task("klawisz koła", eyes="okno klawisza ma listę, do której potrzeba wielu kroków")
def toggle_key(person):
    person.desk.screen.bind_key("F9", f"{person.desk.folder}/rotika --toggle-key")
    person.voice_file["wheels"].append({"actions": [field("F9", voice="klawisz koła")]})
    person.start()
    person.shortcut("F9", "klawisz koła")
    person.in_front("Klawisz koła")
    if isinstance(person, Hands):
        person.keyboard.tap("F8")
    else:
        person.go_to("Nowy klawisz z listy")
        person.act("w górę")
    person.go_to("Zapisz")
    person.act("zatwierdź")
    if isinstance(person, Voice):
        person.recogniser.write()  # since the next program would hear all of it again
    wait_for("the end of the first program", lambda: person.desk.program.poll() is not None)
    person.wait_for_window()
    person.keyboard.tap(person.config()["toggleKey"])
    wait_for("the wheel", person.desk.wheel)
    person.keyboard.tap(person.config()["toggleKey"])
    person.desk.wait_until_closed()


@task("czasy i fokus koła", voice=ONLY_IN_FILE, eyes=ONLY_IN_FILE)
def delays_and_focus(person):
    person.start(takeFocus=False)
    edit_settings(person, "takeFocus", "false", "true")
    person.desk.open_wheel()
    person.keyboard.tap("1")
    person.desk.wait_until_closed()


@task("ścieżki bibliotek i modelu", voice=ONLY_IN_FILE, eyes=ONLY_IN_FILE)
def paths(person):
    tracker = Device(person.desk, "gaze")
    person.start(gazeEnabled=True, gazeDllPath="./dawna")
    tracker.wait_for_status(f"brak {tracker.library.name} (zainstaluj oprogramowanie Tobii)")
    shutil.copy(tracker.library, person.desk.folder / "nowa")
    edit_settings(person, "gazeDllPath", "dawna", "nowa")
    tracker.wait_for_status("aktywny")


@task("otwarcie pliku kół")
def open_file(person):
    person.start()
    person.desk.write("gra.json", {"actions": [field("g", name="Gra")]})
    person.act("otwórz plik")
    person.in_front("Otwórz plik kół")
    person.write("gra.json")
    person.act("zatwierdź")
    person.in_front("Rotika")
    wait_for("the file", lambda: person.desk.ui_setting("lastWheelFile").endswith("gra.json"))


@task("nowe koło", eyes=("strona koła", "nowe koło", "zatwierdź", "zapisz plik"))
def add_wheel(person):
    person.start()
    person.page(2)
    person.act("nowe koło")
    person.in_front("Nowe koło")
    person.act("zatwierdź")
    person.in_front("Rotika")
    person.act("zapisz plik")
    wait_for("the wheel", lambda: [wheel["name"] for wheel in person.wheels()][-1] == "Koło 2")


@task("nowa funkcja", eyes=("strona koła", "nowa funkcja", "zapisz plik"))
def add_function(person):
    person.start()
    person.page(2)
    person.act("nowa funkcja", "zapisz plik")
    wait_for("the function", lambda: person.wheels()[0]["actions"][-1]["name"] == "Nowa funkcja")


@task("nazwa i fraza funkcji")
def name_and_phrase(person):
    person.start()
    person.page(2)
    person.act("nazwa funkcji")
    person.write("kot")
    person.act("następne pole")
    person.write("mapa")
    person.act("zapisz plik")
    wait_for("both", lambda: (person.function()["name"], person.function().get("voice")) == ("kot", "mapa"))


@task("rodzaj i klawisz kroku")
def step_kind_and_key(person):
    person.start()
    person.page(2)
    person.go_to("Rodzaj kroku", after="nazwa funkcji")
    person.act("w dół", "następne pole", "zaznacz wszystko")
    person.write("f5")
    person.act("dodaj krok", "zapisz plik")
    wait_for("the step", lambda: person.function()["steps"][-1] == {"key": "f5", "action": "hold", "value": 1})


@task("liczba, czas i odstęp")
def value_and_delay(person):
    person.start()
    person.page(2)
    person.go_to("Odstęp między krokami w milisekundach", after="nazwa funkcji")
    person.act("w górę")
    person.go_to("Liczba kliknięć albo czas w milisekundach")
    person.act("zaznacz wszystko")
    person.write("7")
    person.act("dodaj krok", "zapisz plik")
    wait_for("both", lambda: person.function().get("delay") == 31 and person.function()["steps"][-1]["value"] == 7)


def choose_in_dialog(person, button, title):
    person.start()
    person.page(2)
    person.go_to(button, after="nazwa funkcji")
    person.act("zatwierdź")
    person.in_front(title)
    person.act("w prawo", "zatwierdź")
    person.in_front("Rotika")
    person.act("zapisz plik")


@task("ikona")
def icon(person):
    choose_in_dialog(person, "Ikona: Wybierz…", "Wybierz ikonę")
    wait_for("the icon", lambda: person.function().get("icon", "").startswith("icons/"))


@task("kolor pola")
def field_colour(person):
    choose_in_dialog(person, "Kolor pola: domyślny", "Kolor pola")
    wait_for("the colour", lambda: person.function().get("color"))


def with_two_steps(person):
    """The list of steps has the keyboard, the second of two is selected."""
    person.start(field("a", "b"))
    person.page(2)
    person.go_to("Czynności (kroki sekwencji)", after="nazwa funkcji")
    person.act("w dół", "w dół")


def keys_of_steps(person):
    return [step["key"] for step in person.function()["steps"]]


@task("przesunięcie kroku")
def move_step(person):
    with_two_steps(person)
    person.act("krok w górę", "zapisz plik")
    wait_for("the order", lambda: keys_of_steps(person) == ["b", "a"])


@task("zamiana kroku")
def replace_step(person):
    with_two_steps(person)
    person.go_to("Klawisz lub przycisk myszy")
    person.act("zaznacz wszystko")
    person.write("c")
    person.go_to("Zamień")
    person.act("zatwierdź", "zapisz plik")
    wait_for("the step", lambda: keys_of_steps(person) == ["a", "c"])


@task("usunięcie kroku")
def remove_step(person):
    with_two_steps(person)
    person.act("usuń zaznaczone", "zapisz plik")
    wait_for("one step", lambda: keys_of_steps(person) == ["a"])


@task("usunięcie koła i odpowiedź")
def remove_wheel(person):
    person.start(more=[{"name": "Drugie", "actions": [field("d")]}])
    person.page(2)
    person.go_to("Koła i funkcje")
    person.act("na początek", "usuń zaznaczone")
    person.in_front("Edytor kół")
    person.act("zatwierdź")  # the answer by default removes nothing
    person.in_front("Rotika")
    person.act("usuń zaznaczone")
    person.in_front("Edytor kół")
    person.go_to("Tak")
    person.act("zatwierdź")
    person.in_front("Rotika")
    person.act("zapisz plik")
    wait_for("one wheel", lambda: [wheel["name"] for wheel in person.wheels()] == ["Drugie"])


@task("zapis", eyes=("strona koła", "nowa funkcja", "zapisz plik"))
def save(person):
    person.start()
    before = person.desk.read("default.json")
    person.page(2)
    person.act("nowa funkcja", "zapisz plik")
    wait_for("the file", lambda: person.desk.read("default.json") != before)


@task("zapis pod inną nazwą")
def save_as(person):
    person.start()
    person.page(2)
    person.act("zapisz plik jako")
    person.in_front("Zapisz jako")
    person.act("zaznacz wszystko")
    person.write("gra")
    person.act("zatwierdź")
    person.in_front("Rotika")
    wait_for("the file", lambda: (person.desk.folder / "gra.json").exists())


@task("aktywacja", eyes=("strona koła", "nowa funkcja", "aktywuj koła"))
def activate(person):
    def wheel():
        person.keyboard.tap("x")
        picture = person.desk.display.picture(wait_for("the wheel", person.desk.wheel).id)
        person.keyboard.tap("x")
        person.desk.wait_until_closed()
        return picture

    person.start()
    before = wheel()
    person.page(2)
    person.act("nowa funkcja", "aktywuj koła")
    wait_for("a field more", lambda: (wheel() != before).any(2).sum() > 1000)


@task("koło z czterema funkcjami od zera")
def four_functions(person):
    person.start()
    person.page(2)
    person.act("nowe koło")
    person.in_front("Nowe koło")
    person.act("zatwierdź")
    person.in_front("Rotika")
    for key in "abcd":
        person.act("nowa funkcja")
        person.write("kot")
        person.go_to("Klawisz lub przycisk myszy")
        person.act("zaznacz wszystko")
        person.write(key)
        person.act("dodaj krok")
    person.act("aktywuj koła")
    wait_for("the functions", lambda: [action["steps"] for action in person.wheels()[-1]["actions"]] == [
        [{"key": key, "action": "click", "value": 1}] for key in "abcd"])


@task("okna komunikatów i plików")
def boxes(person):
    person.start()
    (person.desk.folder / "gra.json").write_text("[")
    person.act("otwórz plik")
    person.in_front("Otwórz plik kół")
    person.write("gra.json")
    person.act("zatwierdź")
    person.in_front("Edytor kół")  # the file is broken
    person.act("anuluj")
    person.in_front("Rotika")
    person.act("otwórz plik")
    person.in_front("Otwórz plik kół")
    person.go_to("Pasek boczny")  # with the user's files and the examples
    person.act("w dół", "w dół", "w dół", "w dół")
    wait_for("the folder", lambda: "przykłady" in person.focused())
    person.act("anuluj")
    person.in_front("Rotika")


@task("okno przy starcie", voice="głos rusza dopiero po zamknięciu okna", eyes="wzrok rusza dopiero po zamknięciu okna")
def startup_box(person):
    desk = person.desk
    desk.screen.bind_key("x", "true")  # another program has the wheel's key
    desk.prepare(field("b"))
    desk.program = desk.launch_program()
    wait_for("the warning", lambda: desk.display.focused_title().startswith("Rotika: Nie udało się"))
    person.keyboard.tap("Return")
    person.in_front("Rotika")


@task("powrót okna i zakończenie", eyes="okno przywraca system, poleceniem lub skrótem")
def back_and_quit(person):
    person.desk.screen.bind_key("F9", f"{person.desk.folder}/rotika --show")
    person.voice_file["wheels"].append({"actions": [field("F9", voice="pokaż okno")]})
    person.start()
    person.desk.display.close_window(person.desk.display.titled("Rotika")[0])  # there is no tray
    wait_for("the window to close", lambda: "Rotika" not in person.desk.display.titles())
    person.shortcut("F9", "pokaż okno")
    person.in_front("Rotika")
    person.act("zakończ program")
    assert person.desk.program.wait(TIMEOUT_S) == 0


@task("naprawa brakującego urządzenia", eyes="bez trackera wzrok nie działa")
def mend_device(person):
    tracker = Device(person.desk, "gaze", script="fails enumerate_local_device_urls")
    person.start(**tracker.settings)
    tracker.wait_for_status("nie wykryto urządzenia")
    tracker.write()  # it is plugged in
    person.page(4)
    for _ in range(2):
        switch(person, "gazeEnabled")
    tracker.wait_for_status("aktywny")


@pytest.mark.parametrize("done, road", cases())
def test_a_task_without_a_mouse(desk, done, road):
    person = ROADS[road](desk)
    person.functions = done.eyes
    done.play(person)


def test_the_manual_lists_the_tasks_and_the_roads():
    chapter = (ROOT / "docs/podrecznik.md").read_text().rpartition("\n## ")[2]
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in chapter.splitlines() if line.startswith("| ")]
    assert [(title, not voice.startswith("nie"), not eyes.startswith("nie")) for title, _, voice, eyes in rows[1:]] == [
        (done.title, not done.voice, not isinstance(done.eyes, str)) for done in TASKS]
    roads = [case.id.rpartition("-")[2] for case in cases()]
    assert (roads.count("keyboard"), roads.count("voice") >= 34, roads.count("eyes") >= 8) == (40, True, True)
