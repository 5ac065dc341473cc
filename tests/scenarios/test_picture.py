"""What the wheel looks like on a real screen: over a patterned background, so that each point tells whether the
wheel covers it, shines through or leaves it alone."""

from ctypes import byref, c_ulong

import numpy
import pytest

from desk.desk import CENTRE, LAYER, field, field_point
from desk.recorder import pattern
from desk.waiting import holds_within, wait_for
from desk.x11 import save_png, xlib

PLAIN = (0x34, 0x98, 0xDB)
RESTING = 0x87 / 255  # opacity
LEFT_ARROW, RIGHT_ARROW, LEFT_ARROWS_CORNER = (32, 230), (556, 230), (16, 192)


def layer(desk, picture):
    """That part of a picture of the screen."""
    shown = desk.wheel()
    return picture[shown.top:shown.top + LAYER[1], shown.left:shown.left + LAYER[0]]


def may_be_covered(has_arrows):
    """By the ring with the edge of its outline, the arrows and the number of the page."""
    y, x = numpy.indices(LAYER[::-1])
    distance = numpy.hypot(x + 0.5 - CENTRE[0], y + 0.5 - CENTRE[1])
    covered = (distance > 44) & (distance < 227.25)
    for left, top, right, bottom in ((8, 184, 56, 276), (532, 184, 580, 276), (248, 210, 340, 250)) * has_arrows:
        covered[top:bottom, left:right] = True
    return covered


def wait_for_background(desk, has_arrows=False):
    """To the last bit, everywhere but on the wheel itself, on whose ring the virtual cursor is."""
    def is_whole():
        differs = (desk.display.picture() != pattern(*desk.screen.size)).any(2)
        if desk.wheel():
            layer(desk, differs)[may_be_covered(has_arrows)] = False
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


def lit(index, count, colour=PLAIN):
    return {field_point(index, count, 75): (colour, 1)}


def test_pages_turn_both_ways_and_their_fields_shine_through_until_hovered(desk):
    pages = list(zip((1, 9, 24), ((0xE0, 0x30, 0x30), (0x30, 0xC0, 0x30), (0x30, 0x40, 0xE0)), "abc"))
    wheels = [{"name": "", "actions": [field(key, color="#%02X%02X%02X" % colour)] * count}
              for count, colour, key in pages]
    desk.start(*wheels[0]["actions"], name="", more=wheels[1:], sendDelay=0)
    page = 0

    def check():
        count, colour, _ = pages[page]
        desk.aim(field_point(0, count))
        wait_for_colours(desk, lit(0, count, colour) | {
            field_point(index, count, 75): (colour, RESTING) for index in range(1, count)})

    desk.open_wheel()
    check()
    wait_for_background(desk, has_arrows=True)
    for way in (1, 1, 1, -1, -1, -1, -1):
        desk.aim(LEFT_ARROW if way < 0 else RIGHT_ARROW)
        if way < 0:
            wait_for_colours(desk, {LEFT_ARROWS_CORNER: (PLAIN, 1)})
        desk.mouse.click()
        page = (page + way * desk.target.turns_per_press) % len(pages)
        check()
    wait_for_background(desk, has_arrows=True)
    desk.mouse.click()
    desk.wait_until_closed()
    desk.recorder.expect(pages[page][2])
    wait_for_background(desk)
    desk.open_wheel()
    check()  # the page is kept


def test_icons_lie_over_their_fields(desk):
    """Red above and clear below, from the program's folder and from elsewhere; with a name they stand 11 higher."""
    icon = numpy.zeros((64, 64, 4), numpy.uint8)
    icon[:32] = (255, 0, 0, 255)
    elsewhere = desk.screen.folder / "znak.png"
    desk.prepare()
    for file in (elsewhere, desk.folder / "znak.png"):
        save_png(icon, file)
    dark, red, names = (0x10, 0x20, 0x30), (255, 0, 0), ("Bardzo długa nazwa źdźbła, która się nie mieści", "Zażółć")
    desk.start(field("a", name="", icon="znak.png", color="#102030"),
               field("b", name="Głośność", icon=desk.target.path_text(elsewhere), color="#102030"),
               field("c", icon="brak.png"), *(field("d", name=text, color="#FFFFFF") for text in names), name="")
    desk.open_wheel()
    for index, higher in ((0, 0), (1, 11)):
        x, y = field_point(index, 5)
        desk.aim((x + 25, y))
        wait_for_colours(desk, {(x, y - 12 - higher): (red, 1), field_point(1 - index, 5, 75): (dark, RESTING)} |
                         ({} if higher else {(x, y + 12): (dark, 1)}))
        wait_for_background(desk)


@pytest.mark.only("linux")
def test_with_or_without_a_compositor_the_rest_of_the_screen_stays_visible(desk):
    desk.start(field("a"), field("b"), name="", sendDelay=0)
    desk.screen.set_compositor("none")
    for index, compositor in enumerate(("picom", "none", "picom")):
        if not desk.wheel():
            desk.open_wheel()
        desk.aim(index % 2)
        wait_for_colours(desk, lit(index % 2, 2))
        wait_for_background(desk)
        desk.screen.set_compositor(compositor)
    desk.mouse.click()
    desk.recorder.expect("a")


@pytest.mark.only("linux")
def test_the_wheel_stays_on_top_of_what_is_raised_later(desk):
    desk.start(field("a"))
    desk.open_wheel()
    over = c_ulong(xlib.XCreateSimpleWindow(desk.display.handle, desk.display.root, 300, 200, 600, 400, 0, 0, 0))
    attributes = (c_ulong * 14)(*[0] * 11, 1)  # the twelfth: past the window manager
    xlib.XChangeWindowAttributes(desk.display.handle, over, c_ulong(1 << 9), byref(attributes))
    xlib.XMapRaised(desk.display.handle, over)
    wait_for("the wheel above the other window", lambda: over.value in (
        shown := [shown.id for shown in desk.display.shown_windows()]) and
        shown.index(desk.wheel().id) < shown.index(over.value))
