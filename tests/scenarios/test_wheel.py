"""Selecting from the wheel, and the effect of its functions on the foreground program."""

import time

import pytest

from desk.desk import CONTROL, SHIFT, TOGGLE_KEY, field
from desk.input_devices import RIGHT, place_cursor
from desk.waiting import holds_within, wait_for


KEYS = ("Right", "Next", "1", "Return", "Escape")


def test_the_foreground_program_receives_the_chosen_steps_and_nothing_else(desk):
    desk.start(*map(field, "abcd"), sendDelay=0)
    for index, another_device_moved_last in ((2, False), (None, False), (0, True), (None, True), (3, False)):
        if another_device_moved_last:
            place_cursor(desk.display, 450, 350)
        place = desk.display.cursor()
        desk.recorder.mark()
        desk.open_wheel()
        desk.aim(1)
        desk.mouse.click(RIGHT)
        for key in KEYS:  # still reach the foreground program, and have no effect on the wheel
            desk.keyboard.tap(key)
        desk.recorder.wait_for("key-up Escape")
        if index is None:
            desk.mouse.move(40, 30)
            desk.close_wheel()
        else:
            desk.pick(index)
        desk.recorder.expect(*KEYS, *("" if index is None else "abcd"[index]))
        assert not desk.recorder.since_mark("focus-out")
        assert {desk.display.cursor()} | {record.position for record in desk.recorder.since_mark("motion")} == {place}
        assert desk.next_motion() == (3, 3)


def test_no_input_is_lost_at_any_speed_of_key_and_mouse(desk):
    desk.start(*map(field, "abcd"), sendDelay=0, keyHold=10)
    for is_open in [True, False] * 12:
        desk.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to follow the key", lambda: bool(desk.wheel()) == is_open)
    desk.wait_until_closed()
    for _ in range(25):  # a press counts at the cursor's position at that moment
        desk.recorder.mark()
        desk.open_wheel()
        desk.aim(0)
        desk.mouse.press()
        desk.mouse.move(0, 200)
        desk.mouse.release()
        desk.wait_until_closed()
        desk.recorder.expect("a")


def test_with_take_focus_the_wheel_is_used_by_keyboard_and_gives_the_focus_back(desk):
    def open_wheel():
        desk.recorder.mark()
        desk.open_wheel()
        desk.recorder.wait_for_kind("focus-out")

    def expect(*keys):
        desk.wait_until_closed()
        desk.recorder.wait_for_kind("focus-in")
        wait_for("the recorder in front", lambda: desk.is_in_front("recorder"))
        for key in keys:
            desk.recorder.wait_for(f"key-up {key}")
        desk.keyboard.tap("Tab")
        desk.recorder.expect(*keys, "Tab")

    names = ["F5", "F6", "F7", "F8"]  # the same on every layout
    desk.start(*map(field, names), more=[{"actions": [field("F9"), field("F11", "F12")]}], takeFocus=True, sendDelay=0)
    roads = [(("Escape",), []), ((TOGGLE_KEY,), []), (("Right", "Down", "Return"), ["F6"]), (("3",), ["F7"]),
             (("Left", "Up", "space"), ["F8"]), (("Next", "2"), ["F11", "F12"]),
             (("9", "Return", "Prior", "Escape"), []), (("click",), ["F6"])]
    for keys, received in roads if desk.target.input_is_exact else roads[:2]:
        open_wheel()
        for key in keys:
            desk.pick(1) if key == "click" else desk.keyboard.tap(key)
        expect(*received)
    if not desk.target.input_is_exact:
        return  # under Wine a wheel with the focus gets no keys once it was painted or hidden
    desk.screen.run("xset", "r", "rate", "60", "30")
    for key, received in (("Escape", []), ("1", ["F5"])):
        open_wheel()
        desk.keyboard.press(key)
        assert not holds_within(0.4, lambda: not desk.wheel()), "its repeats would reach the foreground program"
        desk.keyboard.release(key)
        expect(*received)
    open_wheel()
    desk.keyboard.press("a")
    desk.pick(1)
    assert not holds_within(0.4, lambda: desk.is_in_front("recorder")), "it would get the repeats"
    desk.keyboard.release("a")
    expect("F6")
    third, keypad_third = 12, 89  # keycodes
    for layout, lock, key in (("fr", "Caps_Lock", third), ("ru,us", "Num_Lock", third), ("pl", "Num_Lock", keypad_third)):
        desk.screen.run("setxkbmap", layout)
        desk.keyboard.tap(lock)
        open_wheel()
        desk.keyboard.tap(key)
        expect("F7")
        desk.keyboard.tap(lock)


