"""The Windows installer and the portable archive under Wine: what they place, keep, end, start again and remove."""

import os
import re
import subprocess
import zipfile
import zlib
from contextlib import suppress
from pathlib import Path

import pytest

from desk.screen import Screen
from desk.waiting import holds_within, wait_for
from desk.wine import SCRIPT, WineTarget

RELEASE = Path(os.environ["ROTIKA_RELEASE"])
(SETUP,), (PORTABLE,) = RELEASE.glob("rotika-*-setup.exe"), RELEASE.glob("rotika-*-portable.zip")
SHIPPED = {name.partition("/")[2] for name in zipfile.ZipFile(PORTABLE).namelist()}
UPDATES = {"WinSparkle.dll", "licencje/winsparkle.txt"} if os.environ.get("ROTIKA_UPDATE_LIBRARY") else set()
OWN = {"lista-plikow.txt", "odinstaluj.exe"} | UPDATES
SETTINGS = {"config.json", "default.json", "voice.json", "config-kopia-1.json", "default-odzysk.json",
            "default-odzysk-kopia-2.json", "default-odzysk-0a1b2c3d.json", "default-odzysk-0a1b2c3d-kopia-10.json"}
KEPT = {"icons/moja.png": b"own", "icons/dom.png": b"edited", "przykłady/głos.json": b"{}", "libvosk.dll": b"library", "gra.json": b"{}",
        "default-kopia-domowa.json": b"{}", "default-kopia-2b.json": b"{}", "default-odzysk-2026-1-2.json": b"{}",
        "vosk-model-small-pl-0.22/am/final.mdl": b"model"}
FORMER = {"icons/dawna.png": b"former", "icons/zmieniona.png": b"edited",  # of an earlier version, the second edited
          "dawne/inne/plik.txt": b"former"}
START_MENU = "AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Rotika"
KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion"
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
        assert self.target.run(SCRIPT, SETUP, "/S") == 2 and not self.folder.exists(), "Windows 7"
        assert self.target.run(SCRIPT, "winecfg", "/v", "win10") == 0

    def start(self, program="rotika.exe", *words):
        return self.screen.launch(SCRIPT, self.folder / program, *words)

    def run(self, program, *words):
        """Unlike target.run it does not wait for programs that this one starts."""
        return self.start(program, *words).wait(90)

    def files(self, folder=None):
        """By their paths below the folder: their checksums."""
        folder = folder or self.folder
        return {str(file.relative_to(folder)): zlib.crc32(file.read_bytes())
                for file in folder.rglob("*") if file.is_file()}

    def hold(self, name):
        """Keeps a file open, in a program that waits for input; returns this program's process id."""
        self.screen.launch(SCRIPT, "cmd", "/c", f"notepad.exe < {self.target.path_text(self.folder / name)}")
        held, = wait_for("the holder", lambda: self.running("notepad.exe"), 60)
        return held

    def value(self, key, name):
        words = SCRIPT, "reg", "query", rf"{KEY}\{key}", "/v", name
        shown = subprocess.run(words, env=self.screen.environment, capture_output=True).stdout.decode(errors="replace")
        found = re.search(rf"{name}\s+REG_\w+\s+(.*)", shown)
        return found and found[1].strip()

    def running(self, name):
        """Process ids of the programs of this name."""
        found = set()
        for folder in Path("/proc").glob("[0-9]*"):
            with suppress(OSError):  # ended in the meantime
                if str(self.drive.parent).encode() in (folder / "environ").read_bytes() and \
                        (folder / "cmdline").read_bytes().split(b"\0")[0].endswith(name.encode()):
                    found.add(folder.name)
        return found

    def windows(self, title="Rotika"):
        """Some pages of the installer have a space after the title."""
        return [window for name in (title, title + " ") for window in self.display.titled(name)]

    def wait_for_window(self, count=1, title="Rotika"):
        wait_for(f"{count} of {title}", lambda: len(self.windows(title)) == count, 60)

    def add_files_of_the_user(self, **more):
        for name, content in (KEPT | dict.fromkeys(SETTINGS, b"{}") | more).items():
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_bytes(content)

    def press(self, title, *keys, windows=1):
        """In the newest of so many windows. Each key must change the screen: Wine loses keys while it is busy."""
        self.wait_for_window(windows, title)
        for key in keys:
            wait_for(title, lambda: self.display.focused_title().strip() == title or
                     self.display.activate(max(self.windows(title))) or holds_within(2, lambda: False), 60)
            wait_for("the screen to rest", lambda: not self.changes_within(0.5), 60)
            wait_for(f"an effect of {key}", lambda: self.changes_within(5, *key.split("|")), 60)

    def changes_within(self, seconds, *key):
        before = self.display.picture()
        self.screen.run(*(("xdotool", *key) if key else ("true",)))
        return holds_within(seconds, lambda: (self.display.picture() != before).any(axis=2).sum() > CARET)


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
    assert computer.files().keys() == SHIPPED - UPDATES
    computer.start()
    computer.wait_for_window()
    wait_for("its files", lambda: computer.files().keys() >= {"config.json", "default.json", "voice.json"})


