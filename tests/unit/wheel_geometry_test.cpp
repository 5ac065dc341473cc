#include "engine_test.h"
#include "wheel/geometry.h"
#include "wheel/painter.h"

#include <cmath>

namespace {

class WheelGeometry : public EngineTest {};

TEST_F(WheelGeometry, RingAndBordersBetweenFieldsAreExact) {
    struct FieldCase {
        int fieldCount;
        Point point;
        std::int32_t expected;
    };
    constexpr FieldCase cases[] = {// both limits of the ring belong to it
                                   {4, {294, 230}, -1},
                                   {4, {294, 185}, -1},
                                   {4, {294, 184}, 0},
                                   {4, {294, 4}, 0},
                                   {4, {294, 3}, -1},
                                   {4, {339, 230}, -1},
                                   {4, {340, 230}, 1},
                                   {4, {520, 230}, 1},
                                   {4, {521, 230}, -1},
                                   // a border belongs to the field that begins there, clockwise
                                   {4, {394, 229}, 0},
                                   {4, {394, 230}, 1},
                                   {4, {294, 330}, 2},
                                   {4, {194, 230}, 3},
                                   {4, {293, 130}, 3},
                                   {4, {294, 130}, 0},
                                   {2, {295, 330}, 0},
                                   {2, {294, 330}, 1},
                                   // one field is the whole ring
                                   {1, {294, 130}, 0},
                                   {1, {293, 130}, 0},
                                   {1, {394, 231}, 0},
                                   {1, {294, 230}, -1},
                                   // the most that a file can hold
                                   {24, {294, 130}, 0},
                                   {24, {293, 130}, 23},
                                   {24, {394, 230}, 6},
                                   {24, {394, 229}, 5}};
    for (const FieldCase& c : cases) {
        engineState.wheels = {wheelOf(c.fieldCount)};
        EXPECT_EQ(hitTestField(c.point.x, c.point.y), c.expected)
            << c.fieldCount << " fields at " << c.point.x << "," << c.point.y;
    }
}

TEST_F(WheelGeometry, TheFieldUnderThePointIsThePiePaintedThere) {
    constexpr double degree = 3.141592653589793 / 180;
    for (const int fieldCount : {1, 2, 7, 24}) {
        engineState.wheels = {wheelOf(fieldCount)};
        std::int32_t index = 0;
        for (const DrawCommand& command : buildWheelPicture().commands) {
            const auto* pie = std::get_if<FilledPie>(&command);
            if (pie == nullptr)
                continue;
            for (const float part : {0.1F, 0.9F}) {
                const double angle = static_cast<double>(pie->startAngle + pie->sweepAngle * part) * degree;
                const auto x = static_cast<std::int32_t>(std::lround(294 + 200 * std::cos(angle)));
                const auto y = static_cast<std::int32_t>(std::lround(230 + 200 * std::sin(angle)));
                EXPECT_EQ(hitTestField(x, y), index) << fieldCount << " fields at " << x << "," << y;
            }
            ++index;
        }
        EXPECT_EQ(index, fieldCount);
    }
}

TEST_F(WheelGeometry, ArrowsHoldTheirLeftAndTopEdgesAndNeedTwoWheels) {
    const std::pair<Point, std::int32_t> cases[] = {{{10, 186}, 0},   {{53, 273}, 0},  {{9, 200}, -1},
                                                    {{54, 200}, -1},  {{20, 185}, -1}, {{20, 274}, -1},
                                                    {{534, 186}, 1},  {{577, 273}, 1}, {{533, 200}, -1},
                                                    {{578, 186}, -1}, {{577, 274}, -1}};
    for (const auto& [point, expected] : cases) {
        engineState.wheels = {wheelOf(4), wheelOf(4)};
        EXPECT_EQ(hitTestArrow(point.x, point.y), expected) << point.x << "," << point.y;
        EXPECT_EQ(hitTestField(point.x, point.y), -1);
        engineState.wheels.pop_back();
        EXPECT_EQ(hitTestArrow(point.x, point.y), -1) << "single wheel";
    }
}

TEST_F(WheelGeometry, TheWheelStandsInTheMiddleOfTheMonitorRoundedTowardZero) {
    const std::pair<Rect, Point> cases[] = {{{0, 0, 1919, 1079}, {665, 309}},
                                            {{-1920, -100, 0, 980}, {-1254, 210}},
                                            {{-1921, -541, 0, 0}, {-1254, -500}},
                                            {{0, 0, 401, 301}, {-93, -79}}};
    for (const auto& [monitor, topLeft] : cases)
        EXPECT_EQ(wheelPlaceOn(monitor),
                  (Rect{topLeft.x, topLeft.y, topLeft.x + layerWidthPx, topLeft.y + layerHeightPx}));
}

} // namespace
