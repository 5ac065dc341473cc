// What the wheel looks like on a real screen: over a patterned background, so that each pixel tells whether
// the wheel covers it, shines through or leaves it alone.

#include "recorder/pattern.h"
#include "scenario.h"

#include <cairo.h>

#include <cmath>

namespace e2e {

namespace {

constexpr PixelColor segmentColor{0x34, 0x98, 0xDB};
constexpr double restingOpacity = 0x87 / 255.0;
/// Two platforms and a compositor round each in its own way.
constexpr int roundingTolerance = 3;
constexpr std::chrono::milliseconds settlingLimit{5000};

PixelColor backgroundAt(const ScreenPoint& place) {
    const PatternColor color = patternColor(place.x, place.y);
    return {color.red, color.green, color.blue};
}

PixelColor mixed(const PixelColor& above, double opacity, const PixelColor& below) {
    const auto channel = [opacity](int a, int b) {
        return static_cast<int>(std::lround(a * opacity + b * (1 - opacity)));
    };
    return {channel(above.red, below.red), channel(above.green, below.green),
            channel(above.blue, below.blue)};
}

bool isInBox(LayerPoint point, int left, int top, int right, int bottom) {
    return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
}

/// Whether the wheel may cover this point: its ring with the edge of the outline, and the arrows.
bool mayBeCovered(LayerPoint point, bool hasArrows) {
    const double distance = std::hypot(point.x + 0.5 - layerCentre.x, point.y + 0.5 - layerCentre.y);
    constexpr double innerEdge = 46 - 2;
    constexpr double outerEdge = 224 + 1.25 + 1;
    if (distance > innerEdge && distance < outerEdge)
        return true;
    return hasArrows && (isInBox(point, 8, 184, 56, 276) || isInBox(point, 532, 184, 580, 276) ||
                         isInBox(point, 248, 210, 340, 250));
}

class Picture : public Scenario {
protected:
    Stage& show(const std::string& wheels, const ScreenSetup& setup = {}) {
        Stage& s = stage(setup);
        s.writeFile("default.json", wheels);
        s.startAll();
        s.openWheel();
        return s;
    }

    /// Everywhere but on the wheel itself, to the last bit. The virtual cursor is on the ring. A compositor
    /// may still be at its first picture, so this waits for a whole one.
    void expectBackgroundUntouched(bool hasArrows) {
        std::string difference;
        holdsWithin(settlingLimit, [&] { return (difference = differenceInBackground(hasArrows)).empty(); });
        EXPECT_EQ(difference, "");
    }

    std::string differenceInBackground(bool hasArrows) {
        const XConnection& eyes = stage().screen.eyes();
        const ScreenPart screen = eyes.look(0, 0, eyes.width(), eyes.height());
        const ScreenPoint origin = stage().wheel.onScreen({0, 0});
        int different = 0;
        std::string first;
        for (int y = 0; y < screen.height; ++y) {
            for (int x = 0; x < screen.width; ++x) {
                const LayerPoint point{x - origin.x, y - origin.y};
                if (mayBeCovered(point, hasArrows) || screen.at(x, y) == backgroundAt({x, y}))
                    continue;
                if (different++ == 0)
                    first = std::to_string(point.x) + ", " + std::to_string(point.y) + " is " +
                            textOf(screen.at(x, y));
            }
        }
        return different == 0 ? "" : std::to_string(different) + " points, the first at " + first;
    }

    void expectColor(LayerPoint point, const PixelColor& expected, const std::string& what) {
        PixelColor seen;
        const bool isRight = holdsWithin(settlingLimit, [&] {
            seen = stage().wheel.pixel(point);
            return differenceOf(seen, expected) <= roundingTolerance;
        });
        EXPECT_TRUE(isRight) << what << " is " << textOf(seen) << ", not " << textOf(expected);
    }

