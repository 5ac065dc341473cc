"""What a program tells assistive technology over AT-SPI: its widgets by name, what they hold, where they are. Acting
on them is left to the person's hands, at those places."""

from gi.repository import Gio, GLib

from desk.waiting import GENEROUS_S, wait_for

ENABLED, FOCUSABLE, FOCUSED, SELECTED, SHOWING = 8, 11, 12, 23, 25  # bits of a state
CLIENT_OF_BUS = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
open_bus = Gio.DBusConnection.new_for_address_sync


def call(bus, name, path, interface, method, signature="()", *values):
    arguments = GLib.Variant(signature, values)
    return bus.call_sync(name, path, interface, method, arguments, None, 0, int(GENEROUS_S * 1000), None).unpack()[0]


def first(widgets, fits):
    """The first that fits, or None. One that goes meanwhile fits nothing."""
    try:
        return next(filter(fits, widgets), None)
    except GLib.Error:
        return None


class Widget:
    """Everything is asked for anew each time, since a program may change it at any moment."""

    def __init__(self, bus, reference):
        self.bus, self.reference = bus, reference

    def _ask(self, interface, method, signature="()", *values):
        return call(self.bus, *self.reference, "org.a11y.atspi." + interface, method, signature, *values)

    def _text(self, name):
        return call(self.bus, *self.reference, "org.freedesktop.DBus.Properties", "Get", "(ss)",
                    "org.a11y.atspi.Accessible", name)

    def name(self):
        return self._text("Name")

    def description(self):
        return self._text("Description")

    def role(self):
        return self._ask("Accessible", "GetRoleName")

    def is_in(self, state):
        return bool(self._ask("Accessible", "GetState")[state // 32] >> state % 32 & 1)

    def place(self):
        """Left, top, width and height on the screen."""
        return self._ask("Component", "GetExtents", "(u)", 0)

    def children(self):
        return [Widget(self.bus, reference) for reference in self._ask("Accessible", "GetChildren")]

    def shown(self):
        """All that is to be seen of it, itself first."""
        if self.is_in(SHOWING):
            yield self
            for child in self.children():
                yield from child.shown()

    def look_for(self, fits):
        return first(self.shown(), fits)

    def focused(self):
        """The widget within it that has the keyboard, or None. A row says so even while its list has not."""
        return self.look_for(lambda widget: widget.is_in(FOCUSED) and not widget.role().endswith(" item"))

    def find(self, name, role):
        """Waits until it is to be seen. A selector's name is its choice, and its description tells what it is."""
        return wait_for(f"the {role} {name}", lambda: self.look_for(
            lambda widget: name in (widget.name(), widget.description()) and widget.role() == role))


class Program(Widget):
    """The program on a desk whose title that is."""

    def __init__(self, screen, title):
        session = open_bus(screen.environment["DBUS_SESSION_BUS_ADDRESS"], CLIENT_OF_BUS, None, None)
        address = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        bus = open_bus(address, CLIENT_OF_BUS, None, None)
        super().__init__(bus, wait_for(f"{title} among the accessible programs", lambda: first(
            Widget(bus, ROOT).children(), lambda each: each.name() == title)).reference)

    def window(self, title):
        """Waits until the window of that title knows that it has the keyboard."""
        return wait_for(f"the window {title} in front", lambda: first(
            self.children(), lambda each: each.name() == title and each.focused()))
