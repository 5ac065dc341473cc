"""The Windows installer and the portable archive under Wine: what they place, keep, end, start again and remove."""

import re
import signal
import zipfile
import zlib
from contextlib import suppress
from pathlib import Path

import pytest

from desk.screen import Screen
from desk.waiting import holds_within, wait_for
from desk.wine import SCRIPT, WineTarget

RELEASE = Path(__file__).parents[2] / "build/release"
SETUP, = RELEASE.glob("rotika-*-setup.exe")
PORTABLE, = RELEASE.glob("rotika-*-portable.zip")
VERSION = SETUP.name.split("-")[1]
SHIPPED = {name.partition("/")[2] for name in zipfile.ZipFile(PORTABLE).namelist()}
OWN = {"lista-plikow.txt", "odinstaluj.exe"}
SETTINGS = {"config.json", "default.json", "voice.json", "config-kopia-1.json", "default-odzysk.json"}
KEPT = {"icons/moja.png": b"own", "icons/dom.png": b"edited", "libvosk.dll": b"library", "gra.json": b"{}",
        "vosk-model-small-pl-0.22/am/final.mdl": b"model"}
START_MENU = {"Rotika.lnk", "Zainstaluj głos….lnk"}
RUN_KEY, UNINSTALL_KEY = (rf"HKCU\Software\Microsoft\Windows\CurrentVersion\{name}" for name in ("Run", r"Uninstall\Rotika"))

INSTALLER, UNINSTALLER = "Instalator programu Rotika", "Odinstalowanie programu Rotika"
CARET = 60  # more pixels than a blinking caret has


class Computer:
    """A Windows machine with one user. Nothing is installed on it yet."""

    def __init__(self):
        self.screen = Screen()
        self.display, self.target = self.screen.display, WineTarget(self.screen)
        self.drive = Path(self.screen.environment["WINEPREFIX"]) / "drive_c"
        self.user, = (self.drive / "users").glob("[!P]*")  # besides Public
        self.folder = self.user / "AppData/Local/Programs/Rotika"
        assert self.target.run(SCRIPT, "winecfg", "/v", "win10") == 0

    def run(self, program, *words):
        """Not target.run: a program that the installer starts would keep its output open."""
        return self.screen.launch(SCRIPT, program, *words).wait(90)

    def start(self, name="rotika.exe", *words):
        return self.screen.launch(SCRIPT, self.folder / name, *words)

    def files(self, folder=None):
        folder = folder or self.folder
        return {str(file.relative_to(folder)) for file in folder.rglob("*") if file.is_file()}

    def sums(self):
        return {name: zlib.crc32((self.folder / name).read_bytes()) for name in self.files()}

    def start_menu(self):
        return self.files(self.user / "AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Rotika")

    def value(self, key, name):
        output = self.screen.folder / "value.txt"
        with suppress(OSError):
            output.unlink()
        self.target.run("sh", "-c", f"'{SCRIPT}' reg query '{key}' /v {name} >'{output}'")
        found = re.search(rf"{name}\s+REG_\w+\s+(.*?)\s*$", output.read_text(errors="replace"), re.MULTILINE)
        return found and found[1]

    def running(self, name):
        """Process ids of the programs of this name."""
        found = set()
        for folder in Path("/proc").glob("[0-9]*"):
            with suppress(OSError):  # ended in the meantime, or another user's
                if str(self.drive.parent).encode() in (folder / "environ").read_bytes() and \
                        (folder / "cmdline").read_bytes().split(b"\0")[0].endswith(name.encode()):
                    found.add(int(folder.name))
        return found

    def window(self):
        return self.display.titled("Rotika")

    def add_files_of_the_user(self):
        for name, content in KEPT.items() | {name: b"{}" for name in SETTINGS}.items():
            file = self.folder / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content)

    def differs_from(self, picture):
        return (self.display.picture() != picture).any(axis=2).sum() > CARET

    def press(self, *keys):
        """Each key must change the screen: Wine loses keys while it is busy."""
        for key in keys:
            before = self.display.picture()
            wait_for(f"an effect of {key}", lambda: self.screen.run("xdotool", "key", key) or
                     holds_within(5, lambda: self.differs_from(before)), 60)
            self.rest()

    def rest(self):
        wait_for("the screen to rest", lambda: (seen := self.display.picture()) is not None and
                 not holds_within(0.5, lambda: self.differs_from(seen)), 60)

    def in_front(self, title, count=1):
        """The newest of `count` windows. Some pages have a space after the title."""
        windows = wait_for(f"{count} of {title}", lambda: len(found := [
            window for name in (title, title + " ") for window in self.display.titled(name)]) == count and found, 60)
        wait_for(f"{title} in front", lambda: self.display.focused_title().strip() == title or
                 self.display.activate(max(windows)) or
                 holds_within(2, lambda: self.display.focused_title().strip() == title), 60)
        self.rest()


@pytest.fixture
def computer():
    made = Computer()
    try:
        yield made
    finally:
        made.target.finish()
        made.screen.close()


def test_the_portable_archive_starts_from_a_path_with_polish_letters(computer):
    computer.folder = computer.drive / "Żółw i ćma/Rotika"
    zipfile.ZipFile(PORTABLE).extractall(computer.folder.parent)
    assert computer.files() == SHIPPED
    computer.start()
    wait_for("the window", computer.window, 60)
    wait_for("its files", lambda: computer.files() >= {"config.json", "default.json", "voice.json"})


