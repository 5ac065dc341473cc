"""From a spoken command to the labels over a full window, with a double of the recogniser."""

import signal
import time
from contextlib import contextmanager

from probe import desk, is_near, motion_latencies, ms_until, options, report, run, wait_for

from desk.desk import field
from desk.device import Device
from desk.sound import SoundServer

PAUSE_S = 0.005


@contextmanager
def voice_beside(title, *words):
    """The program with a double of the recogniser, and another program in the foreground."""
    with desk() as made:
        SoundServer(made.screen)
        voice = Device(made, "speech")
        made.prepare(field("a"), **voice.settings)
        made.start_program()
        other = made.screen.launch(*words)
        wait_for("its window", lambda: made.is_in_front(title))
        yield made, voice, other


def corner(desk):
    """Upper left corner of the active window on the screen."""
    lines = desk.screen.run("xwininfo", "-id", str(desk.display.active_window())).splitlines()
    return [int(line.split()[-1]) for line in lines if "Absolute upper-left" in line]


def measure_labels(what, target, title, *words):
    """The window must have a clickable element in its upper left corner."""
    with voice_beside(title, *words) as (made, voice, _):
        time.sleep(2)  # it continues to publish elements for a while
        spot = [value + 4 for value in corner(made)]  # within a badge
        bare = made.display.pixel(*spot)
        values = []
        for _ in range(12):
            start = time.monotonic()
            voice.add("say pokaż elementy")
            values.append(ms_until(start, lambda: not is_near(made.display.pixel(*spot), bare, 41), PAUSE_S))
            voice.add("say ukryj elementy")
            wait_for("the bare window", lambda: made.display.pixel(*spot) == bare)
    report(what, values, target)


def measure_windows():
    # 665 buttons, of which about 240, with the cells around them, are visible.
    measure_labels("spoken command to labels over 250 elements, 100 ms of it sound", 400,
                   "Flow Box", "gtk3-demo", "--run=flowbox")
    measure_labels("spoken command to 99 labels on a window of 5,000 elements", 500,
                   "Full Window", options.full_window)


def measure_wheel_during_scan():
    """A program that does not answer delays the scan by 1.5 s; this must not slow the wheel down."""
    with voice_beside("Application Class", "gtk3-demo") as (made, voice, other):
        made.open_wheel()
        before = sorted(motion_latencies(made, 24))
        other.send_signal(signal.SIGSTOP)
        voice.add("say pokaż elementy")
        time.sleep(0.25)  # until the command is recognised
        during = sorted(motion_latencies(made, 24))
        other.send_signal(signal.SIGCONT)
    report("what a scan adds to motion to repainted cursor",
           [after - value for value, after in zip(before, during)], 2)


run(measure_windows, measure_wheel_during_scan)
