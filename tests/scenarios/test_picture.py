"""What the wheel looks like on a real screen: over a patterned background, so that each point tells whether the
wheel covers it, shines through or leaves it alone."""

from ctypes import c_ulong

import numpy
import pytest

from desk.desk import CENTRE, LAYER, field, field_point
from desk.recorder import pattern
from desk.waiting import holds_within, wait_for
from desk.x11 import save_png, xlib

RESTING = 0x87 / 255  # opacity
LEFT_ARROW, RIGHT_ARROW = (32, 230), (556, 230)


def layer(desk, picture):
    """That part of a picture of the screen."""
    shown = desk.wheel()
    return picture[shown.top:shown.top + LAYER[1], shown.left:shown.left + LAYER[0]]


def may_be_covered():
    """By the ring with the edge of its outline, the arrows and the number of the page."""
    y, x = numpy.indices(LAYER[::-1])
    distance = numpy.hypot(x + 0.5 - CENTRE[0], y + 0.5 - CENTRE[1])
    covered = (distance > 44) & (distance < 227.25)
    for left, top, right, bottom in ((8, 184, 56, 276), (532, 184, 580, 276), (248, 210, 340, 250)):
        covered[top:bottom, left:right] = True
    return covered


def wait_for_background(desk):
    """To the last bit, everywhere but on the wheel itself, on whose ring the virtual cursor is."""
    def is_whole():
        differs = (desk.display.picture() != pattern(*desk.screen.size)).any(2)
        if desk.wheel():
            layer(desk, differs)[may_be_covered()] = False
        return not differs[:-1].any()  # the lowest row may stay free

    wait_for("the background as it was", is_whole)


def wait_for_colours(desk, wanted):
    """Colour by point of the layer, and its opacity over the background. Two systems and a compositor round each in
    its own way."""
    def differing():
        seen, below = (layer(desk, picture).astype(float) for picture in
                       (desk.display.picture(), pattern(*desk.screen.size)))
        return {(x, y): seen[y, x] for (x, y), (colour, opacity) in wanted.items()
                if abs(seen[y, x] - numpy.array(colour) * opacity - below[y, x] * (1 - opacity)).max() > 3}

    assert holds_within(5, lambda: not differing()), differing()


def test_pages_turn_both_ways_and_their_fields_shine_through_until_hovered(desk):
    """The hovered one bears an icon, red above, from the program's folder or from elsewhere."""
    icon, elsewhere = numpy.zeros((64, 64, 4), numpy.uint8), desk.screen.folder / "znak.png"
    icon[:32] = (255, 0, 0, 255)
    desk.prepare()
    for file in (elsewhere, desk.folder / "znak.png"):
        save_png(icon, file)
    pages = [(1, (0xE0, 0x30, 0x30), "a", "znak.png"), (9, (0x10, 0x80, 0x30), "b", desk.target.path_text(elsewhere)),
             (24, (0x30, 0x40, 0xE0), "c", "")]
    wheels = [{"name": "", "actions": [field(key, color="#%02X%02X%02X" % colour, name="", icon=file)] * count}
              for count, colour, key, file in pages]
    desk.start(*wheels[0]["actions"], name="", more=wheels[1:], sendDelay=0)
    page = 0

    def check():
        count, colour, _, file = pages[page]
        (x, y), points = field_point(0, count), [field_point(index, count, 75) for index in range(count)]
        desk.aim((x, y - 40))
        wait_for_colours(desk, {point: (colour, RESTING) for point in points[1:]} | {
            points[0]: (colour, 1), (x, y - 12): ((255, 0, 0) if file else colour, 1)})
        wait_for_background(desk)

    desk.open_wheel()
    check()
    for way in (1, 1, 1, -1, -1, -1, -1):
        desk.aim(LEFT_ARROW if way < 0 else RIGHT_ARROW)
        desk.mouse.click()
        page = (page + way * desk.target.turns_per_press) % len(pages)
        check()
    desk.mouse.click()
    desk.wait_until_closed()
    desk.recorder.expect(pages[page][2])
    wait_for_background(desk)
    desk.open_wheel()
    check()  # the page is kept


@pytest.mark.only("linux")
def test_with_or_without_a_compositor_the_screen_stays_visible_around_the_wheel_and_the_wheel_on_top(desk):
    desk.start(field("a", color="#E03030"), field("b", color="#E03030"), name="", sendDelay=0)
    desk.screen.set_compositor("none")
    frame, _ = desk.display.tree(desk.recorder.window.value)
    for index, compositor in enumerate(("picom", "none", "picom")):
        if not desk.wheel():
            desk.open_wheel()
        desk.aim(index % 2)
        wait_for_colours(desk, {field_point(index % 2, 2, 75): ((0xE0, 0x30, 0x30), 1)})
        wait_for_background(desk)
        xlib.XRaiseWindow(desk.display.handle, c_ulong(frame))  # past the window manager
        wait_for("the wheel on top", lambda: next(desk.display.shown_windows()) == desk.wheel())
        desk.screen.set_compositor(compositor)
    desk.mouse.click()
    desk.recorder.expect("a")
