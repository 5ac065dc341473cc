"""The foreground window below the wheel: it records every input event that it receives."""

from collections import namedtuple
from ctypes import addressof, byref, c_long, c_ubyte, c_ulong

from desk.waiting import TIMEOUT_S, holds_within, wait_for
from desk.x11 import MAPPING_NOTIFY, Display, InputEvent, xinput, xlib

KEYS_BUTTONS_MOTION_AND_FOCUS = c_long(0x0F | 0x40 | 0x200000)  # the core protocol's masks
KINDS = {2: "key-down", 3: "key-up", 4: "button-down", 5: "button-up", 6: "motion", 9: "focus-in", 10: "focus-out"}
BUTTONS = {1: "left", 2: "middle", 3: "right", 8: "side1", 9: "side2"}
ALL_MASTER_DEVICES, RAW_KEY_PRESS, GENERIC_EVENT = 1, 13, 35
CHEQUERED = b"\xff\0" * 8 + b"\0\xff" * 8  # bitmap of 16 x 16 pixels


class Record(namedtuple("Record", "kind name code state time position")):
    """`kind` is one of KINDS or key-repeat, `name` that of keysym or button, `code` keycode or button, `state` the
    modifiers and buttons before it, `time` the server's milliseconds, `position` the cursor on the screen."""

    def __str__(self):
        return f"{self.kind} {self.name}"


class Recording:
    """A recorder's events. `all()` returns them; `settle()` waits until everything that has happened is among them."""

    marked = 0

    def mark(self):
        """Later queries leave out what was received until now."""
        self.settle()
        self.marked = len(self.all())

    def since_mark(self, *kinds):
        return [record for record in self.all()[self.marked:] if not kinds or record.kind in kinds]

    def presses(self):
        """Presses and releases as texts, without repeats and without releases of what was never pressed here. Sorted
        by time: a window manager passes a button's event on later than a key's."""
        seen, down, kinds = [], set(), ("key-down", "key-up", "button-down", "button-up")
        for record in sorted(self.since_mark(*kinds), key=lambda record: record.time):
            device, _, direction = record.kind.partition("-")
            if direction == "down":
                down.add((device, record.name))
            if (device, record.name) in down:
                seen.append(str(record))
        return seen

    def wait_for(self, text, count=1, seconds=TIMEOUT_S):
        """Waits until a press or release, for example "key-up w", has come `count` times since the mark."""
        wait_for(f"{count} x {text} among {self.presses()}", lambda: self.presses().count(text) >= count, seconds)

    def wait_for_kind(self, kind):
        wait_for(f"{kind} in the recorder", lambda: self.since_mark(kind))

    def wait_for_motion(self):
        self.wait_for_kind("motion")

    def expect(self, *texts):
        """Exactly these presses and releases come after the mark. A name alone stands for its press and release."""
        wanted = []
        for text in texts:
            device = "button" if text in BUTTONS.values() else "key"
            wanted += [text] if " " in text else [f"{device}-{direction} {text}" for direction in ("down", "up")]
        holds_within(TIMEOUT_S, lambda: len(self.presses()) >= len(wanted))
        self.settle()
        assert self.presses() == wanted, f"{self.presses()}, not {wanted}"


class Recorder(Recording):
    """Events stay queued in the X connection until `all()` reads them."""

    def __init__(self, screen):
        self.display = Display(screen.environment["DISPLAY"])
        self.settle = self.display.sync
        self.close = self.display.close
        self.records = []
        self.down = set()  # keycodes and button names that are down according to the window's events
        handle, colours = self.display.handle, (c_ulong(0x406080), c_ulong(0x805030))
        xlib.XkbSetDetectableAutoRepeat(handle, 1, None)
        self.window = c_ulong(xlib.XCreateSimpleWindow(handle, self.display.root, 0, 0, *screen.size, 0, 0, 0))
        xlib.XSetWindowBackgroundPixmap(handle, self.window, c_ulong(xlib.XCreatePixmapFromBitmapData(
            handle, self.window, CHEQUERED, 16, 16, *colours, 24)))
        xlib.XStoreName(handle, self.window, b"recorder")
        hints = self.display.atom("_MOTIF_WM_HINTS")
        xlib.XChangeProperty(handle, self.window, hints, hints, 32, 0, (c_long * 5)(2), 5)  # without a frame
        xlib.XSelectInput(handle, self.window, KEYS_BUTTONS_MOTION_AND_FOCUS)
        xlib.XMapRaised(handle, self.window)
        self.settle()

    def all(self):
        event = InputEvent()
        while xlib.XPending(self.display.handle):
            xlib.XNextEvent(self.display.handle, byref(event))
            if event.type == MAPPING_NOTIFY:
                xlib.XRefreshKeyboardMapping(byref(event))
            elif event.type in KINDS:
                self._append(event, KINDS[event.type])
        return self.records

    def _append(self, event, kind):
        name, code = "-", 0
        if kind.startswith("focus"):
            if event.root & 3 in (1, 2):  # the mode NotifyGrab or NotifyUngrab
                return
        elif kind != "motion":
            code = key = event.detail
            if kind.startswith("button"):
                name = key = BUTTONS.get(code, str(code))
            else:
                name = (xlib.XKeysymToString(c_ulong(xlib.XLookupKeysym(byref(event), 0))) or b"-").decode()
                kind = "key-repeat" if kind == "key-down" and key in self.down else kind
            (self.down.discard if kind.endswith("up") else self.down.add)(key)
        self.records.append(Record(kind, name, code, event.state, event.time, (event.x_root, event.y_root)))


class RawKeyPresses:
    """Counts the presses of keys, real and injected, whatever window has the keyboard."""

    def __init__(self, screen):
        self.display, self.seen = Display(screen.environment["DISPLAY"]), 0
        mask = (c_ubyte * 2)(0, 1 << RAW_KEY_PRESS - 8)
        words = (c_ulong * 2)(ALL_MASTER_DEVICES | len(mask) << 32, addressof(mask))
        xinput.XISelectEvents(self.display.handle, self.display.root, words, 1)
        self.display.sync()
        self.mask = mask

    def count(self):
        self.display.sync()
        event = InputEvent()
        while xlib.XPending(self.display.handle):
            xlib.XNextEvent(self.display.handle, byref(event))
            self.seen += event.type == GENERIC_EVENT
        return self.seen
