"""The screen's real mouse and keyboard, whose input the server distinguishes from injected input."""

import os
import subprocess
from ctypes import c_int, c_ulong, c_void_p

from desk.waiting import TIMEOUT_S
from desk.x11 import xinput, xtest

LEFT, RIGHT = 1, 3
NOW = c_ulong(0)


class InputDevice:
    def __init__(self, display):
        self.display = display
        self.device = c_void_p(xinput.XOpenDevice(display.handle, c_ulong(display.devices()[self.name][0])))

    def _send(self, function, *arguments):
        function(self.display.handle, self.device, *arguments, NOW)
        self.display.sync()

    def release(self, thing=LEFT):
        self.press(thing, False)

    def tap(self, thing=LEFT):
        self.press(thing)
        self.release(thing)


class Mouse(InputDevice):
    name = "Xvfb mouse"
    click = InputDevice.tap

    def move(self, dx, dy):
        self._send(xtest.XTestFakeDeviceMotionEvent, 1, 0, (c_int * 2)(dx, dy), 2)

    def press(self, button=LEFT, down=True):
        self._send(xtest.XTestFakeDeviceButtonEvent, button, int(down), None, 0)


class Keyboard(InputDevice):
    name = "Xvfb keyboard"

    def press(self, key, down=True):
        """`key` is a keysym's name in the current layout, or a keycode."""
        code = key if isinstance(key, int) else self.display.keycode(key)
        self._send(xtest.XTestFakeDeviceKeyEvent, code, int(down), None, 0)

    def type(self, text):
        """By injected input, which makes no difference for text."""
        subprocess.run(["xdotool", "type", text], env=os.environ | {"DISPLAY": self.display.name}, check=True,
                       timeout=TIMEOUT_S)


def place_cursor(display, x, y):
    """Warps the cursor as another device would; the real mouse's next motion starts from there."""
    xtest.XTestFakeMotionEvent(display.handle, 0, x, y, NOW)
    display.sync()
