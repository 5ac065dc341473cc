"""The Debian package on a bare Debian 12 with its dependencies alone: installed, started, upgraded, removed."""

import hashlib
import os
import subprocess
import tempfile
from contextlib import suppress
from pathlib import Path

import numpy
import pytest

from desk.desk import Desk, field
from desk.waiting import wait_for
from desk.x11 import save_png

RELEASE, CACHE = Path(os.environ["ROTIKA_RELEASE"]), Path(os.environ["ROTIKA_CACHE"])
ARTEFACTS = Path(__file__).parents[2] / "build/artefacts/packages"
USER = "ola"
# The mounts belong to the command alone and end with it.
MOUNTS = """root=$1 archives=$2; shift 2
mount -t proc proc "$root/proc"
mount --bind "$archives" "$root/var/cache/apt/archives"
exec chroot "$@" """
# Of homes, or of the system's own tools: databases, logs, what does not outlive the next start.
IGNORED = {"home", "root", "proc", "sys", "dev", "run", "tmp", "var/log", "var/cache", "var/lib/dpkg", "var/lib/apt"}


class BareDebian:
    def __init__(self, folder):
        self.folder = folder
        subprocess.run(["tar", "-C", folder, "-xf", CACHE / "debian-bookworm.tar"], check=True)
        folder.chmod(0o755)
        self.run("useradd", "--create-home", USER)
        self.run("apt-get", "update")

    def command(self, *words, user="root", **variables):
        """The command line that runs these words inside."""
        home = "/root" if user == "root" else f"/home/{user}"
        variables |= {"HOME": home, "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive"}
        return ["unshare", "--mount", "sh", "-ec", MOUNTS, "sh", self.folder, CACHE / "debian-archives",
                f"--userspec={user}:{user}", self.folder, "env", "-i", "-C", home,
                *(f"{name}={value}" for name, value in variables.items()), *words]

    def run(self, *words):
        done = subprocess.run(self.command(*words), capture_output=True, text=True)
        assert done.returncode == 0, f"{words}: {done.stdout[-2000:]}{done.stderr[-2000:]}"
        return done.stdout

    def install(self, package):
        (self.folder / "tmp" / package.name).write_bytes(package.read_bytes())
        self.run("apt", "install", "-y", "--no-install-recommends", "-o", "APT::Keep-Downloaded-Packages=true",
                 f"/tmp/{package.name}")

    def files(self):
        """Every path of the system outside homes."""
        found = set()
        for folder, folders, names in os.walk(self.folder):
            inside = Path(folder).relative_to(self.folder)
            folders[:] = [name for name in folders if str(inside / name) not in IGNORED]
            found |= {f"/{inside / name}" for name in folders + names}
        return found

    def data(self, home=f"home/{USER}"):
        return self.folder / home / ".local/share/rotika"


class InstalledDesk(Desk):
    """The program is what its user gets by the command "rotika"; its files are in that user's home."""

    def __init__(self, system):
        super().__init__("/")
        self.system, self.folder = system, system.data()

    def launch_program(self, user=USER):
        return self.screen.launch(*self.system.command("rotika", user=user, DISPLAY=self.display.name))

    def guard(self):
        for process in Path("/proc").glob("[0-9]*"):
            with suppress(OSError):  # ended in the meantime
                if (process / "cmdline").read_bytes().startswith(b"/usr/lib/rotika/rotika-guard") and \
                        os.readlink(process / "root") == str(self.system.folder):
                    return int(process.name)
        return None

    def hovered(self, index):
        """The colours around the middle of the field that the wheel's cursor is put on."""
        if not self.wheel():  # it closes where a busy machine stands still for more than a second
            self.open_wheel()
        self.aim(index)
        x, y = self.virtual
        return {tuple(map(int, pixel)) for line in self.display.picture(self.wheel().id)[y - 60:y - 10, x - 20:x + 20]
                for pixel in line}


@pytest.fixture
def system():
    with tempfile.TemporaryDirectory(prefix="rotika-debian.") as folder:  # too large to be kept as pytest would
        yield BareDebian(Path(folder))


@pytest.fixture
def desk(system):
    made = InstalledDesk(system)
    try:
        yield made
        left = made.end_program() and ["an exit status"] or made.leftovers()
        assert not left, f"left behind: {left}"
    finally:
        made.keep(ARTEFACTS, "linux")
        made.close()


def newer(package, folder):
    """The package with a higher version, repacked."""
    content, made = folder / "content", folder / "newer.deb"
    subprocess.run(["dpkg-deb", "-R", package, content], check=True)
    control = content / "DEBIAN/control"
    control.write_text(control.read_text().replace("\nVersion: ", "\nVersion: 9"))
    subprocess.run(["dpkg-deb", "--root-owner-group", "-Zgzip", "-b", content, made], check=True, capture_output=True)
    return made


def sums(folder):
    return {str(file): hashlib.sha256(file.read_bytes()).hexdigest() for file in folder.rglob("*") if file.is_file()}


def test_the_package_is_installed_upgraded_under_the_running_program_and_removed(system, desk, tmp_path):
    package, = RELEASE.glob("rotika_*_amd64.deb")
    ARTEFACTS.mkdir(parents=True, exist_ok=True)
    system.install(package)
    before = system.files()
    desk.screen.show_tray()
    desk.start_program()
    desk.screen.wait_for_tray_icon()
    assert desk.guard()
    wait_for("its content", lambda: len(numpy.unique(desk.display.picture()[300:500, 300:700])) > 9)
    save_png(desk.display.picture(), ARTEFACTS / "linux-first-start.png")
    desk.work_in_recorder()
    desk.field_count = 8  # of the wheel that the first start makes
    desk.choose(6)
    desk.recorder.expect("7")

    kept = sums(desk.folder)
    assert {Path(name).name for name in kept} >= {"config.json", "default.json", "voice.json"}
    system.install(newer(package, tmp_path))
    desk.recorder.mark()
    desk.choose(1)
    desk.recorder.expect("2")
    assert desk.end_program() == 0 and sums(desk.folder) == kept

    save_png(numpy.full((64, 64, 4), (255, 0, 0, 255), numpy.uint8), desk.folder / "icons/znak.png")
    desk.write("default.json", {"wheels": [{"name": "", "actions": [
        field("a", name="", color="#108030", icon=f"icons/{icon}.png") for icon in ("znak", "leczenie")]}]})
    desk.field_count, kept = 2, sums(desk.folder)
    desk.start_program()
    desk.work_in_recorder()
    desk.open_wheel()
    wait_for("the own icon", lambda: (255, 0, 0) in desk.hovered(0))
    wait_for("the program's icon", lambda: len(desk.hovered(1)) > 5)
    save_png(desk.display.picture(), ARTEFACTS / "linux-icons.png")
    desk.close_wheel()
    assert desk.end_program() == 0 and sums(desk.folder) == kept

    desk.program = desk.launch_program(user="root")
    wait_for("root's window", lambda: desk.is_in_front("Rotika"))
    assert desk.end_program() == 0 and (system.data("root") / "voice.json").exists()
    system.run("apt-get", "purge", "-y", "rotika")
    left = system.files()
    assert left <= before and not [path for path in left if "rotika" in path.lower()]
    assert sums(desk.folder) == kept
