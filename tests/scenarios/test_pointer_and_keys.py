"""What the wheel must leave as it found it: the real mouse, the keys and the buttons of the person."""

import signal

import pytest

from desk.desk import ALT, CONTROL, SHIFT, TOGGLE_KEY, field
from desk.hands import LEFT, RIGHT
from desk.waiting import holds_within, wait_for


def hold(key, milliseconds=0):
    return field((key, "hold", milliseconds))


def release(key):
    return field((key, "release"))


def pressed_letters(desk):
    """What was typed; the mere release of the toggle key may reach the window, its letter not."""
    return {record.name for record in desk.recorder.since_mark("key-down", "key-repeat")}


def wait_for_no_key(desk):
    wait_for("all keys to be up", lambda: not desk.target.keys_down(), 3)


# The mouse


@pytest.mark.only("linux", "devices are the X server's")
@pytest.mark.parametrize("comes_back_to_the_wheel", [True, False])
def test_a_mouse_unplugged_while_the_wheel_is_open_works_when_it_comes_back(desk, comes_back_to_the_wheel):
    desk.start(field("a"), field("b"), sendDelay=0)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.display.enable("Xvfb mouse", False)
    if not comes_back_to_the_wheel:
        desk.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to close", lambda: not desk.wheel())
    desk.display.enable("Xvfb mouse", True)
    if comes_back_to_the_wheel:
        wait_for("the mouse to be held back again", desk.mouse_is_held)
        desk.pick(1)
        desk.recorder.expect("b")
        assert desk.display.cursor() == place
    desk.mouse.move(15, 5)
    wait_for("the cursor to move", lambda: desk.display.cursor() != place)
    desk.click()


# The person's keys


def test_keys_let_go_and_pressed_while_the_toggle_key_is_down_reach_the_window(desk):
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
@pytest.mark.parametrize("is_told_to_repeat", [False, True])
def test_a_held_toggle_key_toggles_once_and_types_nothing(desk, is_told_to_repeat):
    desk.start(field("a"), sendDelay=0)
    if is_told_to_repeat:
        desk.screen.run("xset", "r", str(desk.display.keycode(TOGGLE_KEY)))
    desk.keyboard.repeat_soon()
    desk.keyboard.press(TOGGLE_KEY)
    desk.wait_until_open()
    assert not holds_within(0.5, lambda: not desk.wheel()), "the wheel closed by a repeat"
    desk.pick(0)
    assert not holds_within(0.5, desk.wheel), "the wheel opened again by a repeat"
    desk.keyboard.release(TOGGLE_KEY)
    desk.open_wheel()
    desk.close_wheel()
    assert TOGGLE_KEY not in pressed_letters(desk)


@pytest.mark.only("linux", "keyboards and keycodes are X's")
@pytest.mark.parametrize("change", ["unplugged", "another layout"])
def test_the_toggle_key_works_after_its_keyboard_changed_while_it_was_down(desk, change):
    desk.start(field("a"))
    pressed = desk.display.keycode(TOGGLE_KEY)
    desk.keyboard.press(pressed)
    desk.wait_until_open()
    if change == "unplugged":
        desk.display.enable("Xvfb keyboard", False)
        desk.display.enable("Xvfb keyboard", True)
        wait_for_no_key(desk)
    else:
        desk.screen.run("setxkbmap", "us", "-variant", "dvorak")
        wait_for("the toggle key at another place", lambda: desk.display.keycode(TOGGLE_KEY) != pressed)
        desk.wait_for_hot_key_with(0)
        desk.keyboard.release(pressed)
    desk.close_wheel()
    assert not pressed_letters(desk)


@pytest.mark.only("linux", "the X server has the auto-repeat")
def test_the_toggle_key_repeats_again_when_program_and_guard_have_died(desk):
    desk.start(field("a"))
    code = desk.display.keycode(TOGGLE_KEY)
    desk.program.send_signal(signal.SIGSTOP)  # so that it cannot start another guard
    desk.kill_guard()
    desk.kill_program()
    wait_for("the toggle key to repeat as before", lambda: code in desk.display.repeating_keys(), 3)


# Keys that functions hold


@pytest.mark.parametrize("modifiers", [{"ctrl": CONTROL}, {"shift": SHIFT, "alt": ALT}], ids=" ".join)
def test_a_modifier_that_a_function_holds_does_not_lock_the_wheel(desk, modifiers):
    desk.start(field(*((key, "hold") for key in modifiers)), field(*((key, "release") for key in modifiers)))
    desk.choose(0)
    wait_for("the modifiers to be down", lambda: len(desk.target.keys_down()) == len(modifiers))
    desk.wait_for_hot_key_with(*modifiers.values())
    desk.choose(1)
    wait_for_no_key(desk)
    assert TOGGLE_KEY not in pressed_letters(desk)


