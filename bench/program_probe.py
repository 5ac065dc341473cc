"""The whole program on a private screen, measured from outside: latencies for the user, memory and wake-ups."""

import ctypes
import time
from ctypes import byref, c_int, c_ulong
from pathlib import Path

from probe import desk, motion_latencies, ms_until, report, run, wait_for

from desk.desk import TOGGLE_KEY, field
from desk.x11 import InputEvent, xlib

RING_SPOT = (294 + 200, 230 - 30)  # a point of the wheel that is neither text nor edge
LOCK = 2  # Caps Lock: the program grabs the key with it too, and testing it never blocks the grab of the bare key
xdamage = ctypes.CDLL("libXdamage.so.1")
xdamage.XDamageCreate.restype = c_ulong


def ring_spot(desk):
    """RING_SPOT of the open wheel in screen coordinates."""
    shown = desk.wheel()
    return shown.left + RING_SPOT[0], shown.top + RING_SPOT[1]


def opening_ms(desk, spot):
    """From the toggle key to the wheel's first pixel."""
    background = desk.display.pixel(*spot)
    start = time.monotonic()
    desk.keyboard.press(TOGGLE_KEY)
    value = ms_until(start, lambda: desk.display.pixel(*spot) != background)
    desk.keyboard.release(TOGGLE_KEY)
    return value


def measure_opening(compositor, where, target):
    """Opening of a full page of fields over another program."""
    with desk() as made:
        made.screen.set_compositor(compositor)
        made.start(*[field("a")] * 24)
        made.open_wheel()  # once, to find its position
        spot = ring_spot(made)
        shown = made.display.pixel(*spot)
        values = []
        for _ in range(40):
            made.close_wheel()
            wait_for("the background", lambda: made.display.pixel(*spot) != shown)
            values.append(opening_ms(made, spot))
            made.wait_until_open()
    report(f"toggle key to first wheel pixel, {where}", values, target)


def measure_openings():
    measure_opening("picom", "compositor", 12)
    measure_opening("none", "no compositor", 8)


def measure_first_opening():
    """Fonts, shapes and the layer's memory must be prepared at the start."""
    values, spot = [], None
    for _ in range(7):
        with desk() as made:
            made.start(field("a"))
            time.sleep(0.5)  # until start-up work is done
            if spot:
                values.append(opening_ms(made, spot))
            else:
                made.open_wheel()  # to find its position, the same on each of these screens
                spot = ring_spot(made)
    report("first opening after the start: toggle key to first wheel pixel", values, 12)


def measure_motion():
    with desk() as made:
        made.start(field("a"))
        made.open_wheel()
        report("real mouse motion to repainted cursor", motion_latencies(made, 60), 17)


def memory_megabytes(process):
    status = Path(f"/proc/{process.pid}/status").read_text()
    return int(status.partition("VmRSS:")[2].split()[0]) / 1024


def start_values(desk, has_started, pause):
    """Six starts; the first, which warms the disk cache, is left out."""
    values = []
    for _ in range(6):
        wait_for("the key to be free", lambda: not desk.display.key_is_taken(TOGGLE_KEY, LOCK))
        start = time.monotonic()
        desk.program = desk.launch_program()
        values.append(ms_until(start, has_started, pause))
        wait_for("the window", lambda: desk.display.titled("Rotika"))
        time.sleep(0.5)
        memory = memory_megabytes(desk.program)
        desk.end_program()
    return values[1:], memory


def measure_start():
    with desk() as made:
        made.prepare(field("a"))
        # Polled rarely: each test grabs the server.
        values, memory = start_values(made, lambda: made.display.key_is_taken(TOGGLE_KEY, LOCK), 0.005)
        report("process start to toggle key live", values, 250)
        report("resident memory, engine and shell up", [memory], 70, "MB")
        values, _ = start_values(made, lambda: made.display.titled("Rotika"), 0.002)
        report("process start to main window shown", values, 300)
        # As if the editor had this file open when the program last ended.
        actions = [{"name": "Pole", "icon": "icons/tarcza.png", "key": "a"}] * 24
        made.write("full.json", {"wheels": [{"name": "Koło", "actions": actions}] * 24})
        settings = Path(made.screen.environment["HOME"], ".config/Rotika/UI.conf")
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text(f"[General]\nlastWheelFile={made.folder}/full.json\n")
        made.start_program()
        time.sleep(0.5)
        report("resident memory, 24 wheels of 24 fields in the editor", [memory_megabytes(made.program)], 90, "MB")


def voluntary_switches(process):
    return sum(int(line.split()[1]) for task in Path(f"/proc/{process.pid}/task").iterdir()
               for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt_switches:"))


def repaints_within(display, window, seconds):
    """The number of damage events (raw rectangles) of the window."""
    first, error, event = c_int(), c_int(), InputEvent()
    xdamage.XDamageQueryExtension(display.handle, byref(first), byref(error))
    damage = c_ulong(xdamage.XDamageCreate(display.handle, c_ulong(window), 0))
    xlib.XSync(display.handle, 1)
    time.sleep(seconds)
    display.sync()
    count = 0
    while xlib.XPending(display.handle):
        xlib.XNextEvent(display.handle, byref(event))
        count += event.type == first.value
    xdamage.XDamageDestroy(display.handle, damage)
    return count


def measure_rest():
    with desk() as made:
        made.start(field("a"))
        time.sleep(2)
        before = voluntary_switches(made.program)
        time.sleep(6)
        # The shell polls the engine's status four times in that period; the engine itself is idle.
        report("wake-ups in 6 s with the wheel closed (4 are the shell's)",
               [voluntary_switches(made.program) - before], 8, "  ")
        made.open_wheel()
        report("repaints in 3 s with the wheel open and nothing moving",
               [repaints_within(made.display, made.wheel().id, 3)], 0, "  ")


run(measure_start, measure_openings, measure_first_opening, measure_motion, measure_rest)
