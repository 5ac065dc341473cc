"""How the program starts, whatever it finds, and how it ends; and what the session around it does."""

import shutil
import time

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.waiting import holds_within, wait_for
from desk.x11 import xlib

END_LIMIT_S = 2


def expect_wheel(desk):
    desk.work_in_recorder()
    desk.open_wheel()
    desk.close_wheel()
    assert desk.program.poll() is None


def ends_in_time(process):
    started = time.monotonic()
    process.terminate()
    status = process.wait(20)
    return status == 0 and time.monotonic() - started < END_LIMIT_S


def test_a_second_copy_says_so_and_ends_without_disturbing_the_first(desk):
    desk.prepare(field("a"))
    desk.start_program()
    second = desk.launch_program()
    desk.display.close_window(wait_for("a message", lambda: desk.display.titled("Rotika")[1:])[0])
    assert second.wait(10) == 0
    expect_wheel(desk)


def test_started_from_elsewhere_it_makes_files_in_its_own_folder_and_no_broken_one_stops_it(desk):
    elsewhere = desk.screen.folder / "gdzie indziej"
    elsewhere.mkdir()
    desk.prepare()
    desk.write("config.json", broken := "no object")
    (desk.folder / "default.json").unlink()
    (desk.folder / "rotika.ico").unlink()
    shutil.rmtree(desk.folder / "themes")
    desk.start_program(cwd=elsewhere)
    assert not any(elsewhere.iterdir())
    assert desk.read("config.json") == f'"{broken}"'
    assert (desk.folder / "voice.json").exists()
    desk.work_in_recorder()
    desk.field_count = 8
    desk.choose(6)
    desk.recorder.expect("7")


@pytest.mark.only("linux")
def test_nothing_opens_or_runs_behind_a_locked_screen(desk):
    desk.start(field(("b", "hold", 1500), ("c",)), sendDelay=0)
    desk.choose(0)
    desk.recorder.wait_for("key-down b")
    desk.open_wheel()
    desk.lock_screen(True)
    desk.wait_until_closed()
    desk.keyboard.tap(TOGGLE_KEY)
    assert not holds_within(0.5, desk.wheel)
    desk.recorder.expect("b")
    desk.lock_screen(False)
    wait_for("the wheel to open again", lambda: desk.keyboard.tap(TOGGLE_KEY) or holds_within(0.3, desk.wheel))
    desk.wait_until_open()
    desk.close_wheel()


@pytest.mark.only("linux")
def test_a_toggle_key_that_another_program_has_is_told_of_and_the_message_holds_up_no_end(desk):
    key = desk.display.handle, desk.display.keycode(TOGGLE_KEY), 1 << 15, desk.display.root
    xlib.XGrabKey(*key, 0, 1, 1)
    desk.display.sync()
    desk.prepare(field("a"))
    desk.program = desk.launch_program()
    wait_for("a message", lambda: any(title.startswith("Rotika: ") for title in desk.display.titles()))
    assert ends_in_time(desk.program)


@pytest.mark.only("linux")
def test_a_start_can_be_ended_at_any_moment(desk):
    """From the lock of the only copy on. What comes before it takes nothing that would have to be given back."""
    desk.prepare(field("a"))
    lock = desk.screen.folder / "run" / "RotikaEngineRunning.lock"
    for delay_ms in range(0, 600, 100):
        desk.program = desk.launch_program()
        wait_for("the first step of the start", lock.exists)
        time.sleep(delay_ms / 1000)  # the moments are the test's rows, not a wait
        assert ends_in_time(desk.program), f"after {delay_ms} ms"
        lock.unlink()
