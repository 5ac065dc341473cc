"""The parts of Xlib that the desk needs, by ctypes."""

import ctypes
import subprocess
from collections import namedtuple
from ctypes import POINTER, byref, c_char_p, c_int, c_long, c_ubyte, c_uint, c_ulong, c_void_p

from desk.waiting import holds_within

xlib, xinput, xtest = (ctypes.CDLL(name) for name in ("libX11.so.6", "libXi.so.6", "libXtst.so.6"))

XA_INTEGER, IS_VIEWABLE, FLOATING_SLAVE, Z_PIXMAP, CLIENT_MESSAGE, MAPPING_NOTIFY = 19, 2, 5, 2, 33, 34
SUBSTRUCTURE_NOTIFY_AND_REDIRECT, ALL_PLANES = c_long(0x180000), c_ulong(0xFFFFFFFF)
KINDS = {"i": c_int, "u": c_uint, "L": c_ulong, "p": c_void_p, "s": c_char_p, "words": c_long * 5, "pad": c_long * 24,
         "octets": c_ubyte * 32, "skipped": c_int * 19}


def structure(fields):
    named = [field.split(":") for field in fields.split()]
    return type("Structure", (ctypes.Structure,), {"_fields_": [(name, KINDS[kind]) for name, kind in named]})


# Key, button and motion events; `detail` is keycode or button.
InputEvent = structure("type:i serial:L send_event:i display:p window:L root:L subwindow:L time:L x:i y:i x_root:i "
                       "y_root:i state:i detail:i same_screen:i pad:pad")
ClientMessage = structure("type:i serial:L send_event:i display:p window:L message:L format:i words:words pad:pad")
WindowAttributes = structure("x:i y:i width:i height:i skipped:skipped map_state:i pad:pad")
ImageHead = structure("width:i height:i xoffset:i format:i data:p byte_order:i unit:i bit_order:i pad:i depth:i "
                      "bytes_per_line:i")
DeviceInfo = structure("id:i name:s use:i attachment:i enabled:i num_classes:i classes:p")
KeyboardState = structure("click:i bell:i pitch:i duration:i leds:L global_auto_repeat:i auto_repeats:octets")
Shown = namedtuple("Shown", "id left top width height")

for library, result, names in (
        (xlib, c_void_p, "XOpenDisplay"), (xlib, c_char_p, "XKeysymToString"), (xlib, c_ubyte, "XKeysymToKeycode"),
        (xlib, c_ulong, "XDefaultRootWindow XInternAtom XStringToKeysym XLookupKeysym XCreateSimpleWindow "
                        "XCreatePixmapFromBitmapData XGetSelectionOwner"),
        (xlib, POINTER(ImageHead), "XGetImage"), (xinput, POINTER(DeviceInfo), "XIQueryDevice"),
        (xinput, c_void_p, "XOpenDevice")):
    for name in names.split():
        getattr(library, name).restype = result

# X errors are only counted: a window may be destroyed between being listed and being queried.
errors = []
note_error = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)(lambda display, error: errors.append(error) or 0)
xlib.XSetErrorHandler(note_error)


def call(function, *arguments, outputs):
    """The values that the function writes through trailing pointer arguments, one of KINDS for each."""
    values = [KINDS[kind]() for kind in outputs]
    function(*arguments, *map(byref, values))
    return [value.value for value in values]


def bits_set(octets):
    return {8 * at + bit for at, octet in enumerate(octets) for bit in range(8) if octet >> bit & 1}


XKB_CORE_KEYBOARD, XKB_MOUSE_KEYS = 0x100, 1 << 4


