"""A virtual screen of its own, with window manager, compositor, session bus and home folder."""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path

from desk.waiting import GENEROUS_S, DeskError, wait_for
from desk.x11 import Display, xlib

libc = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1
FOREIGN = ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_CURRENT_DESKTOP",
           "WAYLAND_DISPLAY", "XAUTHORITY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS", "DISPLAY")


def end(process, seconds=5):
    """Asked to end, then made to; the exit status."""
    if process is None:
        return None
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            process.kill()
    return process.wait(GENEROUS_S)


class Screen:
    def __init__(self, size=(1280, 800)):
        self.folder = Path(tempfile.mkdtemp(prefix="rotika-desk."))
        self.size = size
        self.helpers = []
        self.display = None
        home, run = self.folder / "home", self.folder / "run"
        home.mkdir()
        run.mkdir(mode=0o700)
        self.environment = {k: v for k, v in os.environ.items() if k not in FOREIGN}
        self.environment |= {"HOME": str(home), "XDG_RUNTIME_DIR": str(run), "XDG_SESSION_TYPE": "x11",
                             "DBUS_SESSION_BUS_ADDRESS": f"unix:path={run}/bus"}
        try:
            self._start_server()
            self._start_desktop(run)
        except BaseException:
            self.close()
            raise

    def _start_server(self):
        reading, writing = os.pipe()
        self.launch("Xvfb", "-displayfd", str(writing), "-screen", "0", "%dx%dx24" % self.size, "-nolisten", "tcp",
                    "-noreset", pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as answer:  # its number once it listens, nothing if it fails
            number = answer.readline().strip()
        if not number:
            raise DeskError("the X server did not start")
        self.environment["DISPLAY"] = f":{number}"
        self.display = Display(f":{number}")

    def _start_desktop(self, run):
        display = self.display
        self.launch("dbus-daemon", "--session", "--nofork", f"--address=unix:path={run}/bus")
        self.launch("openbox", "--sm-disable")
        wait_for("the window manager", lambda: display.property(display.root.value, "_NET_SUPPORTING_WM_CHECK"))
        self.run("hsetroot", "-solid", "#404850")
        self.launch("picom", "--backend", "xrender", "--config", "/dev/null")
        wait_for("the compositor", lambda: xlib.XGetSelectionOwner(display.handle, display.atom("_NET_WM_CM_S0")))
        wait_for("the session bus", (run / "bus").exists)

    def launch(self, *words, **more):
        """A process that ends with us, its output in a log of its name."""

        def die_with_parent():
            libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)

        with open(self.folder / f"{Path(words[0]).name}.log", "ab") as log:
            process = subprocess.Popen([str(word) for word in words], stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=log, env=self.environment | more.pop("variables", {}),
                                       cwd=more.pop("cwd", self.folder), preexec_fn=die_with_parent, **more)
        self.helpers.append(process)
        return process

    def run(self, *words):
        """A command on this screen, to its end."""
        done = subprocess.run(words, env=self.environment, capture_output=True, text=True, timeout=GENEROUS_S)
        if done.returncode:
            raise DeskError(f"{' '.join(words)}: {done.stderr.strip()}")
        return done.stdout

    def set_mode(self, width, height):
        """The monitor gets another size, at most that of the beginning."""
        mode = f"{width}x{height}"
        if mode not in self.run("xrandr"):
            self.run("xrandr", "--newmode", mode, "40", *map(str, (width, width + 8, width + 16, width + 24)),
                     *map(str, (height, height + 1, height + 2, height + 3)))
            self.run("xrandr", "--addmode", "screen", mode)
        self.run("xrandr", "--output", "screen", "--mode", mode)

    def set_monitors(self, *places):
        """The screen in parts, each (left, top, width, height); none for the one monitor of the server."""
        for line in self.run("xrandr", "--listmonitors").splitlines()[1:]:
            name = line.split()[1].strip("+*")
            if name.startswith("part"):
                self.run("xrandr", "--delmonitor", name)
        for number, (left, top, width, height) in enumerate(places):
            # One of them may own the server's only output.
            self.run("xrandr", "--setmonitor", f"part{number}", f"{width}/170x{height}/100+{left}+{top}",
                     "none" if number else "screen")

    def monitors(self):
        """Left, top, width and height of each."""
        found = []
        for line in self.run("xrandr", "--listmonitors").splitlines()[1:]:
            size, left, top = line.split()[2].split("+")
            width, height = (int(part.split("/")[0]) for part in size.split("x"))
            found.append((int(left), int(top), width, height))
        return found

    def close(self):
        for helper in reversed(self.helpers[1:]):
            end(helper)
        if self.display:
            self.display.close()
        if self.helpers:
            end(self.helpers[0])
        # A program that is on its way out may still write into it.
        wait_for("the folder to go", lambda: shutil.rmtree(self.folder, ignore_errors=True) or
                 not self.folder.exists())
