"""Labels over clickable elements of other programs, and the grid, driven by a double of the recogniser."""

import signal

import pytest

from desk.accessible import Program
from desk.desk import field
from desk.device import Device
from desk.input_devices import place_cursor
from desk.sound import SoundServer
from desk.waiting import holds_within, wait_for

pytestmark = pytest.mark.only("linux")  # under Wine programs publish no elements

# Program, its accessible name, the title of its first window.
GTK = "gtk3-demo", "gtk3-demo", "Application Class"
QT = "/usr/lib/qt6/bin/designer", "Designer", "New Form — Qt Designer"


class Speaker:
    """Speaks through a double of the recogniser, and finds the layers that appear above the existing windows."""

    def __init__(self, desk):
        SoundServer(desk.screen)
        self.desk, self.display, self.voice = desk, desk.display, Device(desk, "speech")

    def say(self, words):
        self.voice.add(f"say {words}")

    def windows(self):
        return {window.id for window in self.display.shown_windows()}

    def start_beside(self, program, name, title):
        self.desk.prepare(field("a"), **self.voice.settings)
        self.desk.start_program()
        other = self.desk.screen.launch(program)
        self.wait_for_title(title)
        published = Program(self.desk.screen, name)
        wait_for(f"the buttons of {name}", lambda: any(
            window.find_shown(lambda widget: widget.role() == "push button") for window in published.children()))
        place_cursor(self.display, 1270, 790)
        self.others = self.windows()
        return other

    def wait_for_title(self, title):
        wait_for(f"the window {title}", lambda: self.display.active_title() == title)

    def layer(self, width=1280, height=800):
        return next((window for window in self.display.shown_windows()
                     if (window.width, window.height) == (width, height) and window.id not in self.others), None)

    def show_labels(self, words="pokaż elementy", *size):
        before = self.display.picture()
        self.say(words)
        shown = wait_for(f"labels after {words}", lambda: self.layer(*size))
        wait_for("their picture", lambda: (self.display.picture() != before).any(2).sum() > 1000)
        return shown


def test_without_a_compositor_the_program_below_the_grid_stays_visible_and_clickable(desk):
    speaker = Speaker(desk)
    desk.screen.set_compositor("none")
    desk.screen.set_monitors((0, 0, 340, 800), (340, 0, 940, 800))
    desk.start(field("a"), **speaker.voice.settings)
    below = desk.display.pixel(400, 230)
    speaker.say("pokaż siatkę")
    wait_for("the line down the middle of the cursor's monitor", lambda: min(desk.display.pixel(810, 230)) > 0xA0)
    assert desk.display.pixel(400, 230) == below
    place_cursor(desk.display, 810, 230)
    desk.mouse.click()
    desk.recorder.wait_for("button-up left")


def test_numbers_click_controls_of_a_gtk_program_and_a_stopped_program_blocks_nothing(desk):
    speaker = Speaker(desk)
    other = speaker.start_beside(*GTK)
    speaker.show_labels()
    speaker.say("siedem")  # an entry in the list
    speaker.wait_for_title("Assistant")
    speaker.show_labels()
    before = speaker.windows() - {speaker.layer().id}
    speaker.say("kliknij prawy na trzydzieści trzy")  # the text view, which has a context menu
    menu = wait_for("the menu in the labels' place", lambda: not speaker.layer() and next(
        (window for window in speaker.display.shown_windows() if window.id not in before and window.top >= 0), None))
    speaker.show_labels()
    speaker.say("jeden")  # the menu's only enabled entry
    wait_for("the menu to close", lambda: menu.id not in speaker.windows())
    x, y = speaker.display.cursor()
    assert menu.left <= x < menu.left + menu.width and menu.top <= y < menu.top + menu.height
    other.send_signal(signal.SIGSTOP)
    results = speaker.voice.count("result")
    speaker.say("pokaż elementy")
    speaker.voice.wait_for_call("result", results + 1)
    desk.open_wheel()
    desk.close_wheel()
    desk.display.activate(desk.display.titled("Rotika")[0])
    speaker.wait_for_title("Rotika")
    # A new scan is refused until the scan of the stopped program has ended.
    wait_for("labels", lambda: speaker.say("pokaż elementy") or holds_within(3, speaker.layer), 30)
    other.send_signal(signal.SIGCONT)


def test_numbers_click_controls_of_a_qt_program_on_its_monitor(desk):
    speaker = Speaker(desk)
    desk.screen.set_monitors((0, 0, 100, 800), (100, 0, 1180, 800))
    speaker.start_beside(*QT)
    assert speaker.show_labels("pokaż elementy strony", 1180, 800).left == 100  # no page: the whole window is scanned
    speaker.say("jedenaście")
    wait_for("the dialogue to close", lambda: not speaker.display.titled(QT[-1]))
