"""What a program tells assistive technology over AT-SPI: its widgets by name, what they hold, where they are. Acting
on them is left to the person's hands, at those places."""

from gi.repository import Gio, GLib

from desk.waiting import GENEROUS_S, wait_for

CHECKED, ENABLED, FOCUSABLE, FOCUSED, SELECTED, SHOWING = 4, 8, 11, 12, 23, 25  # bits of a state
CLIENT_OF_BUS = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
ON_SCREEN = 0  # of coordinates
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")


def connect(address):
    return Gio.DBusConnection.new_for_address_sync(address, CLIENT_OF_BUS, None, None)


def call(bus, name, path, interface, method, signature="()", *values):
    arguments = GLib.Variant(signature, values)
    return bus.call_sync(name, path, interface, method, arguments, None, 0, int(GENEROUS_S * 1000), None).unpack()[0]


class Widget:
    """Everything is asked for anew each time, since a program may change it at any moment."""

    def __init__(self, bus, reference):
        self.bus, self.reference = bus, reference

    def _ask(self, interface, method, signature="()", *values):
        return call(self.bus, *self.reference, "org.a11y.atspi." + interface, method, signature, *values)

    def _get(self, interface, name):
        return call(self.bus, *self.reference, "org.freedesktop.DBus.Properties", "Get", "(ss)",
                    "org.a11y.atspi." + interface, name)

    def name(self):
        return self._get("Accessible", "Name")

    def description(self):
        return self._get("Accessible", "Description")

    def role(self):
        return self._ask("Accessible", "GetRoleName")

    def is_in(self, state):
        return bool(self._ask("Accessible", "GetState")[state // 32] >> state % 32 & 1)

    def place(self):
        """Left, top, width and height on the screen."""
        return self._ask("Component", "GetExtents", "(u)", ON_SCREEN)

    def text(self):
        return self._ask("Text", "GetText", "(ii)", 0, -1)

    def value(self):
        return self._get("Value", "CurrentValue")

    def children(self):
        return [Widget(self.bus, reference) for reference in self._ask("Accessible", "GetChildren")]

    def shown(self):
        """All that is to be seen within it, it first."""
        if self.is_in(SHOWING):
            yield self
            for child in self.children():
                yield from child.shown()

    def has_name(self, name):
        """A selector's name is its choice, and its description tells what it is."""
        return self.name() == name or self.description() == name

    def look_for(self, fits):
        """The first that is to be seen within it and fits, or None. One that goes meanwhile fits nothing."""
        try:
            return next((widget for widget in self.shown() if fits(widget)), None)
        except GLib.Error:
            return None

    def find(self, name, role=None):
        """Waits until there is a widget of that name, and of that role, to be seen within it."""
        return wait_for(f"the widget {name}", lambda: self.look_for(
            lambda widget: widget.has_name(name) and role in (None, widget.role())))

    def holds(self, state):
        """Waits for the state."""
        wait_for(f"state {state} of {self.name()}", lambda: self.is_in(state))
        return self


class Program(Widget):
    """The program on a desk whose title that is."""

    def __init__(self, screen, title):
        session = connect(screen.environment["DBUS_SESSION_BUS_ADDRESS"])
        bus = connect(call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"))
        registry = Widget(bus, ROOT)
        found = wait_for(f"{title} among the accessible programs", lambda: next(
            (each for each in registry.children() if each.name() == title), None))
        super().__init__(bus, found.reference)

    def window(self, title):
        """Waits until the window of that title has the keyboard."""
        return wait_for(f"the window {title} in front", lambda: next(
            (each for each in self.children() if each.name() == title and
             each.look_for(lambda widget: widget.is_in(FOCUSED))), None))
