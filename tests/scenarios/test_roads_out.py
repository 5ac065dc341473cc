"""Whatever happens to the program, its guard or the screen: the person has mouse and keys again."""

import signal
from ctypes import c_ulong

import pytest

from desk.desk import LAYER, TOGGLE_KEY, field
from desk.hands import place_cursor
from desk.waiting import holds_within, wait_for
from desk.x11 import xlib

STALL_LIMIT_S = 3.0
BESIDE = (200, 200)  # the wheel
LONG_SHIFT = ("shift", "hold", 60000)


@pytest.mark.parametrize("way", ["kill", "quit"])
def test_an_end_with_the_wheel_open_gives_the_mouse_back_and_it_starts_again(desk, way):
    desk.start(field("a"), cursor=BESIDE)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    if way == "kill":
        desk.kill_program()
    else:
        assert desk.end_program() == 0
    desk.wait_until_closed()
    wait_for("the guard to have done its work", lambda: not desk.guard())
    assert desk.display.cursor() == place
    assert desk.next_motion() == (3, 3)
    desk.click()
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.expect("left", TOGGLE_KEY)
    desk.start(field("a"))
    desk.choose(0)
    desk.recorder.expect("a")


@pytest.mark.parametrize("way, steps, last", [
    ("kill", [("shift", "hold", 900), "w"], "key-down w"), ("kill", [LONG_SHIFT], "key-down Shift_L"),
    ("kill", ["rmb"], "button-down right"), ("quit", [LONG_SHIFT], "key-down Shift_L"),
    pytest.param("guard first", [LONG_SHIFT], "key-down Shift_L", marks=pytest.mark.only("linux"))])
def test_an_end_in_a_press_lets_go_of_it(desk, way, steps, last):
    desk.start(field(*steps), cursor=BESIDE, sendDelay=0, keyHold=2000)
    desk.choose(0)
    desk.recorder.wait_for(last)
    if way == "guard first":
        dead = desk.kill_guard()
        holds_within(3, lambda: desk.new_guard_is_ready(dead))
    if way == "quit":
        assert desk.end_program() == 0
    else:
        desk.kill_program()
    desk.recorder.wait_for(last.replace("down", "up"), seconds=1)
    wait_for("all to be up", lambda: not desk.display.keys_down() | desk.display.buttons_down(), 1)
    assert not desk.recorder.since_mark("key-repeat")
    desk.keyboard.tap("q")
    desk.recorder.wait_for("key-up q")


def test_a_key_held_on_purpose_stays_down_after_a_death_until_the_person_taps_it(desk):
    desk.start(field(("w", "hold")), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down w")
    desk.kill_program()
    code = desk.display.keycode("w")
    wait_for("w to repeat as before", lambda: code in desk.display.repeating_keys())
    desk.keyboard.tap("w")
    desk.recorder.expect("w")


# Stalls


@pytest.fixture
def stalled(desk):
    """The wheel open and aimed at a field, and the program stopped."""
    desk.start(field("a"), cursor=(100, 100), sendDelay=0)
    desk.open_wheel()
    desk.aim(0)
    desk.program.send_signal(signal.SIGSTOP)
    return desk


def wait_for_the_mouse(desk):
    wait_for("the mouse to be given back", lambda: not desk.mouse_is_held(), STALL_LIMIT_S)
    assert desk.next_motion() == (3, 3)


@pytest.mark.only("linux")
@pytest.mark.parametrize("is_key_tapped", [False, True])
def test_a_stalled_program_lets_go_of_mouse_and_keyboard(stalled, is_key_tapped):
    desk = stalled
    if is_key_tapped:
        desk.keyboard.tap(TOGGLE_KEY)
    else:
        desk.mouse.click()  # held back still, so it must not count once the program goes on
    wait_for_the_mouse(desk)
    desk.click()
    desk.keyboard.tap("w")
    desk.recorder.wait_for("key-up w", seconds=1)
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    if not is_key_tapped:
        assert not holds_within(0.3, desk.mouse_is_held), "the mouse was grabbed again"
        desk.open_wheel()
        desk.close_wheel()
    desk.recorder.expect("left", "w")


@pytest.mark.only("linux")
def test_a_press_on_a_mouse_that_was_given_back_is_the_persons(stalled):
    desk = stalled
    wait_for_the_mouse(desk)
    desk.mouse.press()
    desk.recorder.wait_for("button-down left")
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert not holds_within(1, lambda: not desk.display.buttons_down()), "let go by the program"
    desk.mouse.release()


@pytest.mark.only("linux")
def test_a_stall_with_the_wheel_closed_disturbs_nobody(desk):
    desk.start(field("a"), sendDelay=0)
    desk.program.send_signal(signal.SIGSTOP)
    desk.click()
    assert not holds_within(STALL_LIMIT_S, lambda: desk.program.poll() is not None), "the program was ended"
    desk.program.send_signal(signal.SIGCONT)
    desk.choose(0)
    desk.recorder.wait_for("key-up a")


# The screen

WHOLE, LEFT_HALF, RIGHT_HALF = (0, 0, 1280, 800), (0, 0, 640, 800), (640, 0, 640, 800)


def open_in_the_middle_of(desk, left, top, width, height):
    desk.open_wheel()
    shown = desk.wheel()
    assert (shown.left, shown.top) == (left + (width - LAYER[0]) // 2, top + (height - LAYER[1]) // 2)


@pytest.mark.only("linux")
@pytest.mark.parametrize("before, monitor, after, new_monitor", [
    ((LEFT_HALF, RIGHT_HALF), RIGHT_HALF, (LEFT_HALF,), LEFT_HALF),
    ((LEFT_HALF, RIGHT_HALF), RIGHT_HALF, (LEFT_HALF, (640, 300, 640, 500)), LEFT_HALF),
    ((), WHOLE, (LEFT_HALF, RIGHT_HALF), LEFT_HALF), ((), WHOLE, "smaller", (0, 0, 800, 600)),
    ((), WHOLE, "destroyed", WHOLE)], ids=["gone", "moved", "split", "smaller", "destroyed"])
def test_a_wheel_whose_place_changes_closes_and_opens_anew(desk, before, monitor, after, new_monitor):
    desk.screen.set_monitors(*before)
    desk.start(field("a"), cursor=(700, 500), sendDelay=0)
    open_in_the_middle_of(desk, *monitor)
    if after == "smaller":
        desk.screen.set_mode(800, 600)
    elif after == "destroyed":
        xlib.XDestroyWindow(desk.display.handle, c_ulong(desk.wheel().id))
        desk.display.sync()
    else:
        desk.screen.set_monitors(*after)
    desk.wait_until_closed()
    assert desk.next_motion() == (3, 3)
    place_cursor(desk.display, 100, 100)
    open_in_the_middle_of(desk, *new_monitor)
    desk.pick(0)
    desk.recorder.expect("a")


@pytest.mark.only("linux")
def test_the_loss_of_the_display_ends_the_program_with_a_message(desk):
    desk.start(field("a"))
    desk.open_wheel()
    desk.lose_display()
    assert desk.program.wait(10) > 0, "the program was killed by a signal"
    assert (desk.screen.folder / "rotika.log").read_text()
