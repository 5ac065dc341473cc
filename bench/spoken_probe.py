"""The whole program on a private screen, controlled by speech: accuracy and latency, with the real recogniser and
espeak-ng's voices."""

import string
import time

from probe import desk, ms_since, report, run, wait_for

from desk.desk import field
from desk.device import Device
from desk.sound import SoundServer
from desk.waiting import holds_within

VOICES = ("pl", "pl+m5", "pl+m8", "pl+f4", "pl+Alex")  # none of them was used for training the model
# Phrases of functions by the letter that each function presses.
PHRASES = dict(zip(string.ascii_lowercase, (
    "leczenie", "mapa", "tarcza", "zapisz", "przełącz okno", "mapa jeden", "mapa dwa", "mapa trzy", "tarcza pięć",
    "tarcza sześć", "tarcza dziewięć", "tarcza dziesięć", "okno czternaście", "okno dziewiętnaście",
    "zapisz dwadzieścia jeden", "zapisz trzydzieści dwa", "zapisz pięćdziesiąt sześć", "leczenie sześćdziesiąt pięć",
    "leczenie dziewięćdziesiąt osiem", "następne okno")))
OUT_OF_GRAMMAR = (
    "dzień dobry", "dziękuję bardzo", "gdzie jest dworzec", "kolorowy zeszyt", "poproszę kawę", "która godzina",
    "samochód", "zielone drzewo", "wieczorem pada", "stary rower", "kolega śpi", "jutro pojadę", "pokój", "kilka",
    "trzeba", "siatkówka", "element", "klinika", "okolica", "praca domowa")
SHOWN_TIMES = 20
ACT_LIMIT_S = 0.5  # the program normally acts within 0.1 s of the recogniser's answer
# The recogniser alone, fed with the same sound from a file, takes from 720 ms to this, depending on where the end of
# the speech falls within its blocks of frames.
ANSWER_TARGET_MS = 910
WHEEL_TARGET_MS = 20


class Probe:
    def __init__(self, desk):
        target = desk.target
        library = desk.speech / "runtime" / target.runtime_folder / target.library_file("libvosk")
        self.desk, self.sound = desk, SoundServer(desk.screen)
        self.recogniser = Device(desk, "adapter", "adapter", f"library {library}", voiceModel=str(desk.speech / "model"))
        desk.prepare()
        desk.write("voice.json", {"actions": [field(key, voice=phrase) for key, phrase in PHRASES.items()]})
        desk.start(field("z"), **self.recogniser.settings)
        self.recogniser.wait_for_call("listening")

    def speak(self, text, voice):
        self.sound.say(text, voice)
        self.recogniser.wait_for_call("result", self.recogniser.count("result") + 1)

    def note(self, text, voice):
        print(f"  {text}, {voice}: {self.recogniser.log()[-1]}")

    def count_phrases(self):
        failures = 0
        for voice in VOICES:
            for key, phrase in PHRASES.items():
                self.speak(phrase, voice)
                wanted = [f"key-down {key}", f"key-up {key}"]
                if not holds_within(ACT_LIMIT_S, lambda: self.desk.recorder.presses() == wanted):
                    self.note(phrase, voice)
                    failures += 1
                self.desk.recorder.mark()
        report("phrases of 100 that were not acted on correctly", [failures], 3, "  ")

    def count_out_of_grammar(self):
        acted = 0
        for voice in (VOICES[0], VOICES[3]):
            for text in OUT_OF_GRAMMAR:
                self.speak(text, voice)
                if holds_within(ACT_LIMIT_S, lambda: self.desk.recorder.presses() or self.desk.wheel()):
                    self.note(text, voice)
                    acted += 1
                self.desk.recorder.mark()
        report("out-of-grammar utterances of 40 that were acted on", [acted], 0, "  ")

    def measure_wheel(self):
        answers, wheels, totals = [], [], []
        for _ in range(SHOWN_TIMES):
            ended = self.sound.say("pokaż koło")
            before = self.recogniser.count("result")  # after the speech, since a long silence also yields an answer
            wait_for("the recogniser", lambda: self.recogniser.count("result") > before)
            answered = time.monotonic()
            wait_for("the wheel", self.desk.wheel)
            wheels.append(ms_since(answered))
            totals.append(ms_since(ended))
            answers.append(totals[-1] - wheels[-1])
            self.desk.wait_until_open()
            self.desk.close_wheel()
        report("end of \"pokaż koło\" to the recogniser's answer", answers, ANSWER_TARGET_MS)
        report("the recogniser's answer to the wheel", wheels, WHEEL_TARGET_MS)
        report("end of \"pokaż koło\" to the wheel", totals, ANSWER_TARGET_MS + WHEEL_TARGET_MS)


def measure():
    with desk() as made:
        probe = Probe(made)
        probe.measure_wheel()
        probe.count_phrases()
        probe.count_out_of_grammar()


run(measure)
