"""A program's widgets as it publishes them over AT-SPI: names, values, positions. Read only: tests act on a widget by
real mouse and keyboard input at its position."""

import functools

from gi.repository import Gio, GLib

from desk.waiting import TIMEOUT_S, wait_for

ENABLED, FOCUSABLE, FOCUSED, SELECTED, SHOWING = 8, 11, 12, 23, 25  # bits of the state
CLIENT_OF_BUS = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
open_bus = Gio.DBusConnection.new_for_address_sync


def call(bus, name, path, interface, method, signature="()", *values):
    arguments = GLib.Variant(signature, values)
    return bus.call_sync(name, path, interface, method, arguments, None, 0, int(TIMEOUT_S * 1000), None).unpack()[0]


@functools.cache  # since a scenario polls, and would open hundreds of connections
def accessibility_bus(session_address):
    session = open_bus(session_address, CLIENT_OF_BUS, None, None)
    return open_bus(call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"), CLIENT_OF_BUS, None, None)


def first_match(widgets, matches):
    """The first widget that matches, or None; also None when one vanishes during the search."""
    try:
        return next(filter(matches, widgets), None)
    except GLib.Error:
        return None


class Widget:
    """Nothing is cached, since the program may change it at any moment."""

    def __init__(self, bus, reference):
        self.bus, self.reference = bus, reference

    def _call(self, interface, method, signature="()", *values):
        return call(self.bus, *self.reference, "org.a11y.atspi." + interface, method, signature, *values)

    def _property(self, name):
        return call(self.bus, *self.reference, "org.freedesktop.DBus.Properties", "Get", "(ss)",
                    "org.a11y.atspi.Accessible", name)

    def name(self):
        return self._property("Name")

    def description(self):
        return self._property("Description")

    def role(self):
        return self._call("Accessible", "GetRoleName")

    def has_state(self, state):
        return bool(self._call("Accessible", "GetState")[state // 32] >> state % 32 & 1)

    def extents(self):
        """Left, top, width and height on the screen."""
        return self._call("Component", "GetExtents", "(u)", 0)

    def with_its_list(self):
        """Itself, and of a row also the list or tree: while that has the keyboard, its current row has the state."""
        return [self, Widget(self.bus, self._property("Parent"))] if self.role().endswith(" item") else [self]

    def children(self):
        return [Widget(self.bus, reference) for reference in self._call("Accessible", "GetChildren")]

    def shown(self):
        """The visible widgets of its subtree, itself first."""
        if self.has_state(SHOWING):
            yield self
            for child in self.children():
                yield from child.shown()

    def find_shown(self, matches):
        return first_match(self.shown(), matches)

    def focused(self):
        """The widget within it that has the keyboard focus, or None; also None while several have the state."""
        try:
            claims = [widget for widget in self.shown() if widget.has_state(FOCUSED)]
        except GLib.Error:  # one has vanished
            return None
        return claims[0] if len(claims) == 1 else None

    def find(self, name, role):
        """Waits until it is visible. A combo box's name is its current choice; its description is its label."""
        return wait_for(f"the {role} {name}", lambda: self.find_shown(
            lambda widget: name in (widget.name(), widget.description()) and widget.role() == role))


class Program(Widget):
    """The accessible root of the program of that name."""

    def __init__(self, screen, title):
        bus = accessibility_bus(screen.environment["DBUS_SESSION_BUS_ADDRESS"])
        super().__init__(bus, wait_for(f"{title} among the accessible programs", lambda: first_match(
            Widget(bus, ROOT).children(), lambda each: each.name() == title)).reference)

    def hear_focus(self):
        """A function that returns the names of the widgets that the program has since reported to get the focus."""
        registry, heard = "org.a11y.atspi.Registry", []
        self.bus.call_sync(registry, "/org/a11y/atspi/registry", registry, "RegisterEvent",
                           GLib.Variant("(sass)", ("focus:", [], "")), None, 0, int(TIMEOUT_S * 1000), None)
        self.bus.signal_subscribe(self.reference[0], "org.a11y.atspi.Event.Focus", None, None, None, 0,
                                  lambda _, name, path, *more: heard.append(Widget(self.bus, (name, path)).name()))

        def so_far():
            while GLib.MainContext.default().iteration(False):
                pass
            return heard
        return so_far

    def window(self, title):
        """Waits until the window of that title has the keyboard focus."""
        return wait_for(f"the window {title} in front", lambda: first_match(
            self.children(), lambda each: each.name() == title and each.focused()))
