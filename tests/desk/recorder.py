"""The window in front that a person works in while the wheel lies over it: it keeps every event it gets."""

from ctypes import byref, c_char, c_long, c_ulong
from dataclasses import dataclass

import numpy

from desk.waiting import GENEROUS_S, wait_for
from desk.x11 import (BUTTON_PRESS, BUTTON_RELEASE, KEY_PRESS, KEY_RELEASE, MAPPING_NOTIFY, MOTION,
                      XA_WM_SIZE_HINTS, Display, InputEvent, xlib)

KEYS_BUTTONS_MOTION_AND_FOCUS = 0x0F | 0x40 | 0x200000  # the core protocol's masks
CELL = 16
FOCUS = {9: "focus-in", 10: "focus-out"}
BUTTONS = {1: "left", 2: "middle", 3: "right", 8: "side1", 9: "side2"}


def pattern(width, height):
    """The recorders' background, height x width x 3: cells of one plain colour, each unlike its neighbours, so that
    a picture laid over it can be told apart from it at every point."""
    row, column = (index // CELL for index in numpy.indices((height, width)))
    return numpy.stack((40 + column * 37 % 160, 40 + row * 53 % 160, 40 + (column + row) * 29 % 160), 2).astype("uint8")


@dataclass(frozen=True)
class Record:
    kind: str  # key-down, key-repeat, key-up, button-down, button-up, motion, focus-in, focus-out
    name: str  # of keysym or button
    code: int  # keycode or button
    state: int  # modifiers and buttons before it
    time: int  # the server's milliseconds
    place: tuple

    def __str__(self):
        return f"{self.kind} {self.name}"


class Recorder:
    """Events wait in the connection until somebody asks; their times are the server's."""

    def __init__(self, screen):
        self.display = Display(screen.environment["DISPLAY"])
        self.records, self.marked = [], 0
        self.down = set()  # keycodes, and names of buttons, as the window must believe
        handle = self.display.handle
        xlib.XkbSetDetectableAutoRepeat(handle, 1, None)
        width, height = screen.size
        self.window = c_ulong(xlib.XCreateSimpleWindow(handle, self.display.root, 0, 0, width, height, 0,
                                                       c_ulong(0), c_ulong(0)))
        self.display.set_background(self.window.value, pattern(width, height))
        for name, kind, values in (
                ("_NET_WM_NAME", "UTF8_STRING", (c_char * 8)(*b"recorder")),
                ("_MOTIF_WM_HINTS", "_MOTIF_WM_HINTS", (c_long * 5)(2)),  # without a frame
                ("WM_NORMAL_HINTS", XA_WM_SIZE_HINTS, (c_long * 18)(3, 0, 0, width, height))):
            self.display.set_property(self.window.value, name, kind, values)
        xlib.XSelectInput(handle, self.window, c_long(KEYS_BUTTONS_MOTION_AND_FOCUS))
        xlib.XMapRaised(handle, self.window)
        self.display.sync()

    def close(self):
        self.display.close()

    def all(self):
        event = InputEvent()
        while xlib.XPending(self.display.handle):
            xlib.XNextEvent(self.display.handle, byref(event))
            self._take(event)
        return self.records

    def _take(self, event):
        if event.type == MAPPING_NOTIFY:
            xlib.XRefreshKeyboardMapping(byref(event))
        if event.type in FOCUS and event.root & 3 in (0, 3):  # there is its mode: neither by a key grab nor its end
            self.records.append(Record(FOCUS[event.type], "-", 0, 0, 0, ()))
        if event.type not in (KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, MOTION):
            return
        kind, name, code = "motion", "-", 0
        if event.type in (BUTTON_PRESS, BUTTON_RELEASE):
            kind = "button-down" if event.type == BUTTON_PRESS else "button-up"
            code = event.detail
            name = BUTTONS.get(code, str(code))
            (self.down.add if event.type == BUTTON_PRESS else self.down.discard)(name)
        elif event.type != MOTION:
            code = event.detail
            name = (xlib.XKeysymToString(c_ulong(xlib.XLookupKeysym(byref(event), 0))) or b"-").decode()
            kind = "key-up" if event.type == KEY_RELEASE else "key-repeat" if code in self.down else "key-down"
            (self.down.discard if event.type == KEY_RELEASE else self.down.add)(code)
        self.records.append(Record(kind, name, code, event.state, event.time, (event.x_root, event.y_root)))

    def mark(self):
        """What was received up to now counts no more."""
        self.display.sync()
        self.marked = len(self.all())

    def since_mark(self, *kinds):
        """All records since the mark, or those of the kinds told."""
        return [record for record in self.all()[self.marked:] if not kinds or record.kind in kinds]

    def presses(self):
        """Presses and releases as texts, without motion, repeats and releases of what was never pressed here."""
        seen, down = [], set()
        for record in self.since_mark():
            thing = (record.kind.partition("-")[0], record.name)
            if record.kind.endswith("-down"):
                down.add(thing)
            elif record.kind.endswith("-up") and thing not in down:
                continue
            if record.kind.startswith(("key-", "button-")) and record.kind != "key-repeat":
                seen.append(str(record))
        return seen

    def wait_for(self, text, count=1, seconds=GENEROUS_S):
        """Until a press or release, for example "key-up w", has come so often since the mark."""
        wait_for(f"{count} x {text} among {self.presses()}", lambda: self.presses().count(text) >= count, seconds)

    def wait_for_kind(self, kind):
        wait_for(f"{kind} in the recorder", lambda: self.since_mark(kind))
