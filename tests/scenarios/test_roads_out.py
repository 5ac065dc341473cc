"""Whatever happens to the program, its guard or the screen: the person has mouse and keys again."""

import os
import signal

import pytest

from desk.desk import CENTRE, LAYER, TOGGLE_KEY, field
from desk.hands import place_cursor
from desk.waiting import holds_within, wait_for

STALL_LIMIT_S = 3.0


@pytest.fixture
def stalled(desk):
    """The wheel open and aimed at a field, and the program stopped."""
    desk.start(field("a"), cursor=(100, 100), sendDelay=0)
    desk.open_wheel()
    desk.aim(0)
    desk.program.send_signal(signal.SIGSTOP)
    return desk


def wait_for_the_mouse(desk, seconds):
    wait_for("the mouse to be given back", lambda: not desk.mouse_is_held(), seconds)
    assert desk.next_motion() == (3, 3)


def test_a_stalled_program_lets_go_of_the_mouse(stalled):
    desk = stalled
    desk.mouse.click()  # held back still, so it must not count once the program goes on
    wait_for_the_mouse(desk, STALL_LIMIT_S)
    desk.mouse.click()
    desk.recorder.wait_for("button-up left", seconds=1)
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert not holds_within(0.3, desk.mouse_is_held), "the mouse was grabbed again"
    desk.open_wheel()
    desk.close_wheel()
    assert [text for text in desk.recorder.presses() if "key-up" not in text] == ["button-down left", "button-up left"]


def test_a_press_on_a_mouse_that_was_given_back_is_the_persons(stalled):
    desk = stalled
    wait_for_the_mouse(desk, STALL_LIMIT_S)
    desk.mouse.press()
    desk.recorder.wait_for("button-down left")
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert not holds_within(STALL_LIMIT_S + 0.5, lambda: not desk.target.buttons_down()), "let go by the program"
    desk.mouse.release()


def test_a_stalled_program_lets_go_of_the_keyboard(stalled):
    desk = stalled
    desk.keyboard.tap(TOGGLE_KEY)
    wait_for_the_mouse(desk, STALL_LIMIT_S)
    desk.keyboard.tap("w")
    desk.recorder.wait_for("key-up w", seconds=1)
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()


def test_a_stall_with_the_wheel_closed_disturbs_nobody(desk):
    desk.start(field("a"), sendDelay=0)
    desk.program.send_signal(signal.SIGSTOP)
    desk.mouse.click()
    desk.recorder.wait_for("button-up left")
    assert not holds_within(STALL_LIMIT_S, lambda: desk.program.poll() is not None), "the program was ended"
    desk.program.send_signal(signal.SIGCONT)
    desk.choose(0)
    desk.recorder.wait_for("key-up a")


def test_a_death_with_the_guard_dead_before_lets_go_of_the_key(desk):
    desk.start(field(("shift", "hold", 60000)), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down Shift_L")
    dead = desk.kill_guard()
    holds_within(3, lambda: desk.new_guard_is_ready(dead))
    desk.kill_program()
    wait_for("shift to be up", lambda: not desk.target.keys_down(), 2)


def stands_on_a_monitor(desk):
    shown = desk.wheel()
    return shown and any(left <= shown.left and top <= shown.top and shown.left + LAYER[0] <= left + width and
                         shown.top + LAYER[1] <= top + height
                         for left, top, width, height in desk.screen.monitors())


LEFT_HALF, RIGHT_HALF = (0, 0, 640, 800), (640, 0, 640, 800)


@pytest.mark.parametrize("change", ["gone", "moved", "smaller"])
def test_a_monitor_that_changes_under_the_wheel_leaves_it_reachable(desk, change):
    if change != "smaller":
        desk.screen.set_monitors(LEFT_HALF, RIGHT_HALF)
    desk.start(field("a"), cursor=(700, 500), sendDelay=0)
    desk.open_wheel()
    assert stands_on_a_monitor(desk)
    if change == "gone":
        desk.screen.set_monitors(LEFT_HALF)
    elif change == "moved":
        desk.screen.set_monitors(LEFT_HALF, (640, 300, 640, 500))
    else:
        desk.screen.set_mode(800, 600)
    wait_for("the wheel to close or to stand on a monitor", lambda: not desk.wheel() or stands_on_a_monitor(desk), 2)
    if desk.wheel():
        desk.keyboard.tap(TOGGLE_KEY)
    desk.wait_until_closed()
    assert desk.next_motion() == (3, 3)
    place_cursor(desk.display, 100, 100)
    desk.choose(0)
    desk.recorder.wait_for("key-up a")
