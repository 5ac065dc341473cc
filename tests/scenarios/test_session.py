"""Start-up with a second instance or broken files, and the session lock."""

import shutil
from pathlib import Path

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.waiting import holds_within, wait_for


def expect_wheel(desk):
    desk.work_in_recorder()
    desk.open_wheel()
    desk.close_wheel()
    assert desk.program.poll() is None


def test_a_second_instance_shows_a_message_and_exits_without_disturbing_the_first(desk):
    desk.prepare(field("a"))
    desk.start_program()
    second = desk.launch_program()
    desk.display.close_window(wait_for("a message", lambda: desk.display.titled("Rotika")[1:])[0])
    assert second.wait(10) == 0
    expect_wheel(desk)
    assert desk.launch_program("--install-voice", "brak.zip").wait(20) == 0  # passed to the first
    second = desk.launch_program()
    wait_for("a message", lambda: desk.display.titled("Rotika")[1:])
    desk.open_wheel()
    for _ in range(2):  # at the second time there is nothing to end
        quitting = [desk.launch_program("--quit") for _ in range(2)]  # which do not wait for each other
        assert [each.wait(20) for each in quitting] == [0, 0]
        assert (desk.program.wait(3), second.wait(3)) == (0, 0)
        assert not desk.guard()


def test_words_of_the_command_line_are_answered_without_a_window(desk):
    desk.prepare(field("a"))
    desk.variables["DISPLAY"] = ""
    answers = {("--version",): (0, "Rotika "), ("--help",): (0, "--install-voice"), ("--quit",): (0, ""),
               ("--cos",): (2, "Nieznana opcja: --cos"), ("--quit", "a"): (2, "--quit")}
    for words, (status, part) in answers.items():
        log = desk.screen.folder / f"{Path(desk.target.command('rotika')[0]).name}.log"
        log.write_text("")
        assert desk.launch_program(*words).wait(20) == status
        assert part in log.read_text(), words


def test_a_minimized_start_shows_the_window_only_where_there_is_no_tray(desk):
    desk.prepare(field("a"))
    desk.program = desk.launch_program("--minimized")
    wait_for("the program", desk.guard, 30)
    assert bool(holds_within(15, lambda: desk.display.titled("Rotika"))) != desk.target.has_tray
    expect_wheel(desk)


def test_files_are_created_in_the_program_folder_and_broken_or_missing_ones_do_not_prevent_a_start(desk):
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
