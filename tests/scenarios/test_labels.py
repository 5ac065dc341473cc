"""Numbers on the screen, by what a stand-in for the recogniser has heard: the cells of the grid, and labels over what
can be clicked in other programs."""

import signal

import pytest

from desk.desk import field
from desk.device import Device, wait_until_published
from desk.hands import place_cursor
from desk.sound import SoundServer
from desk.waiting import holds_within, wait_for

# Program, its name for assistive technology, the title of its first window.
GTK = "gtk3-demo", "gtk3-demo", "Application Class"
QT = "/usr/lib/qt6/bin/designer", "Designer", "New Form — Qt Designer"


class Speaker:
    """Voice by a stand-in, and the layers that appear above the windows that are there now."""

    def __init__(self, desk):
        SoundServer(desk.screen)
        self.desk, self.display, self.voice = desk, desk.display, Device(desk, "speech")

    def say(self, words):
        self.voice.add(f"say {words}")

    def windows(self):
        return {window.id for window in self.display.shown_windows()}

    def start(self):
        self.desk.start(field("a"), **self.voice.settings)
        self.others = self.windows()

    def start_beside(self, program, name, title):
        self.desk.prepare(field("a"), **self.voice.settings)
        self.desk.start_program()
        other = self.desk.screen.launch(program)
        self.wait_for_title(title)
        wait_until_published(self.desk.screen, name)
        place_cursor(self.display, 1270, 790)
        self.others = self.windows()
        return other

    def wait_for_title(self, title):
        wait_for(f"the window {title}", lambda: self.display.title(self.display.active_window()) == title)

    def layer(self, width=1280, height=800):
        return next((window for window in self.display.shown_windows()
                     if (window.width, window.height) == (width, height) and window.id not in self.others), None)

    def wait_for_none(self, *size):
        wait_for("the layer to go", lambda: not self.layer(*size))

    def show_labels(self, words="pokaż elementy", *size):
        before = self.display.picture()
        self.say(words)
        shown = wait_for(f"labels after {words}", lambda: self.layer(*size))
        wait_for("their picture", lambda: (self.display.picture() != before).any(2).sum() > 1000)
        return shown


@pytest.fixture
def speaker(desk):
    return Speaker(desk)


def is_white(display, x, y, least=0xB0):
    return display.picture()[y, x].min() > least


