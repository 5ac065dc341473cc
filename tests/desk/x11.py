"""The little of Xlib that the desk needs, by ctypes."""

import ctypes
import zlib
from collections import namedtuple
from ctypes import POINTER, Structure, byref, c_char_p, c_int, c_long, c_ubyte, c_uint, c_ulong, c_void_p

xlib, xinput, xtest = (ctypes.CDLL(name) for name in ("libX11.so.6", "libXi.so.6", "libXtst.so.6"))

KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, MOTION, CLIENT_MESSAGE, MAPPING_NOTIFY = 2, 3, 4, 5, 6, 33, 34
XA_INTEGER, XA_WM_NORMAL_HINTS, XA_WM_SIZE_HINTS = 19, 40, 41
IS_VIEWABLE, FLOATING_SLAVE, Z_PIXMAP = 2, 5, 2
SUBSTRUCTURE_NOTIFY, SUBSTRUCTURE_REDIRECT = 0x80000, 0x100000
ALL_PLANES = 0xFFFFFFFF
KINDS = {"i": c_int, "l": c_long, "L": c_ulong, "p": c_void_p, "s": c_char_p, "words": c_long * 5, "pad": c_long * 24,
         "masks": c_long * 3, "octets": c_ubyte * 32}


def structure(fields):
    """A ctypes structure of fields such as "width:i"."""
    return type("Made", (Structure,), {"_fields_": [(name, KINDS[kind]) for name, kind in
                                                    (field.split(":") for field in fields.split())]})


# Of keys, buttons and motion; `detail` is keycode or button.
InputEvent = structure("type:i serial:L send_event:i display:p window:L root:L subwindow:L time:L x:i y:i x_root:i "
                       "y_root:i state:i detail:i same_screen:i pad:pad")
ClientMessage = structure("type:i serial:L send_event:i display:p window:L message:L format:i words:words pad:pad")
WindowAttributes = structure("x:i y:i width:i height:i border:i depth:i visual:p root:L class:i bit_gravity:i "
                             "win_gravity:i backing_store:i planes:L pixel:L save_under:i colormap:L installed:i "
                             "map_state:i masks:masks override_redirect:i screen:p")
ImageHead = structure("width:i height:i xoffset:i format:i data:p byte_order:i unit:i bit_order:i pad:i depth:i "
                      "bytes_per_line:i")
DeviceInfo = structure("deviceid:i name:s use:i attachment:i enabled:i num_classes:i classes:p")
KeyboardState = structure("click:i bell:i pitch:i duration:i leds:L global_auto_repeat:i auto_repeats:octets")
Shown = namedtuple("Shown", "id left top width height")

for library, name, result in (
        (xlib, "XOpenDisplay", c_void_p), (xlib, "XDefaultRootWindow", c_ulong), (xlib, "XDefaultVisual", c_void_p),
        (xlib, "XGetImage", POINTER(ImageHead)), (xlib, "XCreateImage", POINTER(ImageHead)),
        (xlib, "XInternAtom", c_ulong), (xlib, "XStringToKeysym", c_ulong), (xlib, "XKeysymToString", c_char_p),
        (xlib, "XLookupKeysym", c_ulong), (xlib, "XCreateSimpleWindow", c_ulong), (xlib, "XCreatePixmap", c_ulong),
        (xlib, "XDefaultGC", c_void_p), (xlib, "XKeysymToKeycode", c_ubyte), (xlib, "XGetSelectionOwner", c_ulong),
        (xinput, "XIQueryDevice", POINTER(DeviceInfo)), (xinput, "XOpenDevice", c_void_p)):
    getattr(library, name).restype = result
xtest.XTestFakeDeviceMotionEvent.argtypes = [c_void_p, c_void_p, c_int, c_int, POINTER(c_int), c_int, c_ulong]

# A window may go between being listed and being asked about: such errors are nobody's fault.
errors = []
note_error = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)(lambda display, error: errors.append(error) or 0)
xlib.XSetErrorHandler(note_error)


def bits_set(octets):
    return {8 * at + bit for at, octet in enumerate(octets) for bit in range(8) if octet >> bit & 1}


