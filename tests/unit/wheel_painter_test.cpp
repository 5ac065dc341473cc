#include "core/text.h"
#include "engine_test.h"
#include "picture_text.h"
#include "platform/paths.h"
#include "wheel/icons.h"
#include "wheel/painter.h"

#include <tuple>

namespace {

using Lines = std::vector<std::string>;

class WheelPainter : public EngineTest {
protected:
    static Lines painted() { return pictureLines(buildWheelPicture()); }
    static Lines painted(const std::string& word) { return linesOf(painted(), word); }

    void readIcons() {
        loadNewIcons();
        desktop.settle();
    }

    /// Makes an icon file that loads, beside the program; its full path.
    std::string addIcon(const std::u16string& name) {
        const std::u16string path = joinPath(programFolder(), name);
        desktop.loadableImages.insert(path);
        return utf8FromUtf16(path);
    }
};

TEST_F(WheelPainter, PaintsPiesThenLabelsThenHoleNameAndCursor) {
    Wheel wheel{u"Gra", {field(u"Skok", 65), field(u"", 66)}};
    wheel.actions[0].color = 0xFFFFFF; // without hasColor it does not count
    wheel.actions[1].color = 0x030201;
    wheel.actions[1].hasColor = true;
    engineState.wheels = {wheel};
    engineState.hoveredField = 1;
    putCursorAt({149, 230});
    const Picture picture = buildWheelPicture();
    EXPECT_EQ(picture.width, 588);
    EXPECT_EQ(picture.height, 460);
    EXPECT_EQ(pictureLines(picture),
              (Lines{
                  "pie 70,6 448x448 from -90 by 180 of 87 34 98 DB",
                  "pie outline 70,6 448x448 from -90 by 180 of B4 FF FF FF pen 2.5",
                  "pie 70,6 448x448 from 90 by 180 of FF 01 02 03",
                  "pie outline 70,6 448x448 from 90 by 180 of FF FF FF FF pen 2.5",
                  "text 'Skok' 378.5,197.5 124x68 size 19 bold of 78 00 00 00",
                  "text 'Skok' 377,196 124x68 size 19 bold of D7 FF FF FF",
                  "text '2' 88.5,197.5 124x68 size 19 bold of C8 00 00 00",
                  "text '2' 87,196 124x68 size 19 bold of FF FF FF FF",
                  "cut-out 248,184 92x92",
                  "text 'Gra' 248,232 92x18 size 13 of D7 FF FF FF",
                  "polygon 149,230 149,253 154.5,248.5 158.5,257 162,255.5 158,247 165,247 of FF FF FF FF",
                  "polygon outline 149,230 149,253 154.5,248.5 158.5,257 162,255.5 158,247 165,247 "
                  "of FF 00 00 00 pen 1.5",
              }));
}

TEST_F(WheelPainter, SeveralWheelsShowTheirNumberAndTheArrowsInTheSegmentColour) {
    engineState.wheels = {wheelOf(1), wheelOf(1)};
    engineState.wheels[0].actions[0].hasColor = true; // a field's own colour plays no part in the arrows
    engineState.hoveredArrow = 1;
    const Lines lines = painted();
    EXPECT_EQ(Lines(lines.begin() + 4, lines.end() - 2),
              (Lines{
                  "cut-out 248,184 92x92",
                  "text '1/2' 248,210 92x22 size 15 bold of EB FF FF FF",
                  "rectangle 10,186 44x88 of 87 34 98 DB",
                  "rectangle outline 10,186 44x88 of B4 FF FF FF pen 2",
                  "polygon 40,214 40,246 22,230 of DC FF FF FF",
                  "rectangle 534,186 44x88 of FF 34 98 DB",
                  "rectangle outline 534,186 44x88 of FF FF FF FF pen 2",
                  "polygon 548,214 548,246 566,230 of FF FF FF FF",
              }));
    engineState.activeWheel = 1;
    EXPECT_EQ(painted("text '2/2'").size(), 1U);
}

TEST_F(WheelPainter, AFieldShowsItsIconItsNameBothOrItsNumber) {
    const std::string icon = "image " + addIcon(u"ok.png");
    const std::string small = " 124x34 size 14 bold of ";
    const std::string large = " 124x68 size 19 bold of ";
    const std::string shadow = "78 00 00 00";
    const std::string face = "D7 FF FF FF";
    const std::tuple<std::u16string, std::u16string, Lines> cases[] = {
        {u"", u"ok.png", {icon + " 273,354 42x42 opacity 0.529412"}},
        {u"Bieg",
         u"ok.png",
         {icon + " 273,343 42x42 opacity 0.529412", "text 'Bieg' 233.5,387.5" + small + shadow,
          "text 'Bieg' 232,386" + small + face}},
        // a broken icon counts as none
        {u"Bieg",
         u"zly.png",
         {"text 'Bieg' 233.5,342.5" + large + shadow, "text 'Bieg' 232,341" + large + face}},
        {u"", u"zly.png", {"text '1' 233.5,342.5" + large + shadow, "text '1' 232,341" + large + face}},
    };
    startWith({wheelOf(1)});
    WheelAction& action = engineState.wheels[0].actions[0];
    for (const auto& [name, iconName, label] : cases) {
        action.name = name;
        action.icon = iconName;
        readIcons();
        const Lines lines = painted();
        EXPECT_EQ(Lines(lines.begin() + 2, lines.end() - 3), label); // between the pie and hole and cursor
    }
    action.icon = u"ok.png";
    engineState.hoveredField = 0;
    EXPECT_EQ(painted("image"), (Lines{icon + " 273,354 42x42 opacity 1"}));
}

TEST_F(WheelPainter, TextShrinksBeyondEightFields) {
    for (const auto& [fieldCount, size] : {std::pair{8, " size 19 "}, std::pair{9, " size 16 "}}) {
        engineState.wheels = {wheelOf(fieldCount)};
        for (const std::string& line : painted("text"))
            EXPECT_NE(line.find(size), std::string::npos) << line;
    }
}

TEST_F(WheelPainter, DwellRingAppearsOnTopAboveThreePercentAndStopsAtAFullTurn) {
    engineState.wheels = {wheelOf(4)};
    putCursorAt({300, 100});
    const std::string circle = "ellipse 283,83 34x34 of 5A FF FF FF pen 3.5";
    const std::pair<float, Lines> cases[] = {
        {0.03F, {}},
        {0.25F, {circle, "arc 283,83 34x34 from -90 by 90 of EB FF FF FF pen 3.5"}},
        {1.5F, {circle, "arc 283,83 34x34 from -90 by 360 of EB FF FF FF pen 3.5"}},
    };
    const std::size_t lineCount = painted().size();
    for (const auto& [progress, ring] : cases) {
        engineState.dwellProgress = progress;
        Lines lines = painted();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(lineCount));
        EXPECT_EQ(lines, ring) << progress;
    }
}

