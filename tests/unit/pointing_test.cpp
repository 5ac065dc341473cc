#include "core/text.h"
#include "engine_test.h"
#include "picture_text.h"
#include "pointing/element_filter.h"
#include "pointing/grid.h"
#include "voice/phrase_table.h"
#include "voice/voice_dispatch.h"

#include <functional>
#include <tuple>

namespace {

using Texts = std::vector<std::string>;

ScreenElement element(const Rect& rect, ControlType type = ControlType::button) {
    return {rect, type, true, false, false};
}

class Pointing : public EngineTest {
protected:
    /// The engine with these wheels, obeying the words that follow.
    void listen(std::vector<Wheel> wheels = {wheelOf(4)}) {
        startWith(std::move(wheels));
        rebuildPhraseTable();
    }

    void say(const char* words, std::uint32_t waitMs = 500) {
        dispatchRecognisedText(words);
        desktop.advanceBy(waitMs);
    }

    /// "grid", "labels", both or "", and behind it whether the window is there.
    std::string onShow() {
        return std::string(engineState.gridVisible ? "grid" : "") +
               (engineState.elementsVisible ? "labels" : "") +
               (desktop.windowNamed("grid")->isShown ? " shown" : "");
    }

    std::vector<std::string> gridLines(const std::string& word) {
        return linesOf(pictureLines(*desktop.windowNamed("grid")->picture), word);
    }

