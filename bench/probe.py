"""Shared by the probes of the whole program: arguments, waiting, and one format of figures."""

import argparse
import sys
import time
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).parents[1]
sys.path.insert(0, str(ROOT / "tests"))

from desk.desk import CENTRE, Desk  # noqa: E402
from desk.waiting import DeskError, wait_for  # noqa: E402

TIMEOUT_MS = 20000
WHITE = (255, 255, 255)
INSIDE_CURSOR = (3, 10)  # a white point of the cursor's picture, relative to its tip

parser = argparse.ArgumentParser()
parser.add_argument("--program", type=Path, default=ROOT / "build/linux/rotika", help="the program's folder")
parser.add_argument("--doubles", type=Path, default=ROOT / "build/linux/tests/doubles", help="the doubles' folder")
parser.add_argument("--speech", type=Path, default=ROOT / "build/speech", help="folder of library and model")
parser.add_argument("--full-window", type=Path, default=ROOT / "build/linux/bench/full_window")
options = parser.parse_args()


@contextmanager
def desk():
    made = Desk(options.program)
    made.doubles, made.speech = options.doubles, options.speech
    try:
        yield made
    finally:
        made.close()


def report(what, values, target, unit="ms"):
    """Prints a row in the format of target_reporter.cpp."""
    values = sorted(values)
    median, worst = values[len(values) // 2], values[-1]
    print(f"{what:<62} {median:7.3f} {unit} {worst:7.3f} {unit} {target:7.2f} {unit}  "
          f"{'ok' if median <= target else 'MISSED'}", flush=True)


def ms_since(start):
    return (time.monotonic() - start) * 1000


def ms_until(start, condition, pause=0.0):
    """Polls, without a pause by default: figures of a few milliseconds allow for none."""
    while not condition():
        if ms_since(start) > TIMEOUT_MS:
            raise DeskError("the measured event did not occur")
        if pause:
            time.sleep(pause)
    return ms_since(start)


def is_near(color, wanted, distance=8):
    return max(abs(one - other) for one, other in zip(color, wanted)) < distance


def cursor_is_painted(desk, tip):
    """A condition that reads the cursor's pixel from the composited screen."""
    shown = desk.wheel()
    spot = (shown.left + tip[0] + INSIDE_CURSOR[0], shown.top + tip[1] + INSIDE_CURSOR[1])
    return lambda: is_near(desk.display.pixel(*spot), WHITE)


def motion_latencies(desk, count):
    """From a motion of the real mouse to the virtual cursor at its new position on the screen."""
    x, y = CENTRE
    values = []
    for i in range(count):
        step = -30 if i % 2 else 30
        x += step
        arrived = cursor_is_painted(desk, (x, y))
        start = time.monotonic()
        desk.mouse.move(step, 0)
        values.append(ms_until(start, arrived))
        time.sleep((7 + i % 11) / 1000)  # any phase of the tick
    return values


def run(*measures):
    print(f"{'':<62} {'median':>10} {'worst':>10} {'target':>10}", flush=True)
    for measure in measures:
        measure()