TEST_F(WheelPainter, IconPathsAreJoinedToTheProgramsFolderUnlessAbsolute) {
    startWith({wheelOf(1)});
    const std::pair<std::u16string, bool> cases[] = {{u"icons/a.png", false}, {u"C:\\a.png", true},
                                                     {u"\\a.png", true},      {u"/tmp/a.png", true},
                                                     {u"/", false},           {u"x:", true}};
    for (const auto& [written, isAbsolute] : cases) {
        engineState.wheels[0].actions[0].icon = written;
        readIcons();
        EXPECT_EQ(desktop.imageLoads.back(), isAbsolute ? written : joinPath(programFolder(), written));
    }
}

TEST_F(WheelPainter, AnIconIsReadOnceBesideTheOwnerThreadAndComesIntoTheOpenWheel) {
    const std::string icon = "image " + addIcon(u"ok.png");
    const std::u16string file = folder.write("koła.json", R"({"wheels": [{"actions": [
        {"key": "a", "icon": "ok.png"}, {"key": "b", "icon": "OK.png"}, {"key": "c", "icon": "ok.png"}]}]})");
    startWith({wheelOf(2)});
    pressToggleKey();
    ASSERT_TRUE(OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(file.c_str())));
    EXPECT_TRUE(desktop.imageLoads.empty()) << "a slow file would hold up the owner thread";
    EXPECT_TRUE(shownLines("image").empty());
    desktop.settle();
    EXPECT_EQ(shownLines(icon).size(), 2U);
    EXPECT_EQ(shownLines("text '2'").size(), 2U) << "paths are compared exactly";
    addIcon(u"OK.png");
    pressToggleKey();
    ASSERT_TRUE(OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(file.c_str())));
    pressToggleKey();
    desktop.settle();
    EXPECT_EQ(shownLines("image").size(), 2U) << "what failed is not tried again";
    EXPECT_EQ(desktop.imageLoads.size(), 2U);
}

} // namespace
