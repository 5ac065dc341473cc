"""Somebody speaks, the real recogniser listens."""

import pytest

from desk.desk import field
from desk.device import Device, wait_until_published
from desk.sound import SoundServer
from desk.waiting import wait_for


class Speaker:
    """Two wheels of two fields, each with a phrase, and a function without a field; and who speaks to them."""

    def __init__(self, desk):
        target = desk.target
        library = desk.speech / "runtime" / target.runtime_folder / target.library_file("libvosk")
        self.desk, self.sound = desk, SoundServer(desk.screen)
        self.recogniser = Device(desk, "adapter", "adapter", f"library {target.path_text(library)}",
                                 voiceModel=target.path_text(desk.speech / "model"))
        desk.prepare()
        desk.write("voice.json", {"actions": [field("e", voice="zapisz")]})
        desk.start(field("a", voice="leczenie"), field("b", voice="tarcza"),
                   more=[{"actions": [field("c", voice="mapa"), field("d")]}], cursor=(900, 300),
                   **self.recogniser.settings)
        self.recogniser.wait_for_call("listening")

    def say(self, text, understood=None):
        """Waits until the recogniser has understood, that or else the text itself."""
        line = f'"text" : "{understood or text}"'
        before = len(self.recogniser.log())
        self.sound.say(text)
        wait_for(f"{line} after {self.recogniser.log()}",
                 lambda: any(line in heard for heard in self.recogniser.log()[before:]))

    def expect(self, *presses):
        """These have arrived since the last time, and nothing but them."""
        recorder = self.desk.recorder
        wait_for(f"{presses}", lambda: len(recorder.presses()) >= len(presses))
        assert recorder.presses() == list(presses)
        recorder.mark()

    def show_wheel(self):
        self.say("pokaż koło")
        self.desk.wait_until_open()


@pytest.fixture
def speaker(desk):
    return Speaker(desk)


def test_the_wheel_is_shown_turned_chosen_from_and_hidden(speaker, desk):
    speaker.show_wheel()
    speaker.say("schowaj koło")
    desk.wait_until_closed()
    for turn, index, key in (("następne koło", 1, "d"), ("poprzednie koło", 0, "a")):
        speaker.show_wheel()
        speaker.say(turn)
        desk.aim(index)
        speaker.say("kliknij")
        desk.wait_until_closed()
        speaker.expect(f"key-down {key}", f"key-up {key}")


def test_phrases_run_their_functions_and_what_is_no_phrase_does_nothing(speaker, desk):
    for text in ("dzień dobry", "która godzina", "zielone drzewo"):
        speaker.say(text, "[unk]")
    speaker.say("kliknij dwa razy na trzy")  # meant for numbered elements, of which there are none
    for text, key in (("tarcza", "b"), ("mapa", "c"), ("zapisz", "e")):  # "mapa" is of the wheel that is not active
        speaker.say(text)
        speaker.expect(f"key-down {key}", f"key-up {key}")
    speaker.show_wheel()
    speaker.say("leczenie")
    desk.wait_until_closed()
    speaker.expect("key-down a", "key-up a")


def test_clicks_go_to_the_real_cursor_and_numbers_lead_it_through_the_grid(speaker, desk):
    for text, clicks in (("kliknij", ["left"]), ("dwuklik", ["left", "left"]), ("prawy klik", ["right"])):
        speaker.say(text)
        speaker.expect(*[f"button-{way} {button}" for button in clicks for way in ("down", "up")])
    for text, place in (("pokaż siatkę", (640, 400)), ("jedenaście", (800, 500)), ("dwa", (880, 450))):
        speaker.say(text)
        wait_for(f"the cursor at {place}", lambda: desk.display.cursor() == place)
    speaker.say("kliknij")
    desk.recorder.wait_for("button-up left")
    assert {record.place for record in desk.recorder.since_mark("button-down")} == {(880, 450)}


@pytest.mark.only("linux")  # Wine's programs tell nobody what they show
def test_a_number_of_two_words_opens_an_entry_of_another_program(speaker, desk):
    desk.screen.launch("gtk3-demo")
    wait_until_published(desk.screen, "gtk3-demo")
    windows = len(list(desk.display.shown_windows()))
    speaker.say("pokaż elementy")
    wait_for("labels", lambda: len(list(desk.display.shown_windows())) > windows)
    speaker.say("kliknij dwa razy na dwadzieścia jeden")
    wait_for("the entry's window", lambda: desk.display.title(desk.display.active_window()) == "Foreign drawing")
    wait_for("a pointer that the window manager does not hold", lambda: desk.next_motion() != (0, 0))
