"""Everything in which tests must treat the Linux and the Windows build differently on an X server."""

import signal
from pathlib import Path

from desk.input_devices import Mouse
from desk.recorder import Recorder
from desk.screen import end
from desk.wine import WineTarget


class LinuxTarget:
    executable = "rotika"
    runtime_folder = "linux-x86_64"  # in the package of the speech library
    input_is_exact = True  # each movement arrives once and each opening of the wheel holds the mouse
    is_accessible = True  # its programs publish their widgets over AT-SPI
    gives_focus = True  # each program decides which of its own windows comes to the front
    has_tray = False  # unless a scenario starts one
    turns_per_press = 1  # pages that one press of the left button on an arrow turns

    def __init__(self, screen):
        self.screen = screen

    command = staticmethod(lambda *words: words)  # command line that starts a program of this kind
    path_text = staticmethod(str)  # a file's path in these programs' notation

    def library_file(self, name):
        """File name of the library that is `name`.dll on Windows."""
        return (name if name.startswith("lib") else f"lib{name}") + ".so"

    def recorder(self):
        return Recorder(self.screen)

    def mouse_is_held(self, program=None):
        """A grabbed slave device is detached from the cursor: it is floating."""
        return Mouse.name in self.screen.display.floating()

    def keys_down(self):
        """As programs see them, from real and injected presses."""
        return self.screen.display.keys_down()

    def buttons_down(self):
        return self.screen.display.buttons_down()

    def hot_key_is_taken(self, key, modifiers):
        return self.screen.display.key_is_taken(key, modifiers)

    def ask_to_quit(self, process):
        """As the system does at the end of a session; returns the exit status."""
        process.send_signal(signal.SIGCONT)
        return end(process, 15)  # a device's library may delay it by some seconds

    def opener(self):
        """A program of the target's kind that adds its only argument, or "started", to the desk's notes."""
        file = self.screen.folder / "opener"
        file.write_text(f'#!/bin/sh\necho "${{1:-started}}" >>"{self.screen.folder}/notes.txt"\n')
        file.chmod(0o755)
        return file

    def set_handler(self, handler):
        """Registers it for `.txt` files and addresses of the scheme `handled:`."""
        for name, text in (
                (".local/share/applications/handler.desktop",
                 f'[Desktop Entry]\nType=Application\nName=Handler\nExec="{handler}" %u\n'
                 "MimeType=x-scheme-handler/handled;text/plain;\n"),
                (".config/mimeapps.list", "[Default Applications]\nx-scheme-handler/handled=handler.desktop\n"
                                          "text/plain=handler.desktop\n")):
            file = Path(self.screen.environment["HOME"]) / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)

    def finish(self):
        """Ends what the target itself has started: nothing here."""


def make_target(name, screen):
    return LinuxTarget(screen) if name == "linux" else WineTarget(screen)
