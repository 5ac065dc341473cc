"""espeak-ng's Polish speech, with the time at which each phoneme begins."""

import ctypes

import numpy as np

# Voices for training. The tests use others.
VOICES = """
    m1 m2 m3 m4 m6 m7 f1 f2 f3 f5 Andy Annie Denis Diogo Gene Henrique Hugo Jacky Lee Mario Michael Mike Nguyen
    adam anika antonio belinda benjamin boris david edward gustave iven iven2 john kaukovalta linda marcelo max
    michel miguel norbert pablo paul quincy robert sandro shelby steph travis victor zac klatt klatt2 klatt4
""".split()

SILENCE = "SIL"
ALLOPHONES = {"a#": "a", "E#": "E", ";": "j"}  # unstressed and gliding variants of a phoneme

# From espeak-ng's speak_lib.h
SYNCHRONOUS_OUTPUT = 2
REPORT_PHONEMES = 1
PHONEME_EVENT = 7
UTF8_TEXT = 1
RATE, PITCH, RANGE = 1, 3, 4


class Event(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("id", ctypes.c_uint),
        ("text_position", ctypes.c_int),
        ("length", ctypes.c_int),
        ("audio_position", ctypes.c_int),
        ("sample", ctypes.c_int),
        ("user_data", ctypes.c_void_p),
        ("name", ctypes.c_char * 8),
    ]


CALLBACK = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(ctypes.c_short), ctypes.c_int, ctypes.POINTER(Event))


def phoneme(name):
    name = name.strip("'`,%:|")
    return SILENCE if not name or name.startswith("_") else ALLOPHONES.get(name, name)


class Speaker:
    def __init__(self):
        self.library = ctypes.CDLL("libespeak-ng.so.1")
        self.rate = self.library.espeak_Initialize(SYNCHRONOUS_OUTPUT, 0, None, REPORT_PHONEMES)
        self.pieces, self.events = [], []
        self.callback = CALLBACK(self._receive)
        self.library.espeak_SetSynthCallback(self.callback)

    def _receive(self, sound, count, events):
        if sound and count > 0:
            self.pieces.append(np.ctypeslib.as_array(sound, (count,)).copy())
        i = 0
        while events[i].type:
            if events[i].type == PHONEME_EVENT:
                self.events.append((phoneme(events[i].name.decode()), events[i].sample))
            i += 1
        return 0

    def speak(self, text, voice="pl", rate=175, pitch=50, pitch_range=50):
        """The sound at self.rate, and pairs of a phoneme and the number of its first sample."""
        if self.library.espeak_SetVoiceByName(voice.encode()):
            raise SystemExit(f"espeak-ng has no voice {voice}")
        for parameter, value in ((RATE, rate), (PITCH, pitch), (RANGE, pitch_range)):
            self.library.espeak_SetParameter(parameter, value, 0)
        self.pieces.clear()
        self.events.clear()
        data = text.encode() + b"\0"
        self.library.espeak_Synth(data, len(data), 0, 0, 0, UTF8_TEXT, None, None)
        return np.concatenate(self.pieces).astype(float), list(self.events)

    def pronounce(self, word):
        return tuple(sound for sound, _ in self.speak(word)[1] if sound != SILENCE)
