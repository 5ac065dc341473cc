"""Choosing with the wheel, and what its functions then do, as the program in front sees it."""

import time

import pytest

from desk.desk import CONTROL, TOGGLE_KEY, field
from desk.hands import MIDDLE, RIGHT, place_cursor
from desk.waiting import holds_within, wait_for

BESIDE = (200, 200)  # the wheel: a click at the cursor's place reaches the window below
LATE_S = 2  # how much longer than told a pause may last: threads wait their turn on a busy machine


def start_letters(desk, letters, **settings):
    """A field for each; the place of the real cursor."""
    desk.start(*map(field, letters), **{"sendDelay": 0} | settings)
    return desk.display.cursor()


def test_the_program_in_front_sees_what_was_chosen_and_nothing_else(desk):
    start_letters(desk, "abcd")
    for index, another_device_moved_last in ((2, False), (None, False), (0, True), (None, True), (3, False)):
        if another_device_moved_last:
            place_cursor(desk.display, 450, 350)
        place = desk.display.cursor()
        desk.recorder.mark()
        desk.open_wheel()
        desk.aim(1)
        desk.keyboard.tap("q")  # the keys go on reaching it
        desk.recorder.wait_for("key-up q")
        if index is None:
            desk.mouse.move(40, 30)
            desk.close_wheel()
        else:
            desk.pick(index)
        desk.recorder.expect("q", *("" if index is None else "abcd"[index]))
        assert not desk.recorder.since_mark("focus-out")
        assert {desk.display.cursor()} | {record.place for record in desk.recorder.since_mark("motion")} == {place}
        assert desk.next_motion() == (3, 3)


def test_only_a_left_press_on_a_field_with_steps_runs_anything(desk):
    desk.start(field("a"), field(), field("c"), cursor=BESIDE, sendDelay=0)
    desk.open_wheel()
    desk.mouse.click()  # in the hole
    desk.aim((560, 20))  # beside the ring; with one wheel there are no arrows
    desk.mouse.click()
    desk.aim(0)
    for button in (RIGHT, MIDDLE):
        desk.mouse.click(button)
    desk.aim(2)  # the cursor has moved on, so all of these have been handled
    assert desk.wheel()
    desk.close_wheel()
    desk.choose(1)
    desk.click()
    desk.choose(2)  # had anything else run, its key would have come by now
    desk.recorder.expect("left", "c")


def test_nothing_is_lost_however_fast_key_and_mouse_are(desk):
    start_letters(desk, "abcd", keyHold=10)
    for is_open in [True, False] * 12:
        desk.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to follow the key", lambda: bool(desk.wheel()) == is_open)
    desk.wait_until_closed()
    for _ in range(25):  # a press counts where the cursor stood
        desk.recorder.mark()
        desk.open_wheel()
        desk.aim(0)
        desk.mouse.press()
        desk.mouse.move(0, 200)
        desk.mouse.release()
        desk.wait_until_closed()
        desk.recorder.expect("a")


def test_the_virtual_cursor_stays_on_the_layer(desk):
    place = start_letters(desk, "abcd")
    desk.open_wheel()
    desk.mouse.move(-4000, -3000)
    wait_for("the virtual cursor in the corner", lambda: desk.wheel_cursor_is_at(0, 0))
    for _ in range(100):  # many small movements between two pictures add up
        desk.mouse.move(1, 1)
    most = 103 if desk.target.input_is_exact else 203
    wait_for("the virtual cursor where the sum of the movements leads",
             lambda: all(97 <= way <= most for way in desk.find_wheel_cursor() or (0,)))
    desk.virtual = desk.find_wheel_cursor() if most > 103 else (100, 100)
    desk.aim(3)
    desk.mouse.click()
    desk.recorder.expect("d")
    assert desk.display.cursor() == place


# Wine loses raw input when a window takes the foreground while it shares another thread's input.
@pytest.mark.parametrize("way_out", ["toggle", pytest.param("choice", marks=pytest.mark.only("linux"))])
def test_with_take_focus_the_program_in_front_gets_the_keyboard_back(desk, way_out):
    start_letters(desk, "q", takeFocus=True)
    desk.open_wheel()
    desk.recorder.wait_for_kind("focus-out")
    desk.recorder.mark()
    if way_out == "toggle":
        desk.close_wheel()
    else:
        desk.aim(0)
        desk.mouse.click()
    desk.recorder.wait_for_kind("focus-in")
    desk.wait_until_closed()
    if way_out == "toggle":
        desk.keyboard.tap("q")
    desk.recorder.expect("q")