@pytest.mark.parametrize("program_holds", [None, "shift", "ctrl"])
def test_a_modifier_that_the_person_holds_goes_to_the_program_with_the_key(desk, program_holds):
    desk.start(hold(program_holds or "shift"), release("shift"))
    if program_holds:
        desk.choose(0)
        desk.wait_for_hot_key_with(SHIFT if program_holds == "shift" else CONTROL)
    if program_holds == "ctrl":
        desk.keyboard.tap("Control_L")  # from now on it is the person's again
        wait_for("the key with ctrl to be free", lambda: not desk.target.hot_key_is_taken(TOGGLE_KEY, CONTROL))
    desk.keyboard.press("Control_L")
    desk.keyboard.tap(TOGGLE_KEY)
    desk.recorder.wait_for(f"key-up {TOGGLE_KEY}")
    pressed = [record for record in desk.recorder.since_mark("key-down") if record.name == TOGGLE_KEY]
    assert [record.state & CONTROL for record in pressed] == [CONTROL]
    assert not desk.wheel()
    desk.keyboard.release("Control_L")
    if program_holds == "shift":
        desk.choose(1)
        desk.recorder.wait_for("key-up Shift_L")


@pytest.mark.only("linux", "keycodes are X's")
def test_what_was_pressed_is_what_is_released_after_a_layout_change(desk):
    desk.start(hold("y", 700), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down y")
    desk.screen.run("setxkbmap", "de")
    wait_for_no_key(desk)
    codes = {record.kind: record.code for record in desk.recorder.since_mark() if record.name != TOGGLE_KEY}
    assert codes["key-up"] == codes["key-down"]


@pytest.mark.only("linux", "the X server has the auto-repeat")
def test_a_held_key_that_the_person_taps_repeats_again(desk):
    desk.start(hold("w"), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down w")
    wait_for("w to repeat as before", lambda: desk.keyboard.tap("w") or holds_within(
        0.3, lambda: desk.display.keycode("w") in desk.display.repeating_keys()), 3)
    desk.recorder.wait_for("key-up w")


# Buttons


def test_with_swapped_buttons_the_primary_one_alone_selects(desk):
    desk.start(field("a"), sendDelay=0)
    desk.display.map_buttons(3, 2, 1)
    desk.open_wheel()
    desk.aim(0)
    desk.mouse.click(LEFT)  # the physical left one, which is secondary now
    assert not holds_within(0.3, lambda: not desk.wheel()), "the secondary button has selected"
    desk.mouse.click(RIGHT)
    desk.wait_until_closed()
    desk.recorder.expect("a")


@pytest.mark.only("linux", "the release of the choosing press is the person's on Windows")
def test_an_injected_click_is_whole_while_the_choosing_press_is_still_held(desk):
    desk.start(field("lmb"), sendDelay=0)
    desk.open_wheel()
    desk.aim(0)
    desk.mouse.press()
    wait_for("the wheel to close", lambda: not desk.wheel())
    desk.recorder.wait_for("button-up left", seconds=2)
    desk.mouse.release()
    wait_for("the mouse to be given back", lambda: not desk.mouse_is_held())
    desk.keyboard.tap("q")
    desk.recorder.expect("left", "q")


@pytest.mark.only("linux", "Wine has no raw motion while a button is held")
def test_buttons_that_the_person_holds_across_the_wheel_are_let_go_when_the_person_does(desk):
    desk.start(field("a"), sendDelay=0)
    desk.mouse.press()
    desk.mouse.press(RIGHT)
    desk.recorder.wait_for("button-down right")
    desk.open_wheel()
    desk.mouse.release()
    desk.aim(0)
    desk.mouse.press()
    desk.recorder.wait_for("key-up a")
    desk.mouse.release()
    wait_for("the mouse to be given back", lambda: not desk.mouse_is_held())
    desk.recorder.wait_for("button-up left")
    assert "button-up right" not in desk.recorder.presses()
    desk.mouse.release(RIGHT)
    desk.recorder.wait_for("button-up right")
    desk.click()


@pytest.mark.only("linux", "the release of the choosing press is the person's on Windows")
@pytest.mark.parametrize("way_out", ["toggle", "choice"])
def test_a_press_inside_the_wheel_does_not_let_go_of_a_button_that_a_function_holds(desk, way_out):
    desk.start(hold("lmb"), field("a"), release("lmb"), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("button-down left")
    desk.open_wheel()
    if way_out == "choice":
        desk.aim(1)
    desk.mouse.press()  # in the hole it chooses nothing
    if way_out == "toggle":
        desk.keyboard.tap(TOGGLE_KEY)
    wait_for("the wheel to close", lambda: not desk.wheel())
    desk.mouse.release()
    desk.wait_until_closed()
    desk.keyboard.tap("q")
    desk.recorder.wait_for("key-up q")
    assert [text for text in desk.recorder.presses() if "button" in text] == ["button-down left"]
    assert desk.target.buttons_down() == {1}
    desk.choose(2)
    desk.recorder.wait_for("button-up left")
