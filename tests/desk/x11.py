"""The little of Xlib that the desk needs, by ctypes."""

import ctypes
import zlib
from ctypes import POINTER, Structure, Union, byref, c_char_p, c_int, c_long, c_ubyte, c_uint, c_ulong, c_void_p
from dataclasses import dataclass

import numpy

xlib = ctypes.CDLL("libX11.so.6")
xinput = ctypes.CDLL("libXi.so.6")
xtest = ctypes.CDLL("libXtst.so.6")

KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, MOTION, CLIENT_MESSAGE, MAPPING_NOTIFY = 2, 3, 4, 5, 6, 33, 34
XA_INTEGER, XA_WM_NORMAL_HINTS, XA_WM_SIZE_HINTS = 19, 40, 41
IS_VIEWABLE = 2
FLOATING_SLAVE = 5
SUBSTRUCTURE_NOTIFY, SUBSTRUCTURE_REDIRECT = 0x80000, 0x100000
ALL_PLANES = 0xFFFFFFFF
Z_PIXMAP = 2


class InputEvent(Structure):
    """The common part of key, button and motion events; `detail` is keycode or button, unused for motion."""

    _fields_ = [("type", c_int), ("serial", c_ulong), ("send_event", c_int), ("display", c_void_p),
                ("window", c_ulong), ("root", c_ulong), ("subwindow", c_ulong), ("time", c_ulong),
                ("x", c_int), ("y", c_int), ("x_root", c_int), ("y_root", c_int), ("state", c_uint),
                ("detail", c_uint), ("same_screen", c_int)]


class ClientMessage(Structure):
    _fields_ = [("type", c_int), ("serial", c_ulong), ("send_event", c_int), ("display", c_void_p),
                ("window", c_ulong), ("message", c_ulong), ("format", c_int), ("words", c_long * 5)]


class Event(Union):
    _fields_ = [("type", c_int), ("input", InputEvent), ("message", ClientMessage), ("pad", c_long * 24)]


class WindowAttributes(Structure):
    _fields_ = [("x", c_int), ("y", c_int), ("width", c_int), ("height", c_int), ("border", c_int),
                ("depth", c_int), ("visual", c_void_p), ("root", c_ulong), ("window_class", c_int),
                ("bit_gravity", c_int), ("win_gravity", c_int), ("backing_store", c_int),
                ("backing_planes", c_ulong), ("backing_pixel", c_ulong), ("save_under", c_int),
                ("colormap", c_ulong), ("map_installed", c_int), ("map_state", c_int),
                ("masks", c_long * 3), ("override_redirect", c_int), ("screen", c_void_p)]


class ImageHead(Structure):
    _fields_ = [("width", c_int), ("height", c_int), ("xoffset", c_int), ("format", c_int),
                ("data", c_void_p), ("byte_order", c_int), ("unit", c_int), ("bit_order", c_int),
                ("pad", c_int), ("depth", c_int), ("bytes_per_line", c_int), ("bits_per_pixel", c_int)]


class DeviceInfo(Structure):
    _fields_ = [("deviceid", c_int), ("name", c_char_p), ("use", c_int), ("attachment", c_int),
                ("enabled", c_int), ("num_classes", c_int), ("classes", c_void_p)]


class KeyboardState(Structure):
    _fields_ = [("click_percent", c_int), ("bell_percent", c_int), ("bell_pitch", c_uint),
                ("bell_duration", c_uint), ("led_mask", c_ulong), ("global_auto_repeat", c_int),
                ("auto_repeats", c_ubyte * 32)]


for library, name, result in (
        (xlib, "XOpenDisplay", c_void_p), (xlib, "XDefaultRootWindow", c_ulong),
        (xlib, "XGetImage", POINTER(ImageHead)), (xlib, "XInternAtom", c_ulong),
        (xlib, "XStringToKeysym", c_ulong), (xlib, "XKeysymToString", c_char_p),
        (xlib, "XLookupKeysym", c_ulong), (xlib, "XCreateSimpleWindow", c_ulong),
        (xlib, "XKeysymToKeycode", c_ubyte), (xlib, "XGetSelectionOwner", c_ulong),
        (xinput, "XIQueryDevice", POINTER(DeviceInfo)), (xinput, "XOpenDevice", c_void_p)):
    getattr(library, name).restype = result
