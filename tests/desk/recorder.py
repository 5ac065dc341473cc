"""The window in front that a person works in while the wheel lies over it: it keeps every event it gets."""

import ctypes
from ctypes import byref, c_char, c_int, c_long, c_ulong
from dataclasses import dataclass

from desk.waiting import GENEROUS_S, wait_for
from desk.x11 import (BUTTON_PRESS, BUTTON_RELEASE, KEY_PRESS, KEY_RELEASE, MAPPING_NOTIFY, MOTION,
                      XA_WM_NORMAL_HINTS, XA_WM_SIZE_HINTS, Display, Event, xlib)

KEY_BUTTON_AND_MOTION = 0x0F | 0x40  # the core protocol's masks: presses, releases, pointer motion
BUTTONS = {1: "left", 2: "middle", 3: "right", 8: "side1", 9: "side2"}


@dataclass(frozen=True)
class Record:
    kind: str  # key-down, key-repeat, key-up, button-down, button-up, motion
    name: str  # of keysym or button
    code: int  # keycode or button
    state: int  # modifiers and buttons before it
    time: int  # the server's milliseconds
    place: tuple

    def __str__(self):
        return f"{self.kind} {self.name}"


class Recording:
    """What such a window has received, whoever notes it."""

    marked = 0

    def all(self):
        """Every record up to now."""
        raise NotImplementedError

    def settle(self):
        """Until what is on its way has arrived."""

    def mark(self):
        """What was received up to now counts no more."""
        self.settle()
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
            if record.kind not in ("motion", "key-repeat"):
                seen.append(str(record))
        return seen

    def wait_for(self, text, count=1, seconds=GENEROUS_S):
        """Until a press or release, for example "key-up w", has come so often since the mark."""
        wait_for(f"{count} x {text} among {self.presses()}", lambda: self.presses().count(text) >= count, seconds)

    def wait_for_motion(self):
        wait_for("motion in the recorder", lambda: self.since_mark("motion"))


class Recorder(Recording):
    """Events wait in the connection until somebody asks; their times are the server's."""

    def __init__(self, screen):
        self.display = Display(screen.environment["DISPLAY"])
        self.records = []
        self.down = set()  # keycodes, and names of buttons, as the window must believe
        handle = self.display.handle
        xlib.XkbSetDetectableAutoRepeat(handle, 1, None)
        width, height = screen.size
        self.window = c_ulong(xlib.XCreateSimpleWindow(handle, self.display.root, 0, 0, width, height, 0,
                                                       c_ulong(0), c_ulong(0x203040)))
        utf8 = self.display.atom("UTF8_STRING")
        self._set("_NET_WM_NAME", utf8, 8, (c_char * 8)(*b"recorder"))
        hints = self.display.atom("_MOTIF_WM_HINTS")
        self._set("_MOTIF_WM_HINTS", hints, 32, (c_long * 5)(2))  # without a frame
        self._set("WM_NORMAL_HINTS", c_ulong(XA_WM_SIZE_HINTS), 32, (c_long * 18)(3, 0, 0, width, height))
        xlib.XSelectInput(handle, self.window, c_long(KEY_BUTTON_AND_MOTION))
        xlib.XMapRaised(handle, self.window)
        self.display.sync()

    def _set(self, name, kind, form, values):
        xlib.XChangeProperty(self.display.handle, self.window, self.display.atom(name), kind, form, 0,
                             ctypes.cast(values, ctypes.c_char_p), len(values))

    def close(self):
        self.display.close()

    def settle(self):
        self.display.sync()

    def all(self):
        event = Event()
        while xlib.XPending(self.display.handle):
            xlib.XNextEvent(self.display.handle, byref(event))
            self._take(event)
        return self.records

    def _take(self, event):
        if event.type == MAPPING_NOTIFY:
            xlib.XRefreshKeyboardMapping(byref(event))
        if event.type not in (KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, MOTION):
            return
        seen = event.input
        kind, name, code = "motion", "-", 0
        if event.type in (BUTTON_PRESS, BUTTON_RELEASE):
            kind = "button-down" if event.type == BUTTON_PRESS else "button-up"
            code = seen.detail
            name = BUTTONS.get(code, str(code))
            (self.down.add if event.type == BUTTON_PRESS else self.down.discard)(name)
        elif event.type != MOTION:
            code = seen.detail
            name = (xlib.XKeysymToString(c_ulong(xlib.XLookupKeysym(byref(event), 0))) or b"-").decode()
            kind = "key-up" if event.type == KEY_RELEASE else "key-repeat" if code in self.down else "key-down"
            (self.down.discard if event.type == KEY_RELEASE else self.down.add)(code)
        self.records.append(Record(kind, name, code, seen.state, seen.time, (seen.x_root, seen.y_root)))
