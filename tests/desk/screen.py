"""A virtual screen of its own, with window manager, compositor, session bus and home folder.
`python3 -m desk.screen command...` runs a command on one and passes its exit status on."""

import argparse
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

from desk.waiting import GENEROUS_S, DeskError, wait_for
from desk.x11 import Display

libc = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1
FOREIGN = ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_CURRENT_DESKTOP",
           "WAYLAND_DISPLAY", "XAUTHORITY", "QT_QPA_PLATFORM", "DISPLAY")
COMPOSITORS = {"picom": ("picom", "--backend", "xrender", "--config", "/dev/null"), "xcompmgr": ("xcompmgr",),
               "none": None}


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


def die_with_parent():
    libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Screen:
    def __init__(self, size=(1280, 800), compositor="picom"):
        self.folder = Path(tempfile.mkdtemp(prefix="rotika-desk."))
        self.size = size
        self.helpers = []
        self.display = self.compositor = None
        home, run = self.folder / "home", self.folder / "run"
        home.mkdir()
        run.mkdir(mode=0o700)
        bus = f"unix:path={run}/bus"
        self.environment = {k: v for k, v in os.environ.items() if k not in FOREIGN}
        self.environment |= {"HOME": str(home), "XDG_RUNTIME_DIR": str(run), "XDG_SESSION_TYPE": "x11",
                             "DBUS_SESSION_BUS_ADDRESS": bus,
                             "DBUS_SYSTEM_BUS_ADDRESS": bus}  # or the lock of the machine's own session would count
        try:
            self._start_server()
            self.launch("dbus-daemon", "--session", "--nofork", f"--address={bus}")
            self.launch("openbox", "--sm-disable")
            self.set_compositor(compositor)
            wait_for("the window manager", lambda: self.display.property(self.display.root.value,
                                                                         "_NET_SUPPORTING_WM_CHECK"))
            wait_for("the session bus", (run / "bus").exists)
        except BaseException:
            self.close()
            raise

    def _start_server(self):
        reading, writing = os.pipe()
        self.server = self.launch("Xvfb", "-displayfd", str(writing), "-screen", "0", "%dx%dx24" % self.size,
                                  "-nolisten", "tcp", "-noreset", pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as answer:  # its number once it listens, nothing if it fails
            number = answer.readline().strip()
        if not number:
            raise DeskError("the X server did not start")
        self.environment["DISPLAY"] = f":{number}"
        self.display = Display(f":{number}")

    def set_compositor(self, name):
        """picom, xcompmgr or none, instead of what there is."""
        end(self.compositor)
        self.compositor = self.launch(*COMPOSITORS[name]) if COMPOSITORS[name] else None
        wait_for("the compositor to come or go", lambda: self.display.is_composited() == bool(self.compositor))

    def take_away(self):
        """As when the X server dies."""
        self.display.close()
        self.server.kill()
        self.server.wait()

    def launch(self, *words, **more):
        """A process that ends with us, its output in a log of its name."""
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
        clients = self.helpers[1:]
        for client in clients:
            if client.poll() is None:
                client.terminate()
        for client in clients:
            end(client)
        if self.display:
            self.display.close()
        if self.helpers:
            end(self.helpers[0])
        # A program that is on its way out may still write into it.
        wait_for("the folder to go", lambda: shutil.rmtree(self.folder, ignore_errors=True) or
                 not self.folder.exists())


def main():
    def size(text):
        width, height = map(int, text.split("x"))
        return width, height

    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--size", type=size, default=(1280, 800))
    parser.add_argument("--compositor", choices=COMPOSITORS, default="picom")
    parser.add_argument("--sound", action="store_true", help="with a sound server whose microphone hears a tone")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    options = parser.parse_args()
    if "--gtest_list_tests" in options.command:  # needs no screen
        os.execvp(options.command[0], options.command)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, lambda number, _: sys.exit(128 + number))
    screen, process = Screen(options.size, options.compositor), None
    try:
        if options.sound:
            from desk.sound import SoundServer
            SoundServer(screen, tone=True)
        process = subprocess.Popen(options.command, env=screen.environment, preexec_fn=die_with_parent)
        status = process.wait()
        sys.exit(status if status >= 0 else 128 - status)
    finally:
        end(process)
        screen.close()


if __name__ == "__main__":
    main()