# Effects of functions


@pytest.mark.parametrize("steps, settings, seen, least_ms", [
    ([{"key": "a", "value": 3}, "b", ("shift", "hold", 400), ("F5", "klik")],
     {"keyHold": 80, "sendDelay": 700}, ["a", "a", "a", "b", "Shift_L", "F5"], 2110),
    (["lmb", "ppm", "mmb", "mb4", "mouse5", ("lpm", "hold"), ("LMB", "release")], {},
     ["left", "right", "middle", "side1", "side2", "left"], 0),
    (["up", "home", "delete", "pagedown", "space", "enter", "tab", "esc", "5", "F1", "F13", "capslock", "capslock",
      "backspace", "win", "volumeup", "playpause"], {"keyHold": 20},
     ["Up", "Home", "Delete", "Next", "space", "Return", "Tab", "Escape", "5", "F1", "F13", "Caps_Lock", "Caps_Lock",
      "BackSpace", "Super_L", "XF86AudioRaiseVolume", "XF86AudioPlay"], 0),
], ids=["pauses", "buttons", "keys"])
def test_steps_are_injected_in_order_with_their_pauses(desk, steps, settings, seen, least_ms):
    desk.start(field(*steps, delay=150 if least_ms else 0), **settings)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    chosen = time.monotonic()
    desk.mouse.click()
    desk.recorder.expect(*seen)
    assert time.monotonic() - chosen >= least_ms / 1000
    assert {press.position for press in desk.recorder.since_mark("button-down", "button-up")} <= {place}


def test_keys_held_without_a_time_stay_down_until_another_field_releases_them(desk):
    held, released = ([(name, action) for name in ("w", "ctrl", "shift")] for action in ("przytrzymaj", "puść"))
    desk.start(field(*held, "a", delay=500), field(*released))
    desk.choose(0)
    desk.recorder.wait_for("key-up a")
    desk.wait_for_hot_key_with(CONTROL, SHIFT)  # otherwise the wheel could not be opened
    desk.choose(1)
    desk.recorder.expect("key-down w", "key-down Control_L", "key-down Shift_L", "a",
                         "key-up w", "key-up Control_L", "key-up Shift_L")
    assert not desk.recorder.since_mark("key-repeat"), "an injected key must not repeat on any system"


def test_functions_open_files_programs_and_addresses(desk):
    opener, document = desk.target.opener(), desk.screen.folder / "dokument.txt"
    document.write_text("treść\n", encoding="utf-8")
    desk.target.set_handler(opener)
    targets = {desk.target.path_text(document): "dokument.txt", desk.target.path_text(opener): "started",
               "handled:przyklad": "handled:przyklad"}
    nothing = [{"open": name} for name in (desk.target.path_text(desk.screen.folder / "nie-ma.txt"), "nie-ma", "")]
    desk.start(*(field({"open": target}) for target in targets), field(*nothing, "z"), sendDelay=0)
    for index, note in enumerate(targets.values()):
        desk.choose(index)
        wait_for(f"{note} to be opened", lambda: len(desk.notes()) > index)
        assert desk.notes()[index].endswith(note)
    desk.recorder.mark()
    desk.choose(3)
    desk.recorder.expect("z")
    assert len(desk.notes()) == len(targets)
