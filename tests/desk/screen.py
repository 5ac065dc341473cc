"""A private virtual screen with window manager, compositor, session bus and home folder.
`python3 -m desk.screen command...` runs a command on one and passes its exit status on."""

import argparse
import itertools
import os
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

from desk.waiting import TIMEOUT_S, DeskError, wait_for
from desk.x11 import Display, xlib

DIE_WITH_PARENT = "setpriv", "--pdeathsig", "KILL", "--"  # unlike preexec_fn, runs no Python in a forked child
HOST_VARIABLES = ("XDG_", "WAYLAND_", "XAUTHORITY", "QT_QPA_PLATFORM", "DISPLAY")  # prefixes; not passed on
COMPOSITORS = {"picom": ("picom", "--backend", "xrender", "--config", "/dev/null"), "none": ()}


def end(process, seconds=5):
    """Terminates the process, kills it after the time, and returns its exit status."""
    if process is None:
        return None
    process.terminate()
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        process.kill()
        return process.wait(TIMEOUT_S)


class Screen:
    def __init__(self, size=(1280, 800), compositor="picom"):
        self.folder, self.size = Path(tempfile.mkdtemp(prefix="rotika-desk.")), size
        self.helpers, self.parts, self.numbers, self.compositor = [], [], itertools.count(), None
        home, run = self.folder / "home", self.folder / "run"
        home.mkdir()
        run.mkdir(mode=0o700)
        bus = f"unix:path={run}/bus"
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith(HOST_VARIABLES)}
        self.environment |= {"HOME": str(home), "XDG_RUNTIME_DIR": str(run), "XDG_SESSION_TYPE": "x11",
                             "DBUS_SESSION_BUS_ADDRESS": bus,
                             "DBUS_SYSTEM_BUS_ADDRESS": bus}  # not the host's, whose session lock would count
        reading, writing = os.pipe()
        self.server = self.launch("Xvfb", "-displayfd", str(writing), "-screen", "0", "%dx%dx24" % size,
                                  "-nolisten", "tcp", "-noreset", pass_fds=(writing,))
        os.close(writing)
        self.launch("dbus-daemon", "--session", "--nofork", f"--address={bus}")
        with os.fdopen(reading) as answer:  # the display number once it listens, nothing if it fails
            self.environment["DISPLAY"] = f":{answer.readline().strip()}"
        self.display = Display(self.environment["DISPLAY"])
        self.launch("openbox", "--sm-disable")
        self.launch("hsetroot", "-solid", "#404850")  # without a root background the compositor clears nothing
        self.set_compositor(compositor)
        root = self.display.root.value
        wait_for("the window manager", lambda: self.display.property(root, "_NET_SUPPORTING_WM_CHECK"))
        # A window that it finds when it starts does not get the focus, so it must have reached its main loop.
        wait_for("its main loop", self.display.window_manager_answers)
        wait_for("the session bus", (run / "bus").exists)

    def set_compositor(self, name):
        end(self.compositor)
        self.compositor = self.launch(*COMPOSITORS[name]) if COMPOSITORS[name] else None
        wait_for("the compositor to start or stop", lambda: bool(self.compositor) == bool(xlib.XGetSelectionOwner(
            self.display.handle, self.display.atom("_NET_WM_CM_S0"))))

    def launch(self, *words, **more):
        """Starts a process that dies with this one; its output goes to a log named after it."""
        with open(self.folder / f"{Path(words[0]).name}.log", "ab") as log:
            process = subprocess.Popen([*DIE_WITH_PARENT, *map(str, words)], stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=log, env=self.environment | more.pop("variables", {}),
                                       cwd=more.pop("cwd", self.folder), **more)
        self.helpers.append(process)
        return process

    def bind_key(self, key, command="true"):
        """As a shortcut of the desktop, which has one of its own, for the next window, without a list of windows."""
        file = self.folder / "home/.config/openbox/rc.xml"
        file.parent.mkdir(parents=True, exist_ok=True)
        action = f'<action name="Execute"><command>{command}</command></action>'
        file.write_text(f"""<openbox_config xmlns="http://openbox.org/3.4/rc"><keyboard>
            <keybind key="{key}"><action name="Execute"><command>{command}</command></action></keybind>
            <keybind key="A-Tab"><action name="NextWindow"><interactive>no</interactive>
            <finalactions><action name="Focus"/><action name="Raise"/></finalactions></action></keybind>
            </keyboard></openbox_config>""")
        self.run("openbox", "--reconfigure")
        wait_for(f"{key} to be a shortcut", lambda: self.display.key_is_taken(key, 0))

    def run(self, *words):
        done = subprocess.run(words, env=self.environment, capture_output=True, text=True, timeout=TIMEOUT_S)
        if done.returncode:
            raise DeskError(f"{' '.join(words)}: {done.stderr.strip()}")
        return done.stdout

    def set_mode(self, width, height):
        """Resizes the monitor, at most to its initial size."""
        mode = f"{width}x{height}"
        if mode not in self.run("xrandr"):
            self.run("xrandr", "--newmode", mode, "40", *(str(side + more) for side, step in ((width, 8), (height, 1))
                                                          for more in (0, step, 2 * step, 3 * step)))
            self.run("xrandr", "--addmode", "screen", mode)
        self.run("xrandr", "--output", "screen", "--mode", mode)

    def set_monitors(self, *places):
        """Splits the screen into monitors, each (left, top, width, height); without any, back to the server's one
        monitor. Programs see it as one change."""
        words = [word for name in self.parts for word in ("--delmonitor", name)]
        self.parts = [f"part{next(self.numbers)}" for _ in places]
        for name, (left, top, width, height) in zip(self.parts, places):
            output = "screen" if name == self.parts[0] else "none"  # one of them may own the server's only output
            words += ["--setmonitor", name, f"{width}/170x{height}/100+{left}+{top}", output]
        if words:
            self.run("xrandr", *words)

    def show_tray(self):
        """A panel in the corner at the right below. Its newest icon is at 1266, 780, and 1220, 780 stays free."""
        self.launch(*"trayer --edge bottom --align right --widthtype pixel --width 200 --heighttype pixel --height 40 "
                    "--SetDockType true --expand false".split())
        tray = self.display.atom("_NET_SYSTEM_TRAY_S0")
        wait_for("the tray", lambda: xlib.XGetSelectionOwner(self.display.handle, tray))

    def wait_for_tray_icon(self):
        wait_for("the icon in the tray", lambda: self.display.pixel(1266, 780) != self.display.pixel(1220, 780))

    def close(self):
        self.display.close()
        for helper in reversed(self.helpers):  # the server last
            end(helper)
        # A program that is exiting may still write into it.
        wait_for("the folder to be removed", lambda: shutil.rmtree(self.folder, ignore_errors=True) or
                 not self.folder.exists())


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--size", type=lambda text: tuple(map(int, text.split("x"))), default=(1280, 800))
    parser.add_argument("--compositor", choices=COMPOSITORS, default="picom")
    parser.add_argument("--sound", action="store_true", help="with a sound server whose microphone records a tone")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    options = parser.parse_args()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, lambda number, _: sys.exit(128 + number))
    screen, process = Screen(options.size, options.compositor), None
    try:
        if options.sound:
            from desk.sound import SoundServer
            SoundServer(screen, tone=True)
        process = subprocess.Popen([*DIE_WITH_PARENT, *options.command], env=screen.environment)
        status = process.wait()
        sys.exit(status if status >= 0 else 128 - status)
    finally:
        end(process)
        screen.close()


if __name__ == "__main__":
    main()
