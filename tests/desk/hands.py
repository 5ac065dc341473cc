"""The person's hands: the screen's real mouse and keyboard, told apart by the server from injected input."""

from ctypes import c_int, c_ulong, c_void_p

from desk.x11 import xinput, xlib, xtest

LEFT, MIDDLE, RIGHT = 1, 2, 3
DEVICE = "Xvfb mouse"
NOW = c_ulong(0)


class Device:
    name = None

    def __init__(self, display):
        self.display = display
        self.device = c_void_p(xinput.XOpenDevice(display.handle, c_ulong(display.device_id(self.name))))

    def release(self, thing=LEFT):
        self.press(thing, False)

    def tap(self, thing=LEFT):
        self.press(thing)
        self.release(thing)


class Mouse(Device):
    name = DEVICE

    def move(self, dx, dy):
        xtest.XTestFakeDeviceMotionEvent(self.display.handle, self.device, 1, 0, (c_int * 2)(dx, dy), 2, NOW)
        self.display.sync()

    def press(self, button=LEFT, down=True):
        xtest.XTestFakeDeviceButtonEvent(self.display.handle, self.device, button, int(down), None, 0, NOW)
        self.display.sync()

    click = Device.tap


class Keyboard(Device):
    name = "Xvfb keyboard"

    def press(self, key, down=True):
        """`key` is a keysym's name in the layout of now, or a keycode."""
        code = key if isinstance(key, int) else self.display.keycode(key)
        xtest.XTestFakeDeviceKeyEvent(self.display.handle, self.device, code, int(down), None, 0, NOW)
        self.display.sync()

    def type(self, text):
        """ASCII, in a layout that has its letters on the first two levels."""
        for letter in text:
            code = self.display.keycode(ord(letter))
            is_shifted = xlib.XkbKeycodeToKeysym(self.display.handle, code, 0, 0) != ord(letter)
            if is_shifted:
                self.press("Shift_L")
            self.tap(code)
            if is_shifted:
                self.release("Shift_L")

    def repeat_soon(self, delay_ms=150, interval_ms=30):
        xlib.XkbSetAutoRepeatRate(self.display.handle, 0x100, delay_ms, interval_ms)
        self.display.sync()


def place_cursor(display, x, y):
    """As another device would: the next motion of the real mouse starts from there."""
    xtest.XTestFakeMotionEvent(display.handle, 0, x, y, NOW)
    display.sync()