def test_numbers_narrow_the_grid_down_to_a_point_that_is_clicked(speaker, desk):
    speaker.start()
    # What is said, the left, top, width and height of the grid then, the cursor in its middle.
    for words, (left, top, width, height), centre in (
            ("pokaż siatkę", (0, 0, 1280, 800), (640, 400)), ("siedemnaście", (0, 0, 1280, 800), (640, 400)),
            ("sześć", (320, 200, 320, 200), (480, 300)), ("cztery", (480, 300, 160, 100), (560, 350)),
            ("jeden", (480, 300, 80, 50), (520, 325)), ("trzy", (480, 325, 40, 25), (500, 337))):
        speaker.say(words)
        wait_for(f"cursor and grid after {words}", lambda: desk.display.cursor() == centre and any(
            (shown.left, shown.top, shown.width, shown.height) == (left, top, width, height)
            for shown in desk.display.shown_windows() if shown.id not in speaker.others))
        wait_for("the line through its middle", lambda: is_white(desk.display, centre[0], centre[1] - height // 8))
    desk.recorder.mark()
    for click in (desk.mouse.click, lambda: speaker.say("kliknij")):  # the person's goes through the grid
        click()
        desk.recorder.wait_for("button-up left")
        assert {record.place for record in desk.recorder.since_mark("button-down", "button-up")} == {(500, 337)}
        desk.recorder.mark()
    speaker.wait_for_none(40, 25)


@pytest.mark.only("linux")  # elsewhere there is always one
def test_without_a_compositor_the_program_below_the_grid_stays_in_sight_and_in_reach(speaker, desk):
    desk.screen.set_compositor("none")
    speaker.start()
    below = desk.display.picture()[230, 400]
    speaker.say("pokaż siatkę")
    wait_for("the line down the middle", lambda: is_white(desk.display, 640, 230, 0xA0))
    assert (desk.display.picture()[230, 400] == below).all()
    place_cursor(desk.display, 640, 230)
    desk.mouse.click()
    desk.recorder.wait_for("button-up left")


@pytest.mark.only("linux")  # Wine's programs tell nobody what they show
def test_numbers_click_the_controls_of_a_gtk_program(speaker):
    speaker.start_beside(*GTK)
    speaker.show_labels()
    speaker.say("siedem")  # an entry of the list
    speaker.wait_for_title("Assistant")
    speaker.wait_for_none()
    speaker.show_labels()
    before = speaker.windows() - {speaker.layer().id}
    speaker.say("kliknij prawy na trzydzieści trzy")  # the text, which has a menu
    menu = wait_for("the menu in the labels' place", lambda: not speaker.layer() and next(
        (window for window in speaker.display.shown_windows() if window.id not in before and window.top >= 0), None))
    speaker.show_labels()
    speaker.say("jeden")  # the one entry of the menu that can be chosen
    wait_for("the menu to go", lambda: menu.id not in speaker.windows())
    x, y = speaker.display.cursor()
    assert menu.left <= x < menu.left + menu.width and menu.top <= y < menu.top + menu.height
    speaker.show_labels()
    speaker.say("kliknij dwa razy na dwanaście")  # an entry that starts something
    speaker.wait_for_title("Clipboard")
    # A busy window manager holds the pointer from a press on until it has seen it.
    wait_for("a pointer that nobody holds", lambda: speaker.desk.next_motion() != (0, 0))


@pytest.mark.only("linux")
def test_a_number_clicks_a_button_of_a_qt_program(speaker):
    speaker.start_beside(*QT)
    speaker.show_labels("pokaż elementy strony")  # where there is no page, the window counts
    speaker.say("jedenaście")
    wait_for("the dialogue to close", lambda: not speaker.display.titled(QT[-1]))
    speaker.show_labels()
    speaker.say("ukryj elementy")
    speaker.wait_for_none()


@pytest.mark.only("linux")
def test_a_program_that_has_stopped_holds_nothing_up(speaker, desk):
    other = speaker.start_beside(*GTK)
    other.send_signal(signal.SIGSTOP)
    speaker.say("pokaż elementy")
    speaker.voice.wait_for_call("result")
    desk.open_wheel()
    desk.close_wheel()
    desk.screen.run("xdotool", "search", "--onlyvisible", "--class", "rotika", "windowactivate")
    speaker.wait_for_title("Rotika")
    # Until the scan of the stopped program has ended, another is refused.
    wait_for("labels", lambda: speaker.say("pokaż elementy") or holds_within(3, speaker.layer), 30)
    other.send_signal(signal.SIGCONT)


@pytest.mark.only("linux")
def test_labels_and_grid_keep_to_the_monitor_that_is_meant(speaker, desk):
    desk.screen.set_monitors((0, 0, 640, 800), (640, 0, 640, 800))
    speaker.start_beside(*GTK)
    for left in (700, 60):
        monitor = left // 640 * 640
        desk.screen.run("xdotool", "search", "--name", GTK[-1], "windowsize", "500", "600",
                        "windowmove", "--sync", str(left), "60")
        assert speaker.show_labels("pokaż elementy", 640, 800).left == monitor
        place_cursor(desk.display, monitor + 10, 790)
        for words, cursor, size in (("pokaż siatkę", (320, 400), (640, 800)), ("szesnaście", (560, 700), (160, 200))):
            speaker.say(words)
            wait_for(f"the grid after {words}", lambda: speaker.layer(*size) and
                     desk.display.cursor() == (monitor + cursor[0], cursor[1]))
        speaker.say("schowaj siatkę")
        speaker.wait_for_none(160, 200)
