"""All in which the builds of the program differ to somebody who uses them on an X server."""

import signal
from pathlib import Path

from desk.hands import Keyboard, Mouse
from desk.recorder import Recorder
from desk.screen import end


class LinuxTarget:
    executable = "rotika"
    runtime_folder = "linux-x86_64"  # in the package of the speech library
    input_is_exact = True  # each movement arrives once and each opening of the wheel holds the mouse
    is_accessible = True  # its programs tell assistive technology what they show
    turns_per_press = 1  # pages that one press of the left button on an arrow turns

    def __init__(self, screen):
        self.screen = screen

    def command(self, program, *words):
        return program, *words

    def path_text(self, path):
        """A file's path as programs of this kind write it."""
        return str(path)

    def library_file(self, name):
        """File name of the library that the other system calls `name`.dll."""
        return (name if name.startswith("lib") else f"lib{name}") + ".so"

    def hands(self):
        display = self.screen.display
        return Mouse(display), Keyboard(display)

    def recorder(self, **more):
        return Recorder(self.screen, **more)

    def mouse_is_held(self, program=None):
        """A device that a program has grabbed is detached from the cursor: it floats."""
        return Mouse.name in self.screen.display.floating()

    def keys_down(self):
        """For the programs, whoever presses them."""
        return self.screen.display.keys_down()

    def buttons_down(self):
        return self.screen.display.buttons_down()

    def hot_key_is_taken(self, key, modifiers):
        return self.screen.display.key_is_taken(key, modifiers)

    def ask_to_quit(self, process):
        """What the system says to a program at the end of a session."""
        process.send_signal(signal.SIGCONT)
        return end(process, 15)  # a device's library may hold it up for some seconds

    def save_theme(self, theme):
        self._write(".config/Rotika/UI.conf", f"[General]\ntheme={theme}\n")

    def opener(self):
        """A program of the target's kind that adds its only argument, or "started", to the desk's notes."""
        file = self.screen.folder / "opener"
        file.write_text(f'#!/bin/sh\necho "${{1:-started}}" >>"{self.screen.folder}/notes.txt"\n')
        file.chmod(0o755)
        return file

    def set_handler(self, handler):
        """From now on it opens `.txt` files and addresses of the scheme `handled:`."""
        self._write(".local/share/applications/handler.desktop",
                    f'[Desktop Entry]\nType=Application\nName=Handler\nExec="{handler}" %u\n'
                    "MimeType=x-scheme-handler/handled;text/plain;\n")
        self._write(".config/mimeapps.list", "[Default Applications]\nx-scheme-handler/handled=handler.desktop\n"
                                             "text/plain=handler.desktop\n")

    def finish(self):
        """Ends what has been started beside the program."""

    def _write(self, name, text):
        file = Path(self.screen.environment["HOME"]) / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)


def make_target(name, screen):
    if name == "linux":
        return LinuxTarget(screen)
    from desk.wine import WineTarget
    return WineTarget(screen)