class Display:
    """A connection to the private screen, for looking and asking."""

    def __init__(self, name):
        self.handle = c_void_p(xlib.XOpenDisplay(name.encode()))
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
        kind, form, count, left, data = c_ulong(), c_int(), c_ulong(), c_ulong(), c_void_p()
        xlib.XGetWindowProperty(self.handle, c_ulong(window), self.atom(name), c_long(0), c_long(1024), 0,
                                c_ulong(0), byref(kind), byref(form), byref(count), byref(left), byref(data))
        if not data:
            return b""
        words = ctypes.cast(data, POINTER(c_ulong))
        value = words[:count.value] if form.value == 32 else ctypes.string_at(data, count.value)
        xlib.XFree(data)
        return value

    def set_property(self, window, name, kind, values):
        """`values` is an array of long, or of char; `kind` an atom or its name."""
        kind = self.atom(kind) if isinstance(kind, str) else c_ulong(kind)
        form = 32 if values._type_ in (c_long, c_ulong) else 8
        xlib.XChangeProperty(self.handle, c_ulong(window), self.atom(name), kind, form, 0, byref(values), len(values))
        self.sync()

    def title(self, window):
        return bytes(self.property(window, "_NET_WM_NAME") or self.property(window, "WM_NAME")).decode()

    def titles(self):
        """Of the windows that the window manager knows."""
        return [self.title(window) for window in self.property(self.root.value, "_NET_CLIENT_LIST") or ()]

    def active_window(self):
        return (self.property(self.root.value, "_NET_ACTIVE_WINDOW") or [0])[0]

    def active_title(self):
        return self.title(self.active_window())

    def is_composited(self):
        return bool(xlib.XGetSelectionOwner(self.handle, self.atom("_NET_WM_CM_S0")))

    def _ask_window_manager(self, message, window):
        """As a person's task bar does."""
        from_a_person = 2
        words = (from_a_person, 0) if message == "_NET_ACTIVE_WINDOW" else (0, from_a_person)
        event = ClientMessage(CLIENT_MESSAGE, window=window, format=32, words=words, message=self.atom(message).value)
        xlib.XSendEvent(self.handle, self.root, 0, c_long(SUBSTRUCTURE_NOTIFY | SUBSTRUCTURE_REDIRECT), byref(event))
        self.sync()

    def activate(self, window):
        self._ask_window_manager("_NET_ACTIVE_WINDOW", window)

    def close_window(self, window):
        self._ask_window_manager("_NET_CLOSE_WINDOW", window)

    def map_buttons(self, *first):
        """The logical numbers of the first physical buttons."""
        mapping = (c_ubyte * 32)()
        count = xlib.XGetPointerMapping(self.handle, mapping, 32)
        mapping[:len(first)] = first
        if xlib.XSetPointerMapping(self.handle, mapping, count) != 0:
            raise OSError("the buttons could not be mapped")

    def focused_title(self):
        window, revert = c_ulong(), c_int()
        xlib.XGetInputFocus(self.handle, byref(window), byref(revert))
        at, title = window.value, ""
        while at > 1 and not (title := self.title(at)):
            at = self.tree(at)[0]
        return title

    def tree(self, window):
        """Parent and children of a window, the lowest first."""
        root, parent, children, count = c_ulong(), c_ulong(), POINTER(c_ulong)(), c_uint()
        if not xlib.XQueryTree(self.handle, c_ulong(window), byref(root), byref(parent), byref(children),
                               byref(count)):
            return 0, []
        found = children[:count.value]
        if children:
            xlib.XFree(children)
        return parent.value, found

    def shown_windows(self):
        """Those straight on the screen, the uppermost first."""
        for window in reversed(self.tree(self.root.value)[1]):
            seen = WindowAttributes()
            if (xlib.XGetWindowAttributes(self.handle, c_ulong(window), byref(seen)) and
                    seen.map_state == IS_VIEWABLE):
                yield Shown(window, seen.x, seen.y, seen.width, seen.height)

    def pointer(self):
        """Place of the cursor and the mask of buttons and modifiers."""
        root, child, x, y, wx, wy, mask = c_ulong(), c_ulong(), c_int(), c_int(), c_int(), c_int(), c_uint()
        xlib.XQueryPointer(self.handle, self.root, byref(root), byref(child), byref(x), byref(y), byref(wx),
                           byref(wy), byref(mask))
        return (x.value, y.value), mask.value

    def cursor(self):
        return self.pointer()[0]

    def buttons_down(self):
        return {button for button in range(1, 6) if self.pointer()[1] >> 7 + button & 1}

    def keys_down(self):
        bits = (c_ubyte * 32)()
        xlib.XQueryKeymap(self.handle, bits)
        return bits_set(bits)

    def repeating_keys(self):
        state = KeyboardState()
        xlib.XGetKeyboardControl(self.handle, byref(state))
        return bits_set(state.auto_repeats)

    def devices(self):
        """Name, id and use of every input device."""
        count = c_int()
        infos = xinput.XIQueryDevice(self.handle, 0, byref(count))
        found = [(infos[i].name.decode(), infos[i].deviceid, infos[i].use) for i in range(count.value)]
        xinput.XIFreeDeviceInfo(infos)
        return found

    def floating(self):
        return {name for name, _, use in self.devices() if use == FLOATING_SLAVE}

    def device_id(self, wanted):
        return next(number for name, number, _ in self.devices() if name == wanted)

    def open_device(self, name):
        return c_void_p(xinput.XOpenDevice(self.handle, c_ulong(self.device_id(name))))

    def enable(self, name, is_on):
        """As when a device is plugged in or out."""
        xinput.XIChangeProperty(self.handle, self.device_id(name), self.atom("Device Enabled"),
                                c_ulong(XA_INTEGER), 8, 0, byref(c_ubyte(is_on)), 1)
        self.sync()

    def keycode(self, keysym_name):
        self.sync()
        self.follow_keyboard_changes()
        code = xlib.XKeysymToKeycode(self.handle, c_ulong(xlib.XStringToKeysym(keysym_name.encode())))
        if not code:
            raise ValueError(f"the keyboard has no key {keysym_name}")
        return code

    def key_is_taken(self, keysym_name, modifiers):
        """Whether a program has this key, with these modifiers' bits, as its hot key."""
        code = self.keycode(keysym_name)
        before = len(errors)
        xlib.XGrabServer(self.handle)  # or the question itself might come before the program's own grab
        xlib.XGrabKey(self.handle, code, modifiers, self.root, 0, 1, 1)
        xlib.XUngrabKey(self.handle, code, modifiers, self.root)
        xlib.XUngrabServer(self.handle)
        self.sync()
        return len(errors) > before

    def follow_keyboard_changes(self):
        event = InputEvent()
        while xlib.XCheckTypedEvent(self.handle, MAPPING_NOTIFY, byref(event)):
            xlib.XRefreshKeyboardMapping(byref(event))

    def picture(self, window=None):
        """The screen, or a window as it has drawn itself, as height x width x 3 numbers: red, green, blue."""
        import numpy  # here, for those who only start a command on a screen
        drawn, seen = c_ulong(window or self.root.value), WindowAttributes()
        xlib.XGetWindowAttributes(self.handle, drawn, byref(seen))
        image = xlib.XGetImage(self.handle, drawn, 0, 0, seen.width, seen.height, c_ulong(ALL_PLANES), Z_PIXMAP)
        if not image:
            raise OSError("nothing to be seen of it")
        size = image.contents.bytes_per_line * seen.height
        octets = numpy.frombuffer(ctypes.string_at(image.contents.data, size), numpy.uint8)
        xlib.XFree(c_void_p(image.contents.data))
        xlib.XFree(image)
        return octets.reshape(seen.height, -1, 4)[:, :seen.width, 2::-1]

    def set_background(self, window, picture):
        """`picture` is height x width x 3 numbers, like one that was taken."""
        import numpy
        height, width, _ = picture.shape
        data = numpy.zeros((height, width, 4), numpy.uint8)
        data[:, :, 2::-1] = picture
        visual, gc = (c_void_p(get(self.handle, 0)) for get in (xlib.XDefaultVisual, xlib.XDefaultGC))
        pixmap = c_ulong(xlib.XCreatePixmap(self.handle, self.root, width, height, 24))
        image = xlib.XCreateImage(self.handle, visual, 24, Z_PIXMAP, 0, c_void_p(data.ctypes.data), width, height, 32, 0)
        xlib.XPutImage(self.handle, pixmap, gc, image, 0, 0, 0, 0, width, height)
        xlib.XFree(image)
        xlib.XSetWindowBackgroundPixmap(self.handle, c_ulong(window), pixmap)
        xlib.XFreePixmap(self.handle, pixmap)


def save_png(picture, file):
    """Of three numbers a point, or of four with the opacity."""
    height, width, channels = picture.shape
    rows = b"".join(b"\0" + row.tobytes() for row in picture)
    kind = {3: 2, 4: 6}[channels]
    head = width.to_bytes(4, "big") + height.to_bytes(4, "big") + bytes([8, kind, 0, 0, 0])
    chunks = ((b"IHDR", head), (b"IDAT", zlib.compress(rows)), (b"IEND", b""))
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(
        len(data).to_bytes(4, "big") + kind + data + zlib.crc32(kind + data).to_bytes(4, "big") for kind, data in chunks))
