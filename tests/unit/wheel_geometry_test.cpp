#include "engine_test.h"
#include "wheel/geometry.h"

namespace {

class WheelGeometry : public EngineTest {};

TEST_F(WheelGeometry, RingAndBordersBetweenFieldsAreExact) {
    const std::pair<int, std::vector<std::pair<Point, std::int32_t>>> cases[] = {
        // both limits of the ring belong to it
        {4, {{{294, 185}, -1}, {{294, 184}, 0}, {{294, 4}, 0}, {{294, 3}, -1}, {{294, 230}, -1}}},
        {4, {{{339, 230}, -1}, {{340, 230}, 1}, {{520, 230}, 1}, {{521, 230}, -1}}},
        // a border belongs to the field that begins there, clockwise
        {4, {{{394, 229}, 0}, {{394, 230}, 1}, {{294, 330}, 2}, {{194, 230}, 3}, {{293, 130}, 3}}},
        {4, {{{294, 130}, 0}}},
        {2, {{{295, 330}, 0}, {{294, 330}, 1}}},
        {1, {{{294, 130}, 0}, {{293, 130}, 0}, {{394, 231}, 0}, {{294, 230}, -1}}},
        {24, {{{294, 130}, 0}, {{293, 130}, 23}, {{394, 230}, 6}, {{394, 229}, 5}}},
    };
    for (const auto& [fieldCount, points] : cases) {
        engineState.wheels = {wheelOf(fieldCount)};
        for (const auto& [point, expected] : points)
            EXPECT_EQ(hitTestField(point.x, point.y), expected)
                << fieldCount << " fields at " << point.x << "," << point.y;
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
