"""Somebody speaks, the real recogniser listens."""

from desk.desk import field
from desk.device import Device
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

    def expect(self, *things):
        """These have been pressed and released since the last time, and nothing but them."""
        self.desk.recorder.expect(*things)
        self.desk.recorder.mark()


def test_the_wheel_is_shown_turned_chosen_from_and_hidden_and_phrases_run_their_functions(desk):
    speaker = Speaker(desk)
    for turns, choice, key in (((), "schowaj koło", ""), (("następne koło",), "kliknij", "d"), ((), "leczenie", "a")):
        speaker.say("pokaż koło")
        desk.wait_until_open()
        for turn in turns:
            speaker.say(turn)
            desk.aim(1)
        speaker.say(choice)
        desk.wait_until_closed()
        speaker.expect(*key)
    for text in ("dzień dobry", "która godzina", "zielone drzewo"):
        speaker.say(text, "[unk]")
    speaker.say("kliknij dwa razy na trzy")  # meant for numbered elements, of which there are none
    for text, key in (("tarcza", "b"), ("mapa", "c"), ("zapisz", "e")):  # "mapa" may be of the wheel that is not active
        speaker.say(text)
        speaker.expect(key)


def test_clicks_go_to_the_real_cursor_and_numbers_lead_it_through_the_grid(desk):
    speaker = Speaker(desk)
    for text, *buttons in (("kliknij", "left"), ("dwuklik", "left", "left"), ("prawy klik", "right")):
        speaker.say(text)
        speaker.expect(*buttons)
    for text, place in (("pokaż siatkę", (640, 400)), ("jedenaście", (800, 500)), ("dwa", (880, 450))):
        speaker.say(text)
        wait_for(f"the cursor at {place}", lambda: desk.display.cursor() == place)
    for click in (desk.mouse.click, lambda: speaker.say("kliknij")):  # the person's goes through the grid
        click()
        desk.recorder.wait_for("button-up left")
        assert {record.place for record in desk.recorder.since_mark("button-down")} == {(880, 450)}
        desk.recorder.mark()
