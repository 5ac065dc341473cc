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
    constexpr double innerEdge = 46 - 1;
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

    /// Everywhere but on the wheel itself, to the last bit. The virtual cursor is on the ring.
    void expectBackgroundUntouched(bool hasArrows) {
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
        EXPECT_EQ(different, 0) << "first at " << first;
    }

    void expectColor(LayerPoint point, const PixelColor& expected, const std::string& what) {
        const PixelColor seen = stage().wheel.pixel(point);
        EXPECT_LE(differenceOf(seen, expected), roundingTolerance)
            << what << " is " << textOf(seen) << ", not " << textOf(expected);
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

} // namespace

} // namespace e2e
