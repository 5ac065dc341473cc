"""After an exit, kill, stall or screen change the user has mouse and keyboard back."""

import signal

import pytest

from desk.desk import LAYER, TOGGLE_KEY, field
from desk.input_devices import RIGHT, place_cursor
from desk.waiting import holds_within, wait_for
from desk.x11 import xlib

STALL_LIMIT_S = 3.0
BESIDE_WHEEL = (200, 200)
LONG_SHIFT = ("shift", "hold", 60000)


@pytest.mark.parametrize("way", ["kill", "quit"])
def test_an_exit_with_the_wheel_open_releases_the_mouse_and_allows_a_restart(desk, way):
    desk.start(field("a"), cursor=BESIDE_WHEEL)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    if way == "kill":
        desk.kill_program()
    else:
        assert desk.end_program() == 0
    desk.wait_until_closed()
    wait_for("the guard to end", lambda: not desk.guard())
    assert desk.display.cursor() == place
    assert desk.next_motion() == (3, 3)
    desk.click()
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.expect("left", TOGGLE_KEY)
    desk.start(field("a"))
    desk.choose(0)
    desk.recorder.expect("a")


@pytest.mark.only("linux")
@pytest.mark.parametrize("way", ["kill", "quit"])
def test_an_exit_does_not_double_a_click_that_a_window_manager_still_withholds(desk, way):
    desk.start(field("a"), cursor=BESIDE_WHEEL)
    # A synchronous grab withholds the click until it is replayed, as a window manager does.
    button, synchronous, replay = (desk.display.handle, 1, 1 << 15, desk.display.root), 0, 2
    xlib.XGrabButton(*button, 0, 4, synchronous, 1, 0, 0)
    desk.display.sync()
    desk.mouse.click()
    desk.open_wheel()
    desk.kill_program() if way == "kill" else desk.end_program()
    wait_for("the guard to end", lambda: not desk.guard())
    xlib.XUngrabButton(*button)
    xlib.XAllowEvents(desk.display.handle, replay, 0)
    desk.display.sync()
    desk.recorder.expect("left")
    desk.recorder.mark()
    desk.click()  # a doubled click would arrive before this one
    desk.recorder.expect("left")


@pytest.mark.only("linux")
@pytest.mark.parametrize("kills_guard", [False, True])
def test_a_button_released_over_the_wheel_is_released_for_programs_after_a_kill(desk, kills_guard):
    desk.start(field("a"), cursor=BESIDE_WHEEL)
    desk.mouse.press(RIGHT)  # the last one of this mouse, which the server's list of devices leaves out
    desk.recorder.wait_for("button-down right")
    desk.open_wheel()
    if kills_guard:
        dead = desk.kill_guard()
    desk.mouse.release(RIGHT)
    wait_for("a guard", lambda: desk.guard() and not (kills_guard and desk.guard() == dead))
    desk.kill_program()
    desk.recorder.expect("right")


@pytest.mark.parametrize("way, step, press", [
    ("kill", "rmb", "button-down right"), ("quit", LONG_SHIFT, "key-down Shift_L"),
    pytest.param("guard first", LONG_SHIFT, "key-down Shift_L", marks=pytest.mark.only("linux"))])
def test_an_exit_during_an_injected_press_releases_it(desk, way, step, press):
    desk.start(field(step), cursor=BESIDE_WHEEL, sendDelay=0, keyHold=2000)
    desk.choose(0)
    desk.recorder.wait_for(press)
    if way == "guard first":
        dead = desk.kill_guard()
        wait_for("another guard", lambda: desk.guard() not in (None, dead))
    if way == "quit":
        assert desk.end_program() == 0
    else:
        desk.kill_program()
    desk.recorder.wait_for(press.replace("down", "up"), seconds=2)
    wait_for("all keys and buttons to be up", lambda: not desk.display.keys_down() | desk.display.buttons_down(), 1)
    desk.keyboard.tap("q")
    desk.recorder.wait_for("key-up q")


def test_a_hold_without_a_time_stays_down_after_a_kill_until_the_user_taps_the_key(desk):
    desk.start(field(("w", "hold")), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down w")
    desk.kill_program()
    code = desk.display.keycode("w")
    wait_for("w to repeat as before", lambda: code in desk.display.repeating_keys())
    desk.keyboard.tap("w")
    desk.recorder.expect("w")


@pytest.mark.only("linux")
def test_a_stalled_program_releases_mouse_and_keyboard(desk):
    desk.start(field("a"), cursor=(100, 100), sendDelay=0)
    desk.open_wheel()
    desk.aim(0)
    desk.program.send_signal(signal.SIGSTOP)
    desk.mouse.click()  # during the capture, so it must be ignored when the program resumes
    wait_for("the mouse to be released", lambda: not desk.mouse_is_held(), STALL_LIMIT_S)
    assert desk.next_motion() == (3, 3)
    desk.keyboard.tap("w")
    desk.mouse.press()
    desk.recorder.wait_for("button-down left")
    desk.program.send_signal(signal.SIGCONT)
    desk.wait_until_closed()
    assert not holds_within(1, lambda: desk.mouse_is_held() or not desk.display.buttons_down()), \
        "the program grabbed the mouse again or released the user's press"
    desk.mouse.release()
    desk.recorder.expect("w", "left")
    desk.choose(0)
    desk.recorder.expect("w", "left", "a")


LEFT_HALF, RIGHT_HALF = (0, 0, 640, 800), (640, 0, 640, 800)


def open_in_the_middle_of(desk, left, top, width, height):
    desk.open_wheel()
    shown = desk.wheel()
    assert (shown.left, shown.top) == (left + (width - LAYER[0]) // 2, top + (height - LAYER[1]) // 2)


@pytest.mark.only("linux")
@pytest.mark.parametrize("monitors, place, change, new_place", [
    ((LEFT_HALF, RIGHT_HALF), RIGHT_HALF, lambda screen: screen.set_monitors(LEFT_HALF), LEFT_HALF),
    ((), (0, 0, 1280, 800), lambda screen: screen.set_mode(800, 600), (0, 0, 800, 600))], ids=["removed", "smaller"])
def test_the_wheel_closes_when_its_monitor_changes_and_opens_at_the_new_place(desk, monitors, place, change, new_place):
    desk.screen.set_monitors(*monitors)
    desk.start(field("a"), cursor=(700, 500), sendDelay=0)
    open_in_the_middle_of(desk, *place)
    change(desk.screen)
    desk.wait_until_closed()
    assert desk.next_motion() == (3, 3)
    place_cursor(desk.display, 100, 100)
    open_in_the_middle_of(desk, *new_place)
    desk.pick(0)
    desk.recorder.expect("a")


@pytest.mark.only("linux")
def test_the_loss_of_the_display_ends_the_program_with_a_message(desk):
    desk.start(field("a"))
    desk.open_wheel()
    desk.recorder = desk.recorder.close()
    desk.display.close()
    desk.screen.server.kill()
    assert desk.program.wait(10) > 0, "the program was killed by a signal"
    assert (desk.screen.folder / "rotika.log").read_text()
