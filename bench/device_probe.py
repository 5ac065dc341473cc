"""Cost of voice and gaze in the whole program, with doubles of both libraries."""

import time
from pathlib import Path

from probe import cursor_is_painted, desk, ms_since, ms_until, report, run

from desk.desk import CENTRE, field
from desk.device import Device
from desk.sound import SoundServer

REST_S = 10
PERIOD_MS = 11


def workers_ms(process):
    """Processor time, in milliseconds, of all threads but the first, which is the owner thread. Its share is
    measured elsewhere."""
    return sum(int((task / "schedstat").read_text().split()[0])
               for task in Path(f"/proc/{process.pid}/task").iterdir() if task.name != str(process.pid)) / 1e6


def measure_rest(desk):
    """Too high by what the doubles spend in these threads on their scripts and logs."""
    time.sleep(1)
    before, start = workers_ms(desk.program), time.monotonic()
    time.sleep(REST_S)
    share = (workers_ms(desk.program) - before) / ms_since(start) * 100
    report("both threads with nothing said or seen, of one core", [share], 0.5, "% ")


def measure_look(desk, gaze):
    gaze.write(f"period {PERIOD_MS}")
    desk.open_wheel()
    values = []
    for i in range(30):
        is_there = cursor_is_painted(desk, desk.find_wheel_cursor())
        shown = desk.wheel()
        x = shown.left + CENTRE[0] + (150 if i % 2 else -150)
        y = shown.top + CENTRE[1]
        start = time.monotonic()
        gaze.add(f"look {(x + 0.5) / desk.screen.size[0]} {(y + 0.5) / desk.screen.size[1]} 1")
        values.append(ms_until(start, lambda: not is_there()))
        time.sleep((600 + i % 11) / 1000)  # until the cursor rests again
    # The double reads its script once per period, which the figure includes.
    report(f"gaze sample (and up to {PERIOD_MS} ms of the double) to moved cursor", values, 17 + PERIOD_MS)


def measure():
    with desk() as made:
        SoundServer(made.screen)
        speech, gaze = Device(made, "speech"), Device(made, "gaze", script="period 30", gazeDwell=0)  # 33 Hz
        made.start(field("a"), field("b"), **speech.settings, **gaze.settings)
        speech.wait_for_call("accept_waveform")
        gaze.wait_for_call("gaze_point_subscribe")
        measure_rest(made)
        measure_look(made, gaze)


run(measure)
