"""demo.py program-folder picture-folder: plays a short scripted demo on a private screen with a real mouse, and saves a
picture of each step."""

import shutil
import sys
import time
from itertools import count
from pathlib import Path

import numpy

HERE = Path(__file__).parent
sys.path.insert(0, str(HERE.parent / "tests"))

from desk.desk import CENTRE, Desk  # noqa: E402
from desk.input_devices import place_cursor  # noqa: E402
from desk.waiting import wait_for  # noqa: E402
from desk.x11 import save_png  # noqa: E402

ARROW = (CENTRE[0] + 262, CENTRE[1])
FIELD = (ARROW[0] - 150, ARROW[1] + 50)


class Demo:
    def __init__(self, desk, pictures):
        self.desk, self.pictures = desk, pictures
        self.numbers = count(1)

    def is_at_rest(self):
        """Painting has ended: the screen stays the same for three polls."""
        first = self.desk.display.picture()
        for _ in range(3):
            time.sleep(0.1)
            if not numpy.array_equal(self.desk.display.picture(), first):
                return False
        return True

    def picture(self, name):
        wait_for("a screen at rest", self.is_at_rest)
        save_png(self.desk.display.picture(), self.pictures / f"{next(self.numbers):02}-{name}.png")

    def move(self, place):
        desk = self.desk
        desk.mouse.move(place[0] - desk.virtual[0], place[1] - desk.virtual[1])
        desk.virtual = place
        wait_for("the virtual cursor", lambda: desk.wheel_cursor_is_at(*place))

    def turn_page(self):
        before = self.desk.display.picture(self.desk.wheel().id)
        self.desk.mouse.click()
        wait_for("another page", lambda: not numpy.array_equal(
            self.desk.display.picture(self.desk.wheel().id), before))

    def first_words(self):
        """The part of the other program's text that is left of the wheel."""
        return self.desk.display.picture()[215:275, 195:355]

    def start_program(self):
        self.desk.prepare()
        (self.desk.folder / "config.json").unlink()  # as at the first start
        shutil.copy(HERE / "demo_wheels.json", self.desk.folder / "default.json")
        self.desk.start_program()

    def start_other_program(self):
        """Starts a program with a text view whose caret does not blink."""
        desk, run = self.desk, self.desk.screen.run
        settings = Path(desk.screen.environment["HOME"], ".config/gtk-3.0/settings.ini")
        settings.parent.mkdir(parents=True)
        settings.write_text("[Settings]\ngtk-cursor-blink=0\ngtk-enable-animations=0\n")
        desk.screen.launch("gtk3-demo-application")
        wait_for("the other program", lambda: desk.is_in_front("Application Class"))
        window = str(desk.display.active_window())
        run("xdotool", "windowsize", "--sync", window, "900", "560", "windowmove", "--sync", window, "190", "120")
        place_cursor(desk.display, 640, 400)
        desk.mouse.click()
        before = self.first_words()
        run("xdotool", "type", "Notatki: ")
        wait_for("its text", lambda: not numpy.array_equal(self.first_words(), before))

    def play(self):
        desk = self.desk
        desk.screen.run("hsetroot", "-add", "#2c5d7c", "-add", "#16242f", "-gradient", "35")
        self.start_program()
        self.picture("main-window")
        self.start_other_program()
        self.picture("another-program")
        desk.open_wheel()
        self.picture("wheel-open")
        self.move(ARROW)
        self.picture("arrow-under-cursor")
        self.turn_page()
        self.picture("next-page")
        self.turn_page()
        self.move(FIELD)
        self.picture("field-under-cursor")
        before = self.first_words()
        desk.mouse.click()
        desk.wait_until_closed()
        wait_for("the field's keys in the other program", lambda: not numpy.array_equal(self.first_words(), before))
        self.picture("field-chosen")


def main():
    program, pictures = map(Path, sys.argv[1:])
    shutil.rmtree(pictures, ignore_errors=True)
    pictures.mkdir(parents=True)
    desk = Desk(program)
    try:
        Demo(desk, pictures).play()
    finally:
        desk.close()


main()
