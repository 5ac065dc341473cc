"""The desktop around the wheel: it locks, its monitors change, its windows are destroyed, it ends."""

import os
import time
from ctypes import byref, c_ulong

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.waiting import holds_within, wait_for
from desk.x11 import XA_INTEGER, xlib

END_LIMIT_S = 2


def set_lock(desk, is_locked):
    """As XScreenSaver tells it."""
    values = (c_ulong * 3)(desk.display.atom("LOCK").value if is_locked else 0, 1_700_000_000, 1)
    xlib.XChangeProperty(desk.display.handle, desk.display.root, desk.display.atom("_SCREENSAVER_STATUS"),
                         c_ulong(XA_INTEGER), 32, 0, byref(values), 3)
    desk.display.sync()


def ends_in_time(process):
    started = time.monotonic()
    process.terminate()
    status = process.wait(20)
    return status == 0 and time.monotonic() - started < END_LIMIT_S


def test_nothing_opens_or_runs_behind_a_locked_screen(desk):
    desk.start(field("a"), field(("b", "hold", 1500), ("c",)), sendDelay=0)
    desk.open_wheel()
    desk.aim(0)
    set_lock(desk, True)
    desk.wait_until_closed()
    desk.mouse.click()
    desk.keyboard.tap(TOGGLE_KEY)
    assert not holds_within(0.5, desk.wheel)
    assert "key-down a" not in desk.recorder.presses()
    set_lock(desk, False)
    wait_for("the wheel to open again", lambda: desk.keyboard.tap(TOGGLE_KEY) or holds_within(0.3, desk.wheel))
    desk.wait_until_open()
    desk.aim(1)
    desk.mouse.click()
    desk.recorder.wait_for("key-down b")
    set_lock(desk, True)
    desk.recorder.wait_for("key-up b")
    assert not holds_within(0.5, lambda: "key-down c" in desk.recorder.presses())


@pytest.mark.parametrize("change", ["mode", "parts", "destroyed"])
def test_a_wheel_whose_place_is_gone_closes_and_opens_anew(desk, change):
    desk.start(field("a"), field("b"), sendDelay=0)
    desk.open_wheel()
    if change == "mode":
        desk.screen.set_mode(1024, 768)
    elif change == "parts":
        desk.screen.set_monitors((0, 0, 640, 800), (640, 0, 640, 800))
    else:
        xlib.XDestroyWindow(desk.display.handle, c_ulong(desk.wheel().id))
        desk.display.sync()
    desk.wait_until_closed()
    desk.choose(1)
    desk.recorder.wait_for("key-up b")


def test_icons_that_are_no_files_hold_nothing_up(desk):
    os.mkfifo(desk.screen.folder / "pipe.png")
    pictures = [str(desk.screen.folder / "pipe.png"), "/dev/zero", str(desk.screen.folder)]
    desk.start(*(field("a", icon=picture) for picture in pictures), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-up a")


@pytest.mark.parametrize("state", ["idle", "open wheel", "running function", "warning", "second copy"])
def test_the_program_ends_in_time_and_order_whatever_it_does(desk, state):
    if state == "warning":
        grabbing = desk.display
        xlib.XGrabKey(grabbing.handle, grabbing.keycode(TOGGLE_KEY), 1 << 15, grabbing.root, 0, 1, 1)
        grabbing.sync()
        desk.prepare(field("a"))
        desk.program = desk.screen.launch(desk.folder / "rotika")
        wait_for("the warning beside the program's window", lambda: {
            "Rotika", f"Rotika: Nie udało się zarejestrować globalnego skrótu '{TOGGLE_KEY}'. "
            "Być może inny program już go używa."} <= set(desk.display.titles()))
        xlib.XUngrabKey(grabbing.handle, grabbing.keycode(TOGGLE_KEY), 1 << 15, grabbing.root)
        grabbing.sync()
    else:
        desk.start(field(("w", "hold", 60000)), sendDelay=0)
    if state == "open wheel":
        desk.open_wheel()
    elif state == "running function":
        desk.choose(0)
        desk.recorder.wait_for("key-down w")
    elif state == "second copy":
        second = desk.screen.launch(desk.folder / "rotika")
        wait_for("its message", lambda: desk.display.titles().count("Rotika") == 2)
        assert ends_in_time(second)
    assert ends_in_time(desk.program)


def test_a_start_can_be_ended_at_any_moment(desk):
    """From the lock of the only copy on. What comes before it takes nothing that would have to be given back."""
    desk.prepare(field("a"))
    lock = desk.screen.folder / "run" / "RotikaEngineRunning.lock"
    for delay_ms in range(0, 600, 60):
        desk.program = desk.screen.launch(desk.folder / "rotika")
        wait_for("the first step of the start", lock.exists)
        time.sleep(delay_ms / 1000)  # the moments are the test's rows, not a wait
        assert ends_in_time(desk.program), f"after {delay_ms} ms"
        lock.unlink()