xtest.XTestFakeDeviceMotionEvent.argtypes = [c_void_p, c_void_p, c_int, c_int, POINTER(c_int), c_int, c_ulong]

# A window may go between being listed and being asked about: such errors are nobody's fault.
errors = []
ERROR_HANDLER = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)
note_error = ERROR_HANDLER(lambda display, error: errors.append(error) or 0)
xlib.XSetErrorHandler(note_error)


def bits_set(octets):
    return {8 * at + bit for at, octet in enumerate(octets) for bit in range(8) if octet >> bit & 1}


@dataclass(frozen=True)
class Shown:
    id: int
    left: int
    top: int
    width: int
    height: int


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

    def title(self, window):
        return bytes(self.property(window, "_NET_WM_NAME") or self.property(window, "WM_NAME")).decode()

    def active_window(self):
        return (self.property(self.root.value, "_NET_ACTIVE_WINDOW") or [0])[0]

    def active_title(self):
        return self.title(self.active_window())

    def activate(self, window):
        """Asks the window manager for it, as a person's task bar does."""
        from_a_person = 2
        event = Event(message=ClientMessage(CLIENT_MESSAGE, window=window, format=32, words=(from_a_person, 0),
                                            message=self.atom("_NET_ACTIVE_WINDOW").value))
        mask = c_long(SUBSTRUCTURE_NOTIFY | SUBSTRUCTURE_REDIRECT)
        xlib.XSendEvent(self.handle, self.root, 0, mask, byref(event))
        self.sync()

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

    def shown_layer(self, width, height, title):
        """The window of that size and title that is shown past the window manager, or None."""
        for window in reversed(self.tree(self.root.value)[1]):
            seen = WindowAttributes()
            if (xlib.XGetWindowAttributes(self.handle, c_ulong(window), byref(seen)) and
                    seen.map_state == IS_VIEWABLE and seen.override_redirect and
                    (seen.width, seen.height) == (width, height) and self.title(window) == title):
                return Shown(window, seen.x, seen.y, width, height)
        return None

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

    def keycode(self, keysym):
        """Of the key with that keysym: its name or its number."""
        xlib.XSync(self.handle, 0)
        self.follow_keyboard_changes()
        number = keysym if isinstance(keysym, int) else xlib.XStringToKeysym(keysym.encode())
        code = xlib.XKeysymToKeycode(self.handle, c_ulong(number))
        if not code:
            raise ValueError(f"the keyboard has no key {keysym}")
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
        event = Event()
        while xlib.XCheckTypedEvent(self.handle, MAPPING_NOTIFY, byref(event)):
            xlib.XRefreshKeyboardMapping(byref(event))

    def picture(self, window=None):
        """The screen, or a window as it has drawn itself, as height x width x 3 numbers: red, green, blue."""
        drawn, seen = c_ulong(window or self.root.value), WindowAttributes()
        xlib.XGetWindowAttributes(self.handle, drawn, byref(seen))
        width, height = seen.width, seen.height
        image = xlib.XGetImage(self.handle, drawn, 0, 0, width, height, c_ulong(ALL_PLANES), Z_PIXMAP)
        if not image:
            raise OSError("nothing to be seen of it")
        size = image.contents.bytes_per_line * height
        octets = numpy.frombuffer(ctypes.string_at(image.contents.data, size), numpy.uint8)
        xlib.XFree(c_void_p(image.contents.data))
        xlib.XFree(image)
        return octets.reshape(height, -1, 4)[:, :width, 2::-1]


def save_png(picture, file):
    height, width, _ = picture.shape
    rows = numpy.zeros((height, 1 + 3 * width), numpy.uint8)
    rows[:, 1:] = picture.reshape(height, 3 * width)

    def chunk(kind, data):
        body = kind + data
        return len(data).to_bytes(4, "big") + body + zlib.crc32(body).to_bytes(4, "big")

    head = width.to_bytes(4, "big") + height.to_bytes(4, "big") + bytes([8, 2, 0, 0, 0])
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows.tobytes())) +
                     chunk(b"IEND", b""))