    void expectRestingField(LayerPoint point, const PixelColor& color, const std::string& what) {
        expectColor(point, mixed(color, restingOpacity, backgroundAt(stage().wheel.onScreen(point))), what);
    }
};

TEST_F(Picture, FieldsShineThroughUntilHoveredAndTheRestIsUntouched) {
    for (const int count : {1, 8, 9, 24}) {
        SCOPED_TRACE(std::to_string(count) + " fields");
        // No name: nothing stands in the hole.
        Stage& s = stage();
        s.writeFile(
            "default.json",
            oneWheelText("", clickActions(std::vector<std::string>(static_cast<std::size_t>(count), "a"))));
        s.startAll();
        s.openWheel();
        s.aim(fieldPoint(0, count, 150));
        waitFor("the field under the cursor to be lit",
                [&] { return s.wheel.pixel(fieldPoint(0, count, 75)) == segmentColor; });
        for (int i = 1; i < count; ++i)
            expectRestingField(fieldPoint(i, count, 75), segmentColor, "field " + std::to_string(i));
        expectBackgroundUntouched(false);
        keepPicture("wheel-of-" + std::to_string(count));
        s.program.end();
        s.recorder.end();
    }
}

/// A plain red square with a transparent lower half.
void writeIcon(const std::filesystem::path& file) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 64, 64);
    cairo_t* context = cairo_create(surface);
    cairo_set_source_rgb(context, 1, 0, 0);
    cairo_rectangle(context, 0, 0, 64, 32);
    cairo_fill(context);
    cairo_destroy(context);
    cairo_surface_write_to_png(surface, file.c_str());
    cairo_surface_destroy(surface);
}

TEST_F(Picture, IconsColoursLongNamesAndTwoWheels) {
    Stage& s = stage();
    writeIcon(s.folder() / "znak.png");
    const std::string absoluteIcon = jsonText(s.target->pathText(s.folder() / "znak.png"));
    const std::string first =
        oneWheelText("Zażółć gęślą",
                     {R"({ "icon": "znak.png", "color": "#102030", "key": "a" })",
                      "{ \"name\": \"Głośność\", \"icon\": " + absoluteIcon + ", \"key\": \"b\" }",
                      R"({ "name": "Bez obrazka", "icon": "brak.png", "key": "c" })", R"({ "key": "d" })",
                      R"({ "name": "Bardzo długa nazwa źdźbła, która nie mieści się w polu", "key": "e" })",
                      R"({ "name": "Zażółć gęślą jaźń", "color": "#FFFFFF", "key": "f" })"});
    const std::string second = "{ \"name\": \"Drugie\", \"actions\": [ { \"name\": \"x\" } ] } ] }\n";
    const std::string both = first.substr(0, first.rfind("] }")) + ", " + second;
    show(both);
    s.aim(fieldPoint(3, 6, 190));
    keepPicture("wheel-with-icons");

    // A resting icon is as translucent as its field; its lower half leaves the field alone.
    const PixelColor red{255, 0, 0};
    const LayerPoint label = fieldPoint(0, 6);
    const auto underIcon = [&](LayerPoint point, const PixelColor& field) {
        return mixed(field, restingOpacity, backgroundAt(s.wheel.onScreen(point)));
    };
    const LayerPoint upper{label.x, label.y - 12};
    const LayerPoint lower{label.x, label.y + 12};
    expectColor(upper, mixed(red, restingOpacity, underIcon(upper, {0x10, 0x20, 0x30})),
                "the icon's upper half");
    expectColor(lower, underIcon(lower, {0x10, 0x20, 0x30}), "the icon's lower half");
    // With a name beside it the icon stands 11 higher.
    const LayerPoint named = fieldPoint(1, 6);
    const LayerPoint namedUpper{named.x, named.y - 23};
    expectColor(namedUpper, mixed(red, restingOpacity, underIcon(namedUpper, segmentColor)),
                "the icon over a name");
    expectBackgroundUntouched(true);

    s.aim({label.x + 25, label.y});
    waitFor("the icon to be lit", [&] { return s.wheel.pixel(upper) == red; });
    expectColor(lower, {0x10, 0x20, 0x30}, "the lit field under the icon");
    keepPicture("wheel-with-icons-hovered");
}

TEST_F(Picture, TheWheelLeavesNothingBehind) {
    Stage& s = show(oneWheelText("", clickActions({"a", "b", "c"})));
    s.aim(fieldPoint(1, 3));
    s.toggle();
    s.waitUntilWheelIsClosed();
    const XConnection& eyes = s.screen.eyes();
    waitFor("the background to be whole again", [&] {
        const ScreenPart screen = eyes.look(0, 0, eyes.width(), eyes.height());
        for (int y = 0; y < screen.height; ++y) {
            for (int x = 0; x < screen.width; ++x) {
                if (!(screen.at(x, y) == backgroundAt({x, y})))
                    return false;
            }
        }
        return true;
    });
}

} // namespace

} // namespace e2e
