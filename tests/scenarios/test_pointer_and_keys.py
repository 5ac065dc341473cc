"""The wheel must not disturb the user's real mouse, keys and buttons."""

import pytest

from desk.desk import CONTROL, TOGGLE_KEY, field
from desk.input_devices import LEFT, RIGHT
from desk.waiting import holds_within, wait_for


def wait_for_no_key(desk):
    wait_for("all keys to be up", lambda: not desk.target.keys_down(), 3)


# The user's keys


def test_keys_pressed_and_released_while_the_toggle_key_is_down_reach_the_window(desk):
    desk.start(field("a"))
    for is_open in (True, False):
        desk.recorder.mark()
        desk.keyboard.press("w")
        desk.keyboard.press(TOGGLE_KEY)
        desk.wait_until_open() if is_open else desk.wait_until_closed()
        desk.keyboard.release("w")
        desk.keyboard.tap("e")
        desk.recorder.wait_for("key-up e", seconds=2)
        desk.keyboard.release(TOGGLE_KEY)
        desk.keyboard.tap("q")
        desk.recorder.expect("w", "e", "q")


@pytest.mark.only("linux", "Wine repeats a hot key")
def test_a_held_toggle_key_toggles_once(desk):
    desk.start(field("a"))
    desk.screen.run("xset", "r", "rate", "150", "50", "r", str(desk.display.keycode(TOGGLE_KEY)))
    desk.keyboard.press(TOGGLE_KEY)
    desk.wait_until_open()
    assert not holds_within(0.5, lambda: not desk.wheel()), "closed by a repeat"
    desk.keyboard.release(TOGGLE_KEY)


@pytest.mark.only("linux", "keyboards and keycodes are X's")
def test_the_toggle_key_works_after_its_keyboard_changed_while_it_was_down(desk):
    desk.start(field("a"))
    pressed = desk.display.keycode(TOGGLE_KEY)
    desk.keyboard.press(pressed)
    desk.wait_until_open()
    desk.display.enable(desk.keyboard.name, False)
    desk.display.enable(desk.keyboard.name, True)
    wait_for_no_key(desk)
    desk.close_wheel()
    desk.keyboard.press(pressed)
    desk.wait_until_open()
    desk.screen.run("setxkbmap", "us", "-variant", "dvorak")
    wait_for("the toggle key on another keycode", lambda: desk.display.keycode(TOGGLE_KEY) != pressed)
    desk.wait_for_hot_key_with(0)
    desk.keyboard.release(pressed)
    desk.close_wheel()
    assert not desk.recorder.since_mark("key-down", "key-repeat")


def test_a_modifier_held_by_the_user_reaches_the_program_with_the_toggle_key(desk):
    desk.start(field(("ctrl", "hold")))
    desk.choose(0)
    desk.wait_for_hot_key_with(CONTROL)
    desk.keyboard.tap("Control_L")  # the user's tap releases the function's hold
    wait_for("the key with ctrl to be free", lambda: not desk.target.hot_key_is_taken(TOGGLE_KEY, CONTROL))
    desk.recorder.mark()
    desk.keyboard.press("Control_L")
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.expect("key-down Control_L", TOGGLE_KEY)
    assert [record.state & CONTROL for record in desk.recorder.since_mark("key-up")] == [CONTROL]
    assert not desk.wheel()
    desk.keyboard.release("Control_L")


@pytest.mark.only("linux", "keycodes are X's")
def test_a_layout_change_does_not_change_which_key_is_released(desk):
    desk.start(field(("y", "hold", 700)), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down y")
    desk.screen.run("setxkbmap", "de")
    wait_for_no_key(desk)
    codes = {record.kind: record.code for record in desk.recorder.since_mark() if record.name != TOGGLE_KEY}
    assert codes["key-up"] == codes["key-down"]


# The mouse


@pytest.mark.only("linux", "devices are the X server's")
def test_a_mouse_unplugged_while_the_wheel_is_open_works_once_plugged_in_again(desk):
    desk.start(field("a"), field("b"), sendDelay=0)
    place = desk.display.cursor()
    for is_open_on_return in (True, False):
        desk.open_wheel()
        desk.display.enable(desk.mouse.name, False)
        if not is_open_on_return:
            desk.keyboard.tap(TOGGLE_KEY)
            wait_for("the wheel to close", lambda: not desk.wheel())
        desk.display.enable(desk.mouse.name, True)
        if is_open_on_return:
            wait_for("the mouse to be captured again", desk.mouse_is_held)
            desk.pick(1)
            desk.recorder.expect("b")
            assert desk.display.cursor() == place
    desk.mouse.move(15, 5)
    wait_for("the cursor to move", lambda: desk.display.cursor() != place)
    desk.click()


def test_with_swapped_buttons_only_the_primary_button_selects(desk):
    desk.start(field("a"), sendDelay=0)
    desk.screen.run("xmodmap", "-e", "pointer = 3 2 1")
    desk.open_wheel()
    desk.aim(0)
    desk.mouse.click(LEFT)  # the physical left button, which is secondary now
    assert not holds_within(0.3, lambda: not desk.wheel()), "the secondary button has selected"
    desk.mouse.click(RIGHT)
    desk.wait_until_closed()
    desk.recorder.expect("a")


@pytest.mark.only("linux", "on Windows the release of the selecting press goes to the programs")
def test_the_selecting_press_does_not_interfere_with_injected_presses(desk):
    def choose_and_keep_pressed(index, last):
        desk.recorder.mark()
        desk.open_wheel()
        desk.aim(index)
        desk.mouse.press()
        desk.recorder.wait_for(last, seconds=2)
        desk.mouse.release()
        desk.wait_until_closed()
        desk.keyboard.tap("e")

    desk.start(field("lmb"), field(("lmb", "hold")), field("q"), field(("lmb", "release")), sendDelay=0)
    choose_and_keep_pressed(0, "button-up left")
    desk.recorder.expect("left", "e")
    desk.choose(1)
    desk.recorder.wait_for("button-down left", 2)
    choose_and_keep_pressed(2, "key-up q")
    desk.recorder.expect("q", "e")
    assert desk.target.buttons_down() == {LEFT}
    desk.choose(3)
    wait_for("the button to be up", lambda: not desk.target.buttons_down())
