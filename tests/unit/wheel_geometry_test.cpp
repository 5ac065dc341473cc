#include "engine_test.h"
#include "wheel/geometry.h"
#include "wheel/painter.h"

#include <cmath>

namespace {

class WheelGeometry : public EngineTest {};

struct FieldCase {
    int fieldCount;
    Point point;
    std::int32_t expected;
};

TEST_F(WheelGeometry, RingAndBordersBetweenFieldsAreExact) {
    constexpr FieldCase cases[] = {
        // both limits of the ring belong to it
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
        {1, {194, 230}, 0},
        {1, {394, 231}, 0},
        {1, {294, 230}, -1},
        // the most that a file can hold
        {24, {294, 130}, 0},
        {24, {293, 130}, 23},
        {24, {394, 230}, 6},
        {24, {394, 229}, 5},
    };
    for (const FieldCase& c : cases) {
        engineState.wheels = {wheelOf(c.fieldCount)};
        EXPECT_EQ(hitTestField(c.point.x, c.point.y), c.expected)
            << c.fieldCount << " fields at " << c.point.x << "," << c.point.y;
    }
}

TEST_F(WheelGeometry, TheFieldUnderThePointIsThePiePaintedThere) {
    constexpr double degree = 3.141592653589793 / 180;
    for (int fieldCount = 1; fieldCount <= 24; ++fieldCount) {
        engineState.wheels = {wheelOf(fieldCount)};
        std::int32_t index = 0;
        for (const DrawCommand& command : buildWheelPicture().commands) {
            const auto* pie = std::get_if<FilledPie>(&command);
            if (pie == nullptr)
                continue;
            for (const float part : {0.1F, 0.5F, 0.9F}) {
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

TEST_F(WheelGeometry, NoPointOfTheLayerAnswersAnIndexOutsideTheWheelOrTwoThings) {
    for (const int fieldCount : {1, 3, 7, 11, 24}) {
        engineState.wheels = {wheelOf(fieldCount), wheelOf(1)};
        for (std::int32_t y = 0; y < layerHeightPx; ++y) {
            for (std::int32_t x = 0; x < layerWidthPx; ++x) {
                const std::int32_t hit = hitTestField(x, y);
                const bool isGood = hit >= -1 && hit < fieldCount && (hit < 0 || hitTestArrow(x, y) < 0);
                ASSERT_TRUE(isGood) << hit << " of " << fieldCount << " fields at " << x << "," << y;
            }
        }
    }
}

TEST_F(WheelGeometry, ArrowsHoldTheirLeftAndTopEdgesAndNeedTwoWheels) {
    struct ArrowCase {
        Point point;
        std::int32_t expected;
    };
    constexpr ArrowCase cases[] = {
        {{10, 186}, 0},   {{53, 273}, 0},   {{9, 200}, -1},   {{54, 200}, -1},
        {{20, 185}, -1},  {{20, 274}, -1},  {{534, 186}, 1},  {{577, 273}, 1},
        {{533, 200}, -1}, {{578, 186}, -1}, {{577, 274}, -1}, {{294, 230}, -1},
    };
    for (const ArrowCase& c : cases) {
        engineState.wheels = {wheelOf(4), wheelOf(4)};
        EXPECT_EQ(hitTestArrow(c.point.x, c.point.y), c.expected) << c.point.x << "," << c.point.y;
        engineState.wheels = {wheelOf(4)};
        EXPECT_EQ(hitTestArrow(c.point.x, c.point.y), -1) << "single wheel";
    }
}

TEST_F(WheelGeometry, TurningThePageWrapsBothWaysAndDividesTheRingAnewUnderAStillCursor) {
    startWith({wheelOf(4), wheelOf(1), wheelOf(24)});
    pressToggleKey();
    aimAt(inFieldOfFour[3]);
    engineState.hoveredArrow = 1; // no business of a page turn
    struct Turn {
        std::int32_t arrow;
        std::int32_t wheel;
        std::int32_t field;
    };
    for (const Turn& turn : {Turn{1, 1, 0}, {1, 2, 19}, {1, 0, 3}, {0, 2, 19}, {0, 1, 0}}) {
        const int paintsBefore = wheelPaintCount();
        turnPage(turn.arrow);
        EXPECT_EQ(engineState.activeWheel, turn.wheel);
        EXPECT_EQ(engineState.hoveredField, turn.field) << "wheel " << turn.wheel;
        EXPECT_EQ(engineState.hoveredArrow, 1);
        EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
    }
}

TEST_F(WheelGeometry, TheWheelStandsInTheMiddleOfTheMonitorRoundedTowardZero) {
    struct PlaceCase {
        Rect monitor;
        Point topLeft;
    };
    constexpr PlaceCase cases[] = {
        {{0, 0, 1920, 1080}, {666, 310}},     {{0, 0, 1919, 1079}, {665, 309}},
        {{1920, 0, 3840, 1080}, {2586, 310}}, {{-1920, -100, 0, 980}, {-1254, 210}},
        {{-1921, -541, 0, 0}, {-1254, -500}}, {{0, 0, 400, 300}, {-94, -80}},
        {{0, 0, 401, 301}, {-93, -79}},
    };
    for (const PlaceCase& c : cases) {
        const Rect place = wheelPlaceOn(c.monitor);
        EXPECT_EQ(place.left, c.topLeft.x);
        EXPECT_EQ(place.top, c.topLeft.y);
        EXPECT_EQ(place.width(), 588);
        EXPECT_EQ(place.height(), 460);
    }
}

} // namespace
