"""Start-up with a second instance or broken files, and the session lock."""

import json
import shutil
import signal
from pathlib import Path

import pytest

from desk.desk import TOGGLE_KEY, field
from desk.device import Device
from desk.waiting import holds_within, wait_for


def expect_wheel(desk):
    desk.work_in_recorder()
    desk.open_wheel()
    desk.close_wheel()
    assert desk.program.poll() is None


def close_window(desk, window):
    desk.display.close_window(window)
    wait_for("the window to close", lambda: window not in desk.display.titled("Rotika"))


def switch_to_recorder(desk):
    desk.display.activate(desk.recorder.window.value)
    wait_for("the recorder in front", lambda: desk.is_in_front("recorder"))


def test_a_second_instance_shows_a_message_and_the_window_of_the_first(desk):
    desk.prepare(field("a"))
    desk.start_program()
    desk.recorder = desk.target.recorder()
    first, = desk.display.titled("Rotika")
    for way in "behind", "closed", "hanging":
        switch_to_recorder(desk)
        if way == "closed":
            close_window(desk, first)
        if way == "hanging":
            desk.program.send_signal(signal.SIGSTOP)
        second = desk.launch_program()
        box, = wait_for("a message", lambda: set(desk.display.titled("Rotika")) - {first})
        wait_for("it to be in front", lambda: desk.display.active_window() == box or not desk.target.gives_focus)
        desk.program.send_signal(signal.SIGCONT)
        wait_for("the window", lambda: first in desk.display.titled("Rotika"))
        assert not desk.target.gives_focus or not holds_within(0.5, lambda: desk.display.active_window() != box), way
        desk.display.close_window(box)
        assert second.wait(10) == 0
        if way == "closed" or desk.target.gives_focus:
            wait_for("the window in front", lambda: desk.is_in_front("Rotika"))
    close_window(desk, first)
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
    desk.prepare(field("a"), own=[7])
    desk.variables["DISPLAY"] = ""
    answers = {("--version",): (0, "Rotika "), ("--help",): (0, "--install-voice"), ("--quit",): (0, ""),
               ("--cos",): (2, "Nieznana opcja: --cos"), ("--quit", "a"): (2, "--quit"), ("--voice",): (2, "on albo off"),
               ("--voice", "x"): (2, "on albo off"), ("--restart", "--show"): (2, "--show"), ("--voice", "off"): (0, "")}
    for words, (status, part) in answers.items():
        log = desk.screen.folder / f"{Path(desk.target.command('rotika')[0]).name}.log"
        log.write_text("")
        assert desk.launch_program(*words).wait(20) == status
        assert part in log.read_text(), words
    assert json.loads(desk.read("config.json")).items() >= {"voiceEnabled": False, "own": [7]}.items()


def run_word(desk, *words, status=0):
    assert desk.launch_program(*words).wait(20) == status


