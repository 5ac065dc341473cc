"""The person's hands: the screen's real mouse and keyboard, told apart by the server from injected input."""

import os
import subprocess
from ctypes import c_int, c_ulong, c_void_p

from desk.x11 import xinput, xtest

LEFT, RIGHT = 1, 3
NOW = c_ulong(0)


class Device:
    def __init__(self, display):
        self.display = display
        self.device = c_void_p(xinput.XOpenDevice(display.handle, c_ulong(display.devices()[self.name][0])))

    def _play(self, event, *words):
        event(self.display.handle, self.device, *words, NOW)
        self.display.sync()

    def release(self, thing=LEFT):
        self.press(thing, False)

    def tap(self, thing=LEFT):
        self.press(thing)
        self.release(thing)


class Mouse(Device):
    name = "Xvfb mouse"
    click = Device.tap

    def move(self, dx, dy):
        self._play(xtest.XTestFakeDeviceMotionEvent, 1, 0, (c_int * 2)(dx, dy), 2)

    def press(self, button=LEFT, down=True):
        self._play(xtest.XTestFakeDeviceButtonEvent, button, int(down), None, 0)


class Keyboard(Device):
    name = "Xvfb keyboard"

    def press(self, key, down=True):
        """`key` is a keysym's name in the layout of now, or a keycode."""
        code = key if isinstance(key, int) else self.display.keycode(key)
        self._play(xtest.XTestFakeDeviceKeyEvent, code, int(down), None, 0)

    def type(self, text):
        """Injected, which makes no difference to a text."""
        subprocess.run(["xdotool", "type", text], env=os.environ | {"DISPLAY": self.display.name}, check=True)


def place_cursor(display, x, y):
    """As another device would: the next motion of the real mouse starts from there."""
    xtest.XTestFakeMotionEvent(display.handle, 0, x, y, NOW)
    display.sync()