def test_an_upgrade_and_a_removal_keep_what_is_the_users(computer):
    computer.folder = computer.drive / "Żółw-i-ćma/Rotika"
    assert computer.run(SETUP, "/S", r"/D=C:\Żółw-i-ćma\Rotika") == 0
    assert computer.files().keys() == SHIPPED | OWN
    assert computer.files(computer.user / START_MENU).keys() == {f"{name}.lnk" for name in (
        "Podręcznik", "Rotika", "Pokaż okno", "Pokaż koło", "Klawisz koła…", "Włącz komendy głosowe",
        "Zainstaluj głos…", "Zakończ")}
    assert computer.value(r"Uninstall\Rotika", "DisplayVersion") == SETUP.name.split("-")[1]
    assert not computer.value("Run", "Rotika")
    computer.add_files_of_the_user(**FORMER)
    with (computer.folder / "lista-plikow.txt").open("a", encoding="utf-16-le") as listed:
        for name in (*FORMER, "icons/removed.png"):
            listed.write(f"{zlib.crc32(b'former'):08X} {len(b'former'):010d} {name}\n".replace("/", "\\"))
    program = computer.start()
    computer.wait_for_window()
    before, kept = computer.files(), {"icons/zmieniona.png", *KEPT, *SETTINGS}
    assert computer.run(SETUP, "/S") == 0 and program.wait(20) == 0
    computer.wait_for_window()
    after = computer.files()
    assert after.keys() == SHIPPED | OWN | kept and all(after[name] == before[name] for name in kept)
    assert not (computer.folder / "dawne").exists()
    assert computer.run(SETUP, "/S", r"/D=C:\inny") == 2 and not (computer.drive / "inny").exists()
    assert computer.run("odinstaluj.exe", "/S") == 0  # goes on in a copy of itself
    wait_for("the end of the removal", lambda: not computer.value(r"Uninstall\Rotika", "DisplayName"), 60)
    assert computer.files() == {name: before[name] for name in kept}
    assert not computer.files(computer.user / START_MENU) and not computer.running("rotika.exe")


def test_an_upgrade_ends_whatever_runs_and_starts_it_again(computer):
    assert computer.run(SETUP, "/S") == 0
    for name, words, windows in (("rotika.exe", ["--minimized"], 0), ("rotika-engine.exe", [], 0),
                                 ("rotika.exe", [], 1)):
        programs = [computer.start(name, *words)]
        wait_for("the program", lambda: "voice.json" in computer.files() and computer.running(name), 60)
        if windows:
            computer.wait_for_window()
            programs.append(computer.start(name))
            computer.wait_for_window(2)  # "już działa"
        assert computer.run(SETUP, "/S") == 0 and {program.wait(20) for program in programs} == {0}
        again, = wait_for(f"{name} again", lambda: computer.running(name), 60)
        if windows:
            computer.wait_for_window()
        else:
            assert not holds_within(3, computer.windows), "was in the tray"
            assert computer.run("rotika.exe", "--quit") == 0 and not computer.running(name)
    before = computer.files()
    computer.screen.run("kill", "-STOP", again)
    assert computer.run(SETUP, "/S") == 2 and computer.files() == before and computer.running(name) == {again}


def test_an_upgrade_replaces_all_files_or_none(computer):
    assert computer.run(SETUP, "/S") == 0
    (computer.folder / "rotika.ico").write_bytes(b"earlier")
    before, staged = computer.files(), computer.folder / ".rotika-instalacja"
    held = computer.hold("themes/pro.qss")  # placed after the icon
    for succeeds in False, True:
        setup = computer.start(SETUP, "/S", "/RESTART")
        if succeeds:
            wait_for("the icon", lambda: (staged / "poprzednie/rotika.ico").exists(), 60)
            computer.screen.run("kill", held)
        assert setup.wait(90) == 2 - 2 * succeeds and not staged.exists()
        computer.wait_for_window()
        assert computer.run("rotika.exe", "--quit") == 0
        after = computer.files()
        assert {name for name in before if after.get(name) != before[name]} == ({"rotika.ico"} if succeeds else set())


def test_with_pages_a_person_chooses_folder_autostart_and_removal_of_the_settings(computer):
    computer.start(SETUP)
    computer.press(INSTALLER, "key|Return", r"type|c:\program files\rotika", "key|Return")
    computer.press(INSTALLER, "key|Return", windows=2)  # refused
    computer.folder = computer.drive / "nowy folder/rotika"
    computer.press(INSTALLER, r"key|Home|shift+End|type|c:\nowy folder\rotika", "key|Return", "key|alt+u", "key|Return")
    wait_for("the end", lambda: computer.value(r"Uninstall\Rotika", "DisplayVersion"), 60)
    computer.press(INSTALLER, "key|Return")
    assert not (computer.drive / "Program Files/rotika").exists() and computer.files().keys() >= SHIPPED | OWN
    assert computer.value("Run", "Rotika") == r'"c:\nowy folder\rotika\rotika.exe" --minimized'
    computer.wait_for_window()
    first = computer.running("rotika.exe")
    computer.start(SETUP)
    computer.press(INSTALLER, "key|Return", "key|Return")
    computer.wait_for_window(2, INSTALLER)  # asks
    assert computer.running("rotika.exe") == first
    computer.press(INSTALLER, "key|Return", windows=2)
    wait_for("the new version", lambda: computer.running("rotika.exe").isdisjoint(first) and
             computer.display.focused_title() == "Rotika", 60)
    computer.press(INSTALLER, "key|Return")
    assert computer.value("Run", "Rotika")
    computer.add_files_of_the_user()
    computer.start("odinstaluj.exe")
    computer.press(UNINSTALLER, "key|Return", "key|alt+u", "key|Return")
    computer.press(UNINSTALLER, "key|Return", windows=2)
    wait_for("the end", lambda: not computer.value(r"Uninstall\Rotika", "DisplayVersion"), 60)
    assert computer.files().keys() == KEPT.keys() and not computer.value("Run", "Rotika")
    assert computer.target.run(SCRIPT, "reg", "query", r"HKCU\Software\Rotika") != 0
