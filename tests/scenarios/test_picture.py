"""What the wheel looks like on a real screen, over a background of two colours."""

from ctypes import c_ulong

import numpy
import pytest

from desk.desk import field, field_point
from desk.waiting import holds_within, wait_for
from desk.x11 import save_png, xlib

RESTING = 0x87 / 255  # opacity of a field that is not hovered
LEFT_ARROW, RIGHT_ARROW = (32, 230), (556, 230)
# Fully transparent points: corners of the layer, and the ring's hole.
TRANSPARENT = [(5, 5), (582, 5), (5, 454), (582, 454), (294, 198), (294, 262)]


def background(desk):
    """A picture of the screen, taken once the recorder is painted on it."""
    def is_painted():
        own = desk.display.picture(desk.recorder.window.value)
        return own[[0, -1]].any((1, 2)).all() and (own == desk.display.picture()[:len(own)]).all()

    wait_for("the recorder to be painted", is_painted)
    return desk.display.picture()


def wait_for_colours(desk, below, wanted):
    """`wanted` maps points of the layer to colour and opacity over `below`, the picture of the background; transparent
    points show the background itself. The tolerance is for the systems' and the compositor's different rounding."""
    shown, wanted = desk.wheel(), {point: (0, 0) for point in TRANSPARENT} | wanted

    def differing():
        seen, under = (picture[shown.top:, shown.left:].astype(float) for picture in (desk.display.picture(), below))
        return {(x, y): seen[y, x] for (x, y), (colour, opacity) in wanted.items()
                if abs(seen[y, x] - numpy.array(colour) * opacity - under[y, x] * (1 - opacity)).max() > 3}

    assert holds_within(5, lambda: not differing()), differing()


def test_pages_turn_both_ways_and_only_the_hovered_field_is_opaque(desk):
    """The hovered field shows an icon, red in its upper half, from the program's folder or from another one."""
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
    below, page = background(desk), 0

    def check():
        count, colour, _, file = pages[page]
        (x, y), points = field_point(0, count), [field_point(index, count, 75) for index in range(count)]
        desk.aim((x, y - 40))
        wait_for_colours(desk, below, {point: (colour, RESTING) for point in points[1:]} | {
            points[0]: (colour, 1), (x, y - 12): ((255, 0, 0) if file else colour, 1)})

    desk.open_wheel()
    check()
    hub = desk.display.picture(desk.wheel().id)[210:232, 248:340]
    assert hub.min(2).max() > 200, "the number of the page is missing"
    for direction in (1, 1, 1, -1, -1, -1, -1):
        desk.aim(LEFT_ARROW if direction < 0 else RIGHT_ARROW)
        desk.mouse.click()
        page = (page + direction * desk.target.turns_per_press) % len(pages)
        check()
    desk.mouse.click()
    desk.wait_until_closed()
    desk.recorder.expect(pages[page][2])
    wait_for("the background as it was", lambda: (desk.display.picture() == below).all())
    desk.open_wheel()
    check()  # the page is kept


@pytest.mark.only("linux")
def test_the_wheel_is_on_top_and_hides_nothing_around_it_with_or_without_a_compositor(desk):
    desk.start(field("a", color="#E03030"), field("b", color="#E03030"), name="", sendDelay=0)
    desk.screen.set_compositor("none")
    over = c_ulong(xlib.XCreateSimpleWindow(desk.display.handle, desk.display.root, 300, 200, 600, 400, 0, 0, 0))
    override_redirect = (c_ulong * 14)(*[0] * 11, 1)
    xlib.XChangeWindowAttributes(desk.display.handle, over, c_ulong(1 << 9), override_redirect)
    below = background(desk)
    for index, compositor in enumerate(("picom", "none", "picom")):
        if not desk.wheel():
            desk.open_wheel()
        desk.aim(index % 2)
        wait_for_colours(desk, below, {field_point(index % 2, 2, 75): ((0xE0, 0x30, 0x30), 1)})
        xlib.XMapRaised(desk.display.handle, over)
        wait_for("the wheel on top", lambda: next(desk.display.shown_windows()) == desk.wheel())
        xlib.XUnmapWindow(desk.display.handle, over)
        desk.screen.set_compositor(compositor)
    desk.mouse.click()
    desk.recorder.expect("a")