def test_words_of_the_command_line_drive_the_program(desk):
    """Each reaches the running copy, or else starts it; none takes the keyboard from the program in front."""
    device = Device(desk, "speech", "nowhere")
    desk.prepare(field("a"), **device.settings)
    desk.recorder = desk.target.recorder()
    desk.program = desk.launch_program("--toggle-wheel")
    desk.wait_until_open()
    assert desk.display.focused_title() != "Rotika"
    assert not holds_within(1, lambda: not desk.wheel())
    held = [desk.launch_program("--toggle-wheel") for _ in range(2)]  # as a held shortcut does
    assert [each.wait(20) for each in held] == [0, 0]
    desk.wait_until_closed()
    assert not holds_within(1, desk.wheel)
    desk.work_in_recorder()
    run_word(desk, "--toggle-wheel")
    desk.wait_until_open()
    desk.pick(0)
    desk.recorder.expect("a")
    device.wait_for_status(f"brak {device.library.name}")
    shutil.copy(desk.doubles / "complete" / device.library.name, device.library)
    run_word(desk, "--voice", "on")  # tries again what has given up
    device.wait_for_call("model_new")
    if desk.target.is_accessible:
        desk.screen.launch("dbus-monitor", "member=Notify")
    for state in "off", "on":
        run_word(desk, "--voice", state)
        wait_for("the setting", lambda: f'"voiceEnabled": {str(state == "on").lower()}' in desk.read("config.json"))
        assert "voiceGlobal" not in desk.read("config.json")
    if desk.target.is_accessible:
        wait_for("a notification", lambda: "rotika --voice on" in (desk.screen.folder / "dbus-monitor.log").read_text())
    assert desk.display.focused_title() != "Rotika"
    run_word(desk, "--show")
    wait_for("the window", lambda: desk.is_in_front("Rotika") or not desk.target.gives_focus)
    first, restarts = desk.program, [desk.launch_program("--restart", "--minimized") for _ in range(2)]
    assert first.wait(20) == 0
    wait_for("one of them to end", lambda: {each.poll() for each in restarts} == {None, 0}, 30)
    desk.program, = (each for each in restarts if each.poll() is None)
    wait_for("the program", desk.guard, 30)
    switch_to_recorder(desk)
    desk.program.send_signal(signal.SIGSTOP)
    run_word(desk, "--toggle-wheel", status=1)
    desk.program.send_signal(signal.SIGCONT)
    assert not holds_within(1, desk.wheel), "obeyed too late"
    desk.open_wheel()
    desk.close_wheel()


def test_another_toggle_key_is_chosen_by_keyboard(desk):
    desk.prepare(field("a"), own=[7])
    desk.start_program()
    before, file = desk.read("config.json"), desk.folder / "config.json"
    run_word(desk, "--toggle-key")
    wait_for("the dialog", lambda: desk.is_in_front("Klawisz koła"))
    file.unlink()
    file.mkdir()  # cannot be written
    desk.keyboard.tap("F9")
    desk.keyboard.tap("Return")
    wait_for("a message", lambda: desk.display.titled("Klawisz koła")[1:])
    desk.keyboard.tap("Return")
    wait_for("the dialog", lambda: not desk.display.titled("Klawisz koła")[1:] and desk.is_in_front("Klawisz koła"))
    file.rmdir()
    file.write_text(before.replace("7", "+7"))  # which is not JSON
    desk.keyboard.tap("Return")
    wait_for("a message", lambda: desk.display.titled("Klawisz koła")[1:])
    assert (desk.folder / "config-kopia-1.json").exists()
    desk.keyboard.tap("Return")
    assert desk.program.wait(20) == 0
    assert json.loads(desk.read("config.json")) == json.loads(before) | {"toggleKey": "F9"}
    wait_for("the program again", lambda: desk.display.focused_title() == "Rotika", 60)
    for wheel in "opened", "closed":
        desk.keyboard.tap("F9")
        wait_for(f"the wheel to be {wheel}", lambda: bool(desk.wheel()) == (wheel == "opened"))
    run_word(desk, "--quit")


def test_a_minimized_start_shows_the_window_only_where_there_is_no_tray(desk):
    desk.prepare(field("a"))
    desk.program = desk.launch_program("--minimized")
    wait_for("the program", desk.guard, 30)
    assert bool(holds_within(15, lambda: desk.display.titled("Rotika"))) != desk.target.has_tray
    expect_wheel(desk)
    run_word(desk, "--quit")
    desk.program = desk.launch_program("--minimized")
    wait_for("the program", desk.guard, 30)
    run_word(desk, "--toggle-wheel")
    assert holds_within(3, desk.wheel), "a command waits for a tray"
    desk.close_wheel()
    first, desk.program = desk.program, desk.launch_program("--restart", "--minimized")
    assert first.wait(20) == 0
    wait_for("the program", desk.guard, 30)
    assert bool(holds_within(5, lambda: desk.display.titled("Rotika"))) != desk.target.has_tray
    assert desk.is_in_front("recorder") or not desk.target.gives_focus


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
