"""A screen locker that says on the session bus when it locks and unlocks."""

import ctypes
from ctypes import c_char_p, c_void_p

gio = ctypes.CDLL("libgio-2.0.so.0")
gio.g_dbus_connection_new_for_address_sync.restype = c_void_p
gio.g_variant_new_parsed.restype = c_void_p
gio.g_dbus_connection_call_sync.restype = c_void_p

NAME, PATH = b"org.freedesktop.ScreenSaver", b"/org/freedesktop/ScreenSaver"
CLIENT_ON_MESSAGE_BUS = 1 | 8


class Locker:
    def __init__(self, address):
        self.bus = c_void_p(gio.g_dbus_connection_new_for_address_sync(
            c_char_p(address.encode()), CLIENT_ON_MESSAGE_BUS, None, None, None))
        if not self.bus:
            raise OSError("no session bus")
        bus_name = b"org.freedesktop.DBus"
        arguments = c_void_p(gio.g_variant_new_parsed(b"('%s', uint32 0)" % NAME))
        gio.g_dbus_connection_call_sync(self.bus, bus_name, b"/org/freedesktop/DBus", bus_name, b"RequestName",
                                        arguments, None, 0, -1, None, None)

    def say(self, is_locked):
        value = c_void_p(gio.g_variant_new_parsed(b"(true,)" if is_locked else b"(false,)"))
        gio.g_dbus_connection_emit_signal(self.bus, None, PATH, NAME, b"ActiveChanged", value, None)
        gio.g_dbus_connection_flush_sync(self.bus, None, None)

    def close(self):
        gio.g_dbus_connection_close_sync(self.bus, None, None)
        gio.g_object_unref(self.bus)