@pytest.mark.parametrize("place", [None, "Żółw-i-ćma/Rotika"], ids=["default", "polish"])
def test_an_upgrade_keeps_what_is_the_users_and_a_removal_too(computer, place):
    if place:
        computer.folder = computer.drive / place
    assert computer.run(SETUP, "/S", *(["/D=C:\\" + place.replace("/", "\\")] if place else [])) == 0
    assert computer.files() == SHIPPED | OWN and computer.start_menu() == START_MENU
    assert computer.value(UNINSTALL_KEY, "DisplayVersion") == VERSION and not computer.value(RUN_KEY, "Rotika")
    computer.add_files_of_the_user()
    # As if an earlier version had shipped three more files, of which the user has edited one and removed one.
    listed = computer.folder / "lista-plikow.txt"
    former = {"icons/dawna.png": b"former", "icons/zmieniona.png": b"former", "icons/usunieta.png": b"former"}
    for name, content in former.items():
        (computer.folder / name).write_bytes(content)
        with listed.open("a", newline="\n") as file:
            file.write(f"{zlib.crc32(content):08X} {len(content):010d} {name}\n".replace("/", "\\"))
    (computer.folder / "icons/zmieniona.png").write_bytes(b"edited")
    (computer.folder / "icons/usunieta.png").unlink()
    program = computer.start()
    wait_for("the window", computer.window, 60)
    kept = {"icons/zmieniona.png", *KEPT, *SETTINGS}
    before = computer.sums()
    assert computer.run(SETUP, "/S") == 0 and program.wait(20) == 0
    wait_for("the window of the new version", computer.window, 60)
    after = computer.sums()
    assert set(after) == SHIPPED | OWN | kept and all(after[name] == before[name] for name in kept)
    assert computer.run(computer.folder / "odinstaluj.exe", "/S") == 0  # goes on in a copy of itself
    wait_for("the end of the removal", lambda: not computer.running("Un.exe") and computer.files() == kept, 60)
    assert not computer.start_menu() and not computer.value(UNINSTALL_KEY, "DisplayName")
    assert computer.sums().items() <= before.items() and not computer.running("rotika.exe")


def test_an_upgrade_ends_whatever_runs_and_starts_it_again(computer):
    assert computer.run(SETUP, "/S") == 0
    for name, words, copies in (("rotika.exe", ["--minimized"], 1), ("rotika-engine.exe", [], 1), ("rotika.exe", [], 2)):
        programs = [computer.start(name, *words)]
        wait_for("the program", lambda: (computer.folder / "voice.json").exists() and computer.running(name), 60)
        if copies == 2:
            wait_for("the window", computer.window, 60)
            programs.append(computer.start(name))
            wait_for("the second copy's box", lambda: len(computer.window()) == 2, 60)
        assert computer.run(SETUP, "/S") == 0
        assert [program.wait(20) for program in programs] == [0] * copies
        again = wait_for(f"{name} again", lambda: computer.running(name), 60)
        assert len(again) == 1
        if words:
            assert not holds_within(3, computer.window), "was in the tray"
        elif copies == 2:
            wait_for("the window", lambda: len(computer.window()) == 1, 60)
            [computer.screen.run("kill", f"-{signal.SIGSTOP}", str(process)) for process in again]
            before = computer.sums()
            assert computer.run(SETUP, "/S") == 2 and computer.sums() == before
            break
        assert computer.run(computer.folder / "rotika.exe", "--quit") == 0 and not computer.running(name)


def test_with_pages_a_person_chooses_folder_autostart_and_removal_of_the_settings(computer):
    def type_folder(text):
        computer.screen.run("xdotool", "key", "Home", "shift+End", "type", text)

    computer.screen.launch(SCRIPT, SETUP)
    computer.in_front(INSTALLER)
    computer.press("Return")
    type_folder(r"c:\program files\rotika")
    computer.press("Return")
    computer.in_front(INSTALLER, 2)  # refused
    computer.press("Return")
    type_folder(r"c:\nowy folder\rotika")
    computer.folder = computer.drive / "nowy folder/rotika"
    computer.press("Return", "alt+u", "Return")
    wait_for("the end", lambda: computer.value(UNINSTALL_KEY, "DisplayVersion"), 60)
    computer.in_front(INSTALLER)
    computer.press("Return")
    assert not (computer.drive / "Program Files/rotika").exists() and computer.files() >= SHIPPED | OWN
    assert computer.value(RUN_KEY, "Rotika") == r'"c:\nowy folder\rotika\rotika.exe" --minimized'
    wait_for("the window", computer.window, 60)
    first = computer.running("rotika.exe")
    computer.screen.launch(SCRIPT, SETUP)
    computer.in_front(INSTALLER)
    computer.press("Return", "Return", "Return")
    computer.in_front(INSTALLER, 2)  # asks
    assert computer.running("rotika.exe") == first
    computer.press("Return")
    wait_for("the new version", lambda: computer.window() and not computer.running("rotika.exe") & first, 60)
    computer.in_front(INSTALLER)
    computer.press("Return")
    assert computer.value(RUN_KEY, "Rotika")
    computer.add_files_of_the_user()
    computer.screen.launch(SCRIPT, computer.folder / "odinstaluj.exe")
    computer.in_front(UNINSTALLER)
    computer.press("Return", "alt+u", "Return")
    computer.in_front(UNINSTALLER, 2)
    computer.press("Return")
    wait_for("the end", lambda: not computer.value(UNINSTALL_KEY, "DisplayVersion"), 60)
    assert computer.files() == KEPT.keys() and not computer.value(RUN_KEY, "Rotika")
    assert computer.target.run(SCRIPT, "reg", "query", r"HKCU\Software\Rotika") != 0