class Display:
    """A connection to the private screen, for queries."""

    def __init__(self, name):
        self.name, self.handle = name, c_void_p(xlib.XOpenDisplay(name.encode()))
        if not self.handle:
            raise OSError(f"no X server at {name}")
        self.root = c_ulong(xlib.XDefaultRootWindow(self.handle))

    def close(self):
        if self.handle:
            xlib.XCloseDisplay(self.handle)
        self.handle = None

    def sync(self):
        xlib.XSync(self.handle, 0)

    def atom(self, name):
        return c_ulong(xlib.XInternAtom(self.handle, name.encode(), 0))

    def property(self, window, name):
        """The value of a property: bytes, or the list of its 32-bit numbers."""
        _, form, count, _, data = call(xlib.XGetWindowProperty, self.handle, c_ulong(window), self.atom(name),
                                       c_long(0), c_long(1024), 0, c_ulong(0), outputs="LiLLp")
        words = (c_ulong * count).from_address(data)[:] if form == 32 else None
        value = words or (ctypes.string_at(data, count) if data else b"")
        xlib.XFree(c_void_p(data))
        return value

    def title(self, window):
        return bytes(self.property(window, "_NET_WM_NAME") or self.property(window, "WM_NAME")).decode()

    def titles(self):
        return list(map(self.title, self.property(self.root.value, "_NET_CLIENT_LIST")))

    def titled(self, title):
        """The window manager's windows of that title, the oldest first."""
        return [window for window in self.property(self.root.value, "_NET_CLIENT_LIST") if self.title(window) == title]

    def position_of(self, title):
        """Left and top of the client area of the first window of that title."""
        window = c_ulong(self.titled(title)[0])
        return call(xlib.XTranslateCoordinates, self.handle, window, self.root, 0, 0, outputs="iiL")[:2]

    def active_window(self):
        return (self.property(self.root.value, "_NET_ACTIVE_WINDOW") or [0])[0]

    def active_title(self):
        return self.title(self.active_window())

    def focused_title(self):
        (window, _), title = call(xlib.XGetInputFocus, self.handle, outputs="Li"), ""
        while window > 1 and not (title := self.title(window)):
            window = self.tree(window)[0]
        return title

    def _send_to_window_manager(self, message, window, *words):
        event = ClientMessage(CLIENT_MESSAGE, window=window, format=32, words=words, message=self.atom(message).value)
        xlib.XSendEvent(self.handle, self.root, 0, SUBSTRUCTURE_NOTIFY_AND_REDIRECT, byref(event))
        self.sync()

    def window_manager_answers(self):
        """Whether the window manager handles messages."""
        window = xlib.XCreateSimpleWindow(self.handle, self.root, 0, 0, 1, 1, 0, 0, 0)  # never shown
        self._send_to_window_manager("_NET_REQUEST_FRAME_EXTENTS", window)
        answers = holds_within(0.5, lambda: self.property(window, "_NET_FRAME_EXTENTS"))
        xlib.XDestroyWindow(self.handle, c_ulong(window))
        return answers

    def activate(self, window):
        self._send_to_window_manager("_NET_ACTIVE_WINDOW", window, 2)

    def close_window(self, window):
        self._send_to_window_manager("_NET_CLOSE_WINDOW", window, 0, 2)

    def tree(self, window):
        """Parent of a window, and its children, the lowest first."""
        _, parent, children, count = call(xlib.XQueryTree, self.handle, c_ulong(window), outputs="LLpu")
        found = (c_ulong * count).from_address(children)[:] if children else []
        xlib.XFree(c_void_p(children))
        return parent, found

    def shown_windows(self):
        """Visible children of the root window, the topmost first."""
        for window in reversed(self.tree(self.root.value)[1]):
            seen = WindowAttributes()
            if xlib.XGetWindowAttributes(self.handle, c_ulong(window), byref(seen)) and seen.map_state == IS_VIEWABLE:
                yield Shown(window, seen.x, seen.y, seen.width, seen.height)

    def shown_layer(self, width, height, place=None):
        """The visible frameless window of that size, and at that place if given, or None."""
        return next((shown for shown in self.shown_windows() if (shown.width, shown.height) == (width, height) and
                     place in (None, (shown.left, shown.top))), None)

    def pointer(self):
        """Position of the cursor, and the buttons that are down."""
        _, _, x, y, _, _, mask = call(xlib.XQueryPointer, self.handle, self.root, outputs="LLiiiiu")
        return (x, y), {button for button in range(1, 6) if mask >> 7 + button & 1}

    def cursor(self):
        return self.pointer()[0]

    def buttons_down(self):
        return self.pointer()[1]

    def keys_down(self):
        bits = (c_ubyte * 32)()
        xlib.XQueryKeymap(self.handle, bits)
        return bits_set(bits)

    def repeating_keys(self):
        state = KeyboardState()
        xlib.XGetKeyboardControl(self.handle, byref(state))
        return bits_set(state.auto_repeats)

    def devices(self):
        """Id and use of every input device, by name."""
        count = c_int()
        infos = xinput.XIQueryDevice(self.handle, 0, byref(count))
        found = {info.name.decode(): (info.id, info.use) for info in infos[:count.value]}
        xinput.XIFreeDeviceInfo(infos)
        return found

    def floating(self):
        return {name for name, (_, use) in self.devices().items() if use == FLOATING_SLAVE}

    def enable(self, name, is_on):
        """As when a device is plugged in or unplugged."""
        xinput.XIChangeProperty(self.handle, self.devices()[name][0], self.atom("Device Enabled"),
                                c_ulong(XA_INTEGER), 8, 0, byref(c_ubyte(is_on)), 1)
        self.sync()

    def keycode(self, keysym):
        """Keycode of the key with the keysym of that name in the current layout."""
        self.sync()
        event = InputEvent()
        while xlib.XCheckTypedEvent(self.handle, MAPPING_NOTIFY, byref(event)):
            xlib.XRefreshKeyboardMapping(byref(event))
        return xlib.XKeysymToKeycode(self.handle, c_ulong(xlib.XStringToKeysym(keysym.encode())))

    def enable_mouse_keys(self):
        """The keypad then moves the cursor and clicks."""
        xlib.XkbChangeEnabledControls(self.handle, XKB_CORE_KEYBOARD, XKB_MOUSE_KEYS, XKB_MOUSE_KEYS)
        self.sync()

    def key_is_taken(self, keysym, modifiers):
        """Whether a program has grabbed this key with these modifier bits."""
        key = self.handle, self.keycode(keysym), modifiers, self.root
        before = len(errors)
        xlib.XGrabServer(self.handle)  # or this test grab might make the program's own grab fail
        xlib.XGrabKey(*key, 0, 1, 1)
        xlib.XUngrabKey(*key)
        xlib.XUngrabServer(self.handle)
        self.sync()
        return len(errors) > before

    def picture(self, window=None):
        """The screen, or a window's own content, as height x width x 3 numbers: red, green, blue."""
        import numpy  # here, since desk.screen alone must work without it
        drawn, seen = c_ulong(window or self.root.value), WindowAttributes()
        xlib.XGetWindowAttributes(self.handle, drawn, byref(seen))
        octets = numpy.frombuffer(self._octets(drawn, 0, 0, seen.width, seen.height), numpy.uint8)
        return octets.reshape(seen.height, -1, 4)[:, :seen.width, 2::-1]

    def pixel(self, x, y):
        return tuple(self._octets(self.root, x, y, 1, 1)[2::-1])

    def _octets(self, drawn, x, y, width, height):
        image = xlib.XGetImage(self.handle, drawn, x, y, width, height, ALL_PLANES, Z_PIXMAP)
        if not image:
            raise OSError("the window has no picture")
        octets = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * height)
        xlib.XFree(c_void_p(image.contents.data))
        xlib.XFree(image)
        return octets


def save_png(picture, file):
    """Saves a picture of three numbers per pixel, or of four with alpha."""
    height, width, channels = picture.shape
    subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8", f"{'rgba'[:channels]}:-", f"png:{file}"],
                   input=picture.tobytes(), check=True)
