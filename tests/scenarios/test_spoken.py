"""Synthesised speech, recognised by the real recogniser."""

from desk.desk import field
from desk.device import Device
from desk.sound import SoundServer
from desk.waiting import wait_for


class Speaker:
    """Two wheels of two fields with phrases, a voice function without a field, and a synthesised voice."""

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
        """Speaks, and waits until the recogniser has understood `understood`, or else the text itself."""
        line = f'"text" : "{understood or text}"'
        before = len(self.recogniser.log())
        self.sound.say(text)
        wait_for(f"{line} after {self.recogniser.log()}",
                 lambda: any(line in result for result in self.recogniser.log()[before:]))

    def expect(self, *things):
        """Exactly these have been pressed and released since the last call."""
        self.desk.recorder.expect(*things)
        self.desk.recorder.mark()


def test_speech_shows_turns_and_hides_the_wheel_and_runs_functions(desk):
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
    speaker.say("kliknij dwa razy na trzy")  # does nothing: no labels are shown
    for text, key in (("tarcza", "b"), ("mapa", "c"), ("zapisz", "e")):  # "mapa" belongs to the inactive wheel
        speaker.say(text)
        speaker.expect(key)


def test_spoken_clicks_go_to_the_real_cursor_and_numbers_move_it_through_the_grid(desk):
    speaker = Speaker(desk)
    for text, *buttons in (("kliknij", "left"), ("dwuklik", "left", "left"), ("prawy klik", "right")):
        speaker.say(text)
        speaker.expect(*buttons)
    for text, place in (("pokaż siatkę", (640, 400)), ("jedenaście", (800, 500)), ("dwa", (880, 450))):
        speaker.say(text)
        wait_for(f"the cursor at {place}", lambda: desk.display.cursor() == place)
    for click in (desk.mouse.click, lambda: speaker.say("kliknij")):  # a real click passes through the grid
        click()
        desk.recorder.wait_for("button-up left")
        assert {record.position for record in desk.recorder.since_mark("button-down")} == {(880, 450)}
        desk.recorder.mark()