    Rect gridPlace() { return desktop.windowNamed("grid")->place; }
    std::string clicks() const { return journal({JournalKind::input}); }
};

TEST_F(Pointing, WordsNarrowTheGridToAPointAndClickThere) {
    listen();
    say("pokaż siatkę");
    EXPECT_EQ(onShow(), "grid shown");
    EXPECT_EQ(gridPlace(), (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(desktop.cursor, (Point{960, 540}));
    EXPECT_TRUE(isForeground("game"));
    EXPECT_TRUE(desktop.windowNamed("grid")->letsPointerThrough);

    say("siedemnaście");
    EXPECT_EQ(gridPlace(), (Rect{0, 0, 1920, 1080})) << "no such cell";
    const std::tuple<const char*, Rect, Point> steps[] = {
        {"szesnaście", {1440, 810, 1920, 1080}, {1680, 945}}, {"pięć", {1440, 810, 1920, 1080}, {1680, 945}},
        {"jeden", {1440, 810, 1680, 945}, {1560, 877}},       {"cztery", {1560, 877, 1680, 945}, {1620, 911}},
        {"dwa", {1620, 877, 1680, 911}, {1650, 894}},
    };
    for (const auto& [word, place, cursor] : steps) {
        say(word);
        EXPECT_EQ(gridPlace(), place) << word;
        EXPECT_EQ(desktop.cursor, cursor) << word;
    }
    say("kliknij dwa razy na jeden");
    EXPECT_EQ(onShow(), "grid shown") << "that form is for labels";
    say("kliknij");
    EXPECT_EQ(onShow(), "");
    EXPECT_EQ(clicks(), "button 0 down, button 0 up");
    say("jeden");
    EXPECT_EQ(desktop.cursor, (Point{1650, 894})) << "without a grid a number means nothing";
    say("pokaż siatkę");
    EXPECT_EQ(gridPlace(), (Rect{0, 0, 1920, 1080})) << "from the start again";
    say("schowaj siatkę");
    EXPECT_EQ(onShow(), "");
}

TEST_F(Pointing, TheGridCoversTheMonitorOfTheCursorAlsoLeftOfTheOrigin) {
    listen();
    desktop.monitors = {{0, 0, 1920, 1080}, {-1281, -50, 0, 974}};
    desktop.cursor = {-1, 10};
    say("pokaż siatkę");
    EXPECT_EQ(gridPlace(), (Rect{-1281, -50, 0, 974}));
    EXPECT_EQ(desktop.cursor, (Point{-640, 462})) << "halves go toward zero";
    say("dwa");
    EXPECT_EQ(gridPlace(), (Rect{-961, -50, -641, 206}));
    desktop.cursor = {5000, 5000};
    say("pokaż siatkę");
    EXPECT_EQ(gridPlace(), (Rect{0, 0, 1920, 1080})) << "on no monitor";
}

TEST_F(Pointing, TheGridsPictureHasOneFillOutlineAndShadowedNumberACell) {
    listen();
    engineConfig.segmentColor = 0x030201;
    say("pokaż siatkę");
    EXPECT_EQ(gridLines("rectangle ").size(), 32U);
    EXPECT_EQ(gridLines("rectangle 480,270"), (Texts{"rectangle 480,270 480x270 of 1C 01 02 03"}));
    EXPECT_EQ(gridLines("rectangle outline").back(),
              "rectangle outline 1440,810 480x270 of BE FF FF FF pen 2");
    EXPECT_EQ(gridLines("text '16'"), (Texts{"text '16' 1442,812 480x270 size 64 bold of 82 00 00 00",
                                             "text '16' 1440,810 480x270 size 64 bold of EB FF FF FF"}));
    for (int i = 0; i < 4; ++i)
        say("trzy");
    EXPECT_EQ(gridLines("text '4'").back(), "text '4' 30,17 30x17 size 12 bold of EB FF FF FF");
    for (int i = 0; i < 30; ++i) // narrowed to nothing, it still follows
        say("jeden");
    EXPECT_TRUE(engineState.gridRect.width() == 0 && gridPlace().width() == 1);
    EXPECT_EQ(onShow(), "grid shown");
}

TEST_F(Pointing, WithTheWheelOpenTheGridShowsButTheCursorStaysPinned) {
    listen();
    desktop.cursor = {100, 100};
    pressToggleKey();
    say("pokaż siatkę");
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(onShow(), "grid shown");
    EXPECT_EQ(desktop.cursor, (Point{100, 100}));
    say("prawy klik");
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(onShow(), "");
    EXPECT_EQ(clicks(), "button 1 down, button 1 up");
}

TEST_F(Pointing, LockMonitorChangeAndALostWindowTakeGridAndLabelsAway) {
    listen();
    desktop.elements = {{0, 0, 1920, 1080}, {{element({10, 20, 111, 61})}}};
    desktop.elementSearchMs = 100;
    const std::function<void()> ends[] = {
        [&] { desktop.lockSession(true); },
        [&] {
            desktop.changeMonitors({{0, 0, 800, 600}});
        },
        [&] { desktop.destroyOverlay("grid"); },
    };
    for (const auto& end : ends) {
        for (const char* words : {"pokaż siatkę", "pokaż elementy"}) {
            say(words);
            EXPECT_NE(onShow(), "") << words;
            end();
            EXPECT_EQ(onShow(), "") << words;
            say("pokaż siatkę", 0);
            EXPECT_EQ(onShow(), engineState.sessionLocked ? "" : "grid shown") << words;
            desktop.lockSession(false);
            say("schowaj siatkę");
        }
    }
    EXPECT_EQ(gridPlace(), (Rect{0, 0, 800, 600}));
    say("pokaż elementy", 50);
    desktop.lockSession(true);
    desktop.advanceBy(200);
    EXPECT_EQ(onShow(), "") << "a scan that was under way";
}

// Labels

TEST_F(Pointing, NumbersClickLabelsOnceTwiceOrRight) {
    listen();
    desktop.elements = {{0, 0, 1920, 1080}, {{element({10, 20, 111, 61})}, {element({500, 500, 700, 540})}}};
    const std::tuple<const char*, Point, std::string> cases[] = {
        {"jeden", {60, 40}, "button 0 down, button 0 up"},
        {"kliknij dwa razy na dwa", {600, 520}, "button 0 down, button 0 up, button 0 down, button 0 up"},
        {"kliknij prawy na jeden", {60, 40}, "button 1 down, button 1 up"},
    };
    for (const auto& [words, cursor, expected] : cases) {
        say("pokaż elementy");
        EXPECT_EQ(onShow(), "labels shown");
        say("trzy");
        say("kliknij prawy na trzy");
        EXPECT_EQ(onShow(), "labels shown") << "no such label";
        desktop.clearJournal();
        say(words);
        EXPECT_EQ(onShow(), "");
        EXPECT_EQ(desktop.cursor, cursor);
        EXPECT_EQ(clicks(), expected);
        say(words);
        EXPECT_EQ(clicks(), expected) << "one click ends the labels";
    }
    say("elementy strony");
    EXPECT_EQ(desktop.searches.back(), ElementScope::page);
    say("schowaj elementy");
    EXPECT_EQ(onShow(), "");
}

TEST_F(Pointing, LabelsPictureLiesOnTheAreaOfTheScan) {
    listen();
    engineConfig.segmentColor = 0x030201;
    desktop.elements = {{-100, 50, 900, 650}, {{}}};
    for (int i = 0; i < 10; ++i)
        desktop.elements.roots[0].push_back(element({-110 + 60 * i, 60, -60 + 60 * i, 80}));
    say("pokaż elementy strony");
    EXPECT_EQ(gridPlace(), (Rect{-100, 50, 900, 650}));
    const Texts lines = pictureLines(*desktop.windowNamed("grid")->picture);
    ASSERT_EQ(lines.size(), 40U);
    EXPECT_EQ(
        Texts(lines.begin(), lines.begin() + 4),
        (Texts{"rectangle -10,10 50x20 of 16 01 02 03", "rectangle outline -10,10 50x20 of D7 01 02 03 pen 2",
               "rectangle -10,10 23x18 of EB 01 02 03",
               "text '1' -10,10 23x18 size 13 bold of FF FF FF FF"}));
    EXPECT_EQ(lines[39], "text '10' 530,10 32x18 size 13 bold of FF FF FF FF");
}

TEST_F(Pointing, OnlyAWantedScanShowsItsResult) {
    listen();
    const Rect screen{0, 0, 1920, 1080};
    desktop.elementSearchMs = 300;
    desktop.elements = {screen, {{element({0, 0, 50, 50})}}};
    say("pokaż siatkę");
    say("pokaż elementy", 100);
    EXPECT_EQ(onShow(), "");
    say("pokaż elementy", 50);
    EXPECT_EQ(desktop.searches.size(), 1U) << "one at a time";
    postToMain(MsgElementsReady, 0, 0x1234); // somebody else's
    EXPECT_EQ(engineState.elementScanBusy, 1);
    desktop.advanceBy(50);
    say("ukryj elementy", 1000);
    EXPECT_EQ(onShow(), "") << "cancelled";

    say("pokaż elementy", 100);
    say("ukryj elementy", 100);
    desktop.elements = {screen, {{element({70, 70, 90, 90})}}};
    say("pokaż elementy", 150);
    EXPECT_EQ(onShow(), "labels shown") << "the first result is taken for the second";
    desktop.advanceBy(1000);
    EXPECT_EQ(engineState.elementRects, (std::vector<Rect>{{0, 0, 50, 50}}));

    // While the labels are looked for anew, the old numbers hold, though their picture is gone.
    say("pokaż elementy", 100);
    EXPECT_EQ(onShow(), "labels");
    desktop.clearJournal();
    say("jeden", 150);
    EXPECT_EQ(clicks(), "button 0 down, button 0 up");
    desktop.advanceBy(1000);
    EXPECT_EQ(onShow(), "labels shown");

    say("pokaż siatkę", 10);
    EXPECT_EQ(onShow(), "grid shown");
    say("dwa", 10);
    EXPECT_EQ(gridPlace(), (Rect{480, 0, 960, 270})) << "numbers go to what is on show";
    desktop.elements = {screen, {}};
    say("pokaż elementy", 1000);
    EXPECT_EQ(onShow(), "") << "nothing found";
    EXPECT_TRUE(engineState.elementRects.empty());
    // A null result stands for a failure; what was known before is shown again.
    engineState.elementRects = {{0, 0, 50, 50}};
    engineState.elementScanBusy = 1;
    postToMain(MsgElementsReady, 0);
    EXPECT_EQ(onShow(), "labels shown");
    OverlayEngineStop();
    EXPECT_EQ(onShow(), "");
}

TEST(ElementFilter, KeepsWhatCanBeClickedAtEachLimit) {
    const Rect area{0, 0, 1000, 1000};
    ScreenElement focusable = element({0, 0, 50, 50}, ControlType::unknown);
    focusable.isFocusable = true;
    // an element, and whether it is kept in a window and in a page
    std::vector<std::tuple<ScreenElement, bool, bool>> cases = {
        {element({0, 0, 8, 8}), true, true},
        {element({0, 0, 7, 8}), false, false},
        {element({0, 0, 8, 7}), false, false},
        {element({0, 0, 900, 700}), true, true},
        {element({0, 0, 901, 700}), false, true},
        {element({0, 0, 900, 701}), false, true},
        {element({0, 0, 1400, 1000}), false, true},
        {element({0, 0, 1401, 9}), false, false},
        {element({0, 0, 9, 1001}), false, false},
        {element({-40, 0, 1, 50}), true, true},
        {element({-40, 0, 0, 50}), false, false},
        {element({1000, 0, 1040, 50}), false, false},
        {focusable, true, true},
        {element({0, 0, 50, 50}, ControlType::unknown), false, false},
        {element({50, 50, 0, 0}), false, false},
    };
    for (const bool isFocusable : {false, true}) {
        for (const ControlType container : {ControlType::document, ControlType::window, ControlType::pane}) {
            focusable.type = container;
            focusable.isFocusable = isFocusable;
            cases.emplace_back(focusable, false, false);
        }
    }
    for (const int type :
         {50000, 50031, 50002, 50013, 50003, 50004, 50005, 50007, 50011, 50019, 50024, 50015, 50016})
        cases.emplace_back(element({0, 0, 50, 50}, static_cast<ControlType>(type)), true, true);
    for (const auto& change : {&ScreenElement::isEnabled, &ScreenElement::isOffscreen}) {
        ScreenElement changed = element({0, 0, 50, 50});
        changed.*change = !(changed.*change);
        cases.emplace_back(changed, false, false);
    }
    for (const auto& [each, inWindow, inPage] : cases) {
        SCOPED_TRACE(std::to_string(static_cast<int>(each.type)) + " " + std::to_string(each.rect.right) +
                     "x" + std::to_string(each.rect.bottom));
        const FoundElements found{area, {{each}}};
        EXPECT_EQ(filterElements(found, ElementScope::windowAndTaskbar).rects.size(), inWindow ? 1U : 0U);
        EXPECT_EQ(filterElements(found, ElementScope::page).rects.size(), inPage ? 1U : 0U);
    }
}

TEST(ElementFilter, DropsDuplicatesAndEndsAtTheNinetyNinth) {
    const std::tuple<Rect, Rect, std::size_t> pairs[] = {
        {{0, 0, 100, 100}, {0, 0, 100, 100}, 1},  {{0, 0, 100, 100}, {2, 2, 97, 97}, 1},
        {{0, 0, 600, 600}, {0, 0, 100, 100}, 2},  {{0, 0, 100, 100}, {0, 0, 100, 55}, 2},
        {{0, 0, 100, 100}, {0, 0, 100, 56}, 1},   {{0, 0, 100, 100}, {0, 15, 100, 115}, 2},
        {{0, 0, 100, 100}, {0, 14, 100, 114}, 1}, {{0, 0, 100, 100}, {100, 0, 200, 100}, 2},
    };
    for (const auto& [first, second, kept] : pairs) {
        const FoundElements found{{0, 0, 1000, 1000}, {{element(first)}, {element(second)}}};
        const ElementScanResult result = filterElements(found, ElementScope::windowAndTaskbar);
        EXPECT_EQ(result.rects.size(), kept) << second.right << "x" << second.bottom;
        EXPECT_EQ(result.rects.front(), first);
    }
    FoundElements many{{0, 0, 2000, 2000}, {{}, {element({1500, 1500, 1520, 1520})}}};
    for (int i = 0; i < 120; ++i)
        many.roots[0].push_back(element({10 * i, 0, 10 * i + 9, 9}));
    const ElementScanResult result = filterElements(many, ElementScope::windowAndTaskbar);
    ASSERT_EQ(result.rects.size(), 99U);
    EXPECT_EQ(result.rects.back(), (Rect{980, 0, 989, 9}));
}

} // namespace
