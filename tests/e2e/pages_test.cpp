#include "scenario.h"

namespace e2e {

namespace {

const std::vector<std::string> pageColors = {"#E03030", "#30C030", "#3040E0"};

class Pages : public Scenario {
protected:
    /// A wheel for each count, all of one plain colour.
    static std::string wheelsText(const std::vector<int>& fieldCounts) {
        std::string text;
        for (std::size_t page = 0; page < fieldCounts.size(); ++page) {
            std::string fields;
            for (int i = 0; i < fieldCounts[page]; ++i) {
                fields += std::string(i == 0 ? "" : ", ") + "{ \"name\": \"" + std::to_string(i + 1) +
                          "\", \"color\": \"" + pageColors[page] + "\", \"key\": \"" +
                          static_cast<char>('a' + static_cast<int>(page)) + "\" }";
            }
            text += std::string(page == 0 ? "" : ",\n") + "{ \"name\": \"Koło " + std::to_string(page + 1) +
                    "\", \"actions\": [ " + fields + " ] }";
        }
        return "{ \"wheels\": [\n" + text + "\n] }\n";
    }

    Stage& wheels(const std::vector<int>& fieldCounts) {
        Stage& s = stage();
        s.writeFile("default.json", wheelsText(fieldCounts));
        pageCount = static_cast<int>(fieldCounts.size());
        s.startAll();
        s.recording.mark();
        s.openWheel();
        return s;
    }

    /// By the colour of a resting field near the hole, where no label is: the channel that stands out.
    int shownPage() {
        const PixelColor color = stage().wheel.pixel(fieldPoint(0, 4, 75));
        if (color.red > color.green && color.red > color.blue)
            return 0;
        return color.green > color.blue ? 1 : 2;
    }

    /// Presses the left button on the arrow; `direction` is 1 for the right one. The wheel then shows the
    /// page it should and stays there, for the cursor has moved on.
    void turn(int direction) {
        Stage& s = stage();
        s.choose(direction > 0 ? rightArrow : leftArrow);
        s.aim(fieldPoint(1, 4, 200));
        const int turned = page + direction * s.target->turnsPerPress();
        page = (turned + 2 * pageCount) % pageCount;
        EXPECT_EQ(shownPage(), page);
        EXPECT_TRUE(s.wheelIsOpen());
    }

    int pageCount = 0;
    int page = 0;
};

TEST_F(Pages, ArrowsTurnAndWrapAroundBothWays) {
    Stage& s = wheels({4, 9, 6});
    keepPicture("pages-first-of-three");
    for (const int direction : {1, 1, 1, -1, -1, -1, -1})
        turn(direction);
    // The arrow's own letter tells which wheel's field has run.
    s.choose(fieldPoint(0, 4, 200));
    s.waitUntilWheelIsClosed();
    const std::string key(1, static_cast<char>('a' + page));
    s.recording.waitForPress("key-up " + key);
    EXPECT_EQ(s.recording.pressTexts(), (std::vector<std::string>{"key-down " + key, "key-up " + key}));

    // The page is kept until the program reads its files again.
    s.openWheel();
    EXPECT_EQ(shownPage(), page);
}

TEST_F(Pages, TwoWheelsShowTheirNumberAndTheArrowUnderTheCursor) {
    Stage& s = wheels({4, 6});
    const LayerPoint arrowCorner{16, 192};
    const PixelColor segmentColor{0x34, 0x98, 0xDB};
    EXPECT_GT(differenceOf(s.wheel.pixel(arrowCorner), segmentColor), 10);
    s.aim(leftArrow);
    waitFor("the arrow to be lit", [&] { return s.wheel.pixel(arrowCorner) == segmentColor; });
    keepPicture("pages-two-wheels");
    s.mouse->click(MouseButton::left);
    // On the same arrow still.
    s.aim({leftArrow.x, leftArrow.y + 20});
    EXPECT_EQ(shownPage(), s.target->turnsPerPress() % 2);
    EXPECT_EQ(s.wheel.pixel(arrowCorner), segmentColor);
}

} // namespace

} // namespace e2e