def test_the_button_of_the_main_window_opens_the_wheel(desk):
    desk.prepare(field("f13"))
    desk.start_program()

    def press_button():
        """It lies at the lower left; the window manager may still move the window."""
        frame = next(shown for shown in desk.display.shown_windows() if shown.width > 800)
        place_cursor(desk.display, frame.left + 363, frame.top + frame.height - 41)
        desk.mouse.click()
        return holds_within(1, desk.wheel)

    wait_for("the wheel", press_button)
    place = desk.display.cursor()
    desk.wait_until_open()
    desk.pick(0)
    assert desk.display.cursor() == place


# What functions do


@pytest.mark.parametrize("steps, settings, seen, pauses_ms", [
    ([{"key": "a", "value": 3}, "b", ("shift", "hold", 400), ("F5", "klik")],
     {"keyHold": 80, "sendDelay": 700}, ["a", "a", "a", "b", "Shift_L", "F5"],
     [700, 80, 80, 80, 80, 80, 150, 80, 150, 400, 150, 80]),
    (["lmb", "ppm", "mmb", "mb4", "mouse5", ("lpm", "hold"), ("LMB", "release")], {},
     ["left", "right", "middle", "side1", "side2", "left"], []),
    (["up", "home", "delete", "pagedown", "space", "enter", "tab", "esc", "5", "F1", "F13", "capslock", "capslock",
      "backspace", "win", "volumeup", "playpause"], {"keyHold": 20},
     ["Up", "Home", "Delete", "Next", "space", "Return", "Tab", "Escape", "5", "F1", "F13", "Caps_Lock", "Caps_Lock",
      "BackSpace", "Super_L", "XF86AudioRaiseVolume", "XF86AudioPlay"], []),
], ids=["pauses", "buttons", "keys"])
def test_steps_arrive_as_told(desk, steps, settings, seen, pauses_ms):
    desk.start(field(*steps, delay=150 if pauses_ms else 0), **settings)
    place = desk.display.cursor()
    desk.open_wheel()
    desk.aim(0)
    chosen = time.monotonic()
    desk.mouse.click()
    wait_for("the first press", desk.recorder.presses)
    pauses = [time.monotonic() - chosen]
    desk.recorder.expect(*seen)
    presses = [press for press in desk.recorder.since_mark("key-down", "key-up", "button-down", "button-up")
               if press.name != TOGGLE_KEY]
    assert {press.place for press in presses if press.kind.startswith("button")} <= {place}
    pauses += [(after.time - before.time) / 1000 for before, after in zip(presses, presses[1:])]
    assert all(least / 1000 - 0.002 <= pause <= least / 1000 + LATE_S  # the times are cut to milliseconds
               for pause, least in zip(pauses, pauses_ms)), pauses


def test_keys_held_without_a_time_stay_down_until_another_field_lets_go(desk):
    desk.start(field(("w", "przytrzymaj"), ("ctrl", "hold"), "a", delay=500), field(("w", "puść"), ("ctrl", "release")))
    desk.choose(0)
    desk.recorder.wait_for("key-up a")
    desk.wait_for_hot_key_with(CONTROL)
    desk.choose(1)
    desk.recorder.expect("key-down w", "key-down Control_L", "a", "key-up w", "key-up Control_L")
    assert not desk.recorder.since_mark("key-repeat"), "on Windows an injected key does not repeat; nor elsewhere"


def test_runs_neither_wait_for_each_other_nor_for_the_wheel(desk):
    desk.start(field("a", "lmb", "b", delay=600), field(("w", "hold", 3000)), field("c"), cursor=BESIDE,
               sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-up a")
    desk.open_wheel()
    desk.recorder.expect("a", "left", "b")
    assert desk.wheel()
    desk.aim(1)
    desk.recorder.mark()
    desk.mouse.click()
    desk.recorder.wait_for("key-down w")
    desk.choose(2)
    desk.recorder.expect("key-down w", "c", "key-up w")


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
