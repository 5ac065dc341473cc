#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "platform/clock.h"
#include "platform/injection.h"
#include "voice/voice_dispatch.h"

#include <map>
#include <sstream>

// A scene is what a person and the desktop do, and behind the arrow what can be seen at its end. The engine
// is started with an eye tracker that is connected but not enabled, and one wheel, whose four fields click
// the keys 65 to 68. Behind "|" stands what is played in the end, each at its ms since the beginning or
// "now": "65+" is key 65 going down, "x37" an extended key, "b0-" the left button going up, "16++" a key that
// is left down.

namespace {

class Scenes : public EngineTest, public testing::WithParamInterface<Row> {
public:
    void play(const std::string& script);
    std::string seen();

    /// The eye looks at a layer point; as the tracker tells it, in ten-thousandths of the screen.
    void look(Point point) const {
        const Rect place = desktop.windowNamed("wheel")->place;
        const Rect& screen = desktop.monitors.front();
        engineState.gazeX = ((place.left + point.x) * 10000 + screen.width() / 2) / screen.width();
        engineState.gazeY = ((place.top + point.y) * 10000 + screen.height() / 2) / screen.height();
        engineState.gazeSampleTick = tickCount();
    }
    /// The virtual cursor is there, and the eye on it.
    void rest(Point point) const {
        std::tie(engineState.cursorX, engineState.cursorY) = std::tie(point.x, point.y);
        look(point);
    }
    void say(const std::string& words) const {
        dispatchRecognisedText(words);
        desktop.settle();
    }
    void addMonitor(const Rect& monitor, Point cursor) const {
        desktop.monitors.push_back(monitor);
        desktop.cursor = cursor;
    }
    void addElement(const Rect& rect) const {
        desktop.elements.roots.push_back({{rect, ControlType::button, true, false, false}});
    }
    /// Shows that many labels.
    void label(int count) {
        addElement({10, 20, 111, 61});
        if (count > 1)
            addElement({500, 500, 700, 540});
        play("say pokaż elementy; wait 500; now");
    }
    void now() {
        desktop.clearJournal();
        startMs = desktop.clock.now();
        paints = wheelPaintCount();
    }

    std::uint64_t startMs = 0;
    int paints = 0;
};

using Words = std::istream;

std::int32_t number(Words& words) {
    std::int32_t value = 0;
    words >> value;
    return value;
}

Point point(Words& words) {
    const std::int32_t x = number(words);
    return {x, number(words)};
}

std::string text(Words& words) {
    std::string rest;
    std::getline(words >> std::ws, rest);
    return rest;
}

std::vector<Wheel> wheels(Words& words) {
    std::vector<Wheel> all;
    for (int fieldCount = 0; words >> fieldCount;)
        all.push_back(wheelOf(fieldCount));
    return all;
}

const std::map<std::string, void (*)(Scenes&, Words&)> verbs = {
    // settings and the machine
    {"wheels", [](Scenes&, Words& w) { engineState.wheels = wheels(w); }},
    {"steps", [](Scenes&, Words& w) { engineState.wheels[0].actions[0].steps = stepsOf(text(w)); }},
    {"delay", [](Scenes&, Words& w) { engineState.wheels[0].actions[0].delay = number(w); }},
    {"sendDelay", [](Scenes&, Words& w) { engineConfig.sendDelay = number(w); }},
    {"keyHold", [](Scenes&, Words& w) { engineConfig.keyHold = number(w); }},
    {"takeFocus", [](Scenes&, Words&) { engineConfig.takeFocus = true; }},
    {"gaze", [](Scenes&, Words&) { engineConfig.gazeEnabled = true; }},
    {"dwell", [](Scenes&, Words& w) { engineConfig.gazeDwell = number(w); }},
    {"tracker", [](Scenes&, Words& w) { engineState.gazeStatus = number(w); }},
    {"swap", [](Scenes& s, Words& w) { s.desktop.buttonsAreSwapped = number(w) != 0; }},
    {"program", [](Scenes& s, Words& w) { s.desktop.focusProgram(s.desktop.addProgram(text(w))); }},
    {"exit", [](Scenes& s, Words& w) { s.desktop.closeProgram(s.desktop.windowNamed(text(w))); }},
    {"monitors",
     [](Scenes& s, Words&) {
         s.desktop.changeMonitors({{0, 0, 1800, 1000}});
     }},
    {"left",
     [](Scenes& s, Words&) {
         s.addMonitor({-1281, -50, 0, 974}, {-1, 10});
     }},
    {"second",
     [](Scenes& s, Words&) {
         s.addMonitor({1920, 0, 2920, 1000}, {2420, 500});
     }},
    {"small",
     [](Scenes& s, Words&) {
         s.addElement({0, 0, 50, 50});
     }},
    {"large",
     [](Scenes& s, Words&) {
         s.addElement({0, 0, 1000, 800});
     }},
    {"label", [](Scenes& s, Words& w) { s.label(number(w)); }},
    {"twice", [](Scenes& s, Words&) { s.desktop.pressDelivery = PressDelivery::hookAndRaw; }},
    // the person
    {"toggle", [](Scenes& s, Words&) { s.pressToggleKey(); }},
    {"shell", [](Scenes&, Words&) { OverlayToggleWheel(); }},
    {"aim", [](Scenes& s, Words& w) { s.aimAt(point(w)); }},
    {"right", [](Scenes& s, Words& w) { s.desktop.moveMouse(number(w), 0); }},
    {"down", [](Scenes& s, Words& w) { s.desktop.moveMouse(0, number(w)); }},
    {"press", [](Scenes& s, Words&) { s.clickMouse(); }},
    {"inject", [](Scenes&, Words&) { injectMouseButton(0, InputMotion::downUntilReleased); }},
    {"cursor", [](Scenes& s, Words& w) { s.desktop.cursor = point(w); }},
    {"look", [](Scenes& s, Words& w) { s.look(point(w)); }},
    {"rest", [](Scenes& s, Words& w) { s.rest(point(w)); }},
    {"say", [](Scenes& s, Words& w) { s.say(text(w)); }},
    // what befalls the engine
    {"run", [](Scenes& s, Words&) { s.postToMain(MsgVoiceField, 0, 0); }}, // the first field, after 100 ms
    {"post",                                                               // to the main window
     [](Scenes& s, Words& w) {
         const auto message = MsgVoiceCommand + static_cast<std::uint32_t>(number(w));
         const Point numbers = point(w);
         s.postToMain(message, static_cast<std::uintptr_t>(numbers.x), numbers.y);
     }},
    {"wait", [](Scenes& s, Words& w) { s.desktop.advanceBy(static_cast<std::uint64_t>(number(w))); }},
    {"now", [](Scenes& s, Words&) { s.now(); }},
    {"lock", [](Scenes& s, Words&) { s.desktop.lockSession(true); }},
    {"unlock", [](Scenes& s, Words&) { s.desktop.lockSession(false); }},
    {"close", [](Scenes& s, Words&) { s.desktop.askToClose("wheel"); }},
    {"destroy", [](Scenes& s, Words& w) { s.desktop.destroyOverlay(text(w)); }},
    {"quit", [](Scenes& s, Words&) { s.desktop.destroyMainWindow(); }},
    {"stall", [](Scenes& s, Words&) { s.desktop.captureWasSilent = true; }},
    {"stop", [](Scenes&, Words&) { OverlayEngineStop(); }},
};

void Scenes::play(const std::string& script) {
    std::istringstream parts(script);
    for (std::string part; std::getline(parts, part, ';');) {
        std::istringstream words(part);
        std::string verb;
        words >> verb;
        ASSERT_TRUE(verb.empty() || verbs.contains(verb)) << part;
        if (!verb.empty())
            verbs.at(verb)(*this, words);
    }
}

/// Whatever happened, capture, timer and window go with the wheel.
std::string Scenes::seen() {
    const bool isOpen = OverlayIsWheelVisible();
    EXPECT_EQ(desktop.isCaptured(), isOpen);
    EXPECT_EQ(desktop.timers.size(), isOpen ? 1U : 0U);
    EXPECT_EQ(desktop.windowNamed("wheel")->isShown, isOpen);
    std::ostringstream text;
    const auto tell = [&text](bool isSo, const std::string& word, auto... numbers) {
        if (isSo)
            ((text << word) << ... << (" " + std::to_string(numbers)));
    };
    const bool hasGrid = engineState.gridVisible;
    const bool hasLabels = engineState.elementsVisible;
    const PlatformWindow& grid = *desktop.windowNamed("grid");
    text << (isOpen ? "open" : engineState.restorePending ? "gone" : "closed");
    tell(isOpen && virtualCursor() != inHole, "", engineState.cursorX, engineState.cursorY);
    tell(isOpen && engineState.hoveredField >= 0, " field", engineState.hoveredField);
    tell(isOpen && engineState.hoveredArrow >= 0, " arrow", engineState.hoveredArrow);
    tell(engineState.activeWheel != 0, " wheel", engineState.activeWheel);
    tell(isOpen && !shown("wheel", "arc").empty(), " ring");
    tell(hasGrid, " grid", grid.place.left, grid.place.top, grid.place.width(), grid.place.height());
    tell(hasLabels, " labels", engineState.elementRects.size());
    tell(grid.isShown != (hasGrid || hasLabels), grid.isShown ? " left over" : " unseen");
    tell(desktop.searches.size() > 1, " searched", desktop.searches.size());
    tell(desktop.screenWakeUps > 0, " woken", desktop.screenWakeUps);
    tell(desktop.cursor != Point{960, 540}, " at", desktop.cursor.x, desktop.cursor.y);
    tell(!isForeground("game"), " in " + desktop.foreground->name);
    if (!isOpen)
        desktop.advanceBy(70'000);
    std::string input = played(startMs);
    for (const auto& [words, sign] : {Row{"key ", ""},
                                      {"button ", "b"},
                                      {"extended ", "x"},
                                      {" down and left", "++"},
                                      {" down", "+"},
                                      {" up", "-"}})
        for (auto at = input.find(words); at != input.npos; at = input.find(words))
            input.replace(at, words.size(), sign);
    return text.str() + (input.empty() ? "" : " | " + input);
}

TEST_P(Scenes, EndAsTheyShould) {
    startWith({wheelOf(4)});
    engineState.gazeStatus = gazeStatusActive;
    desktop.elements.area = desktop.monitors.front();
    desktop.elementSearchMs = 100;
    play(GetParam().first);
    EXPECT_EQ(seen(), GetParam().second);
}

constexpr char toggling[] = R"(
    toggle -> open  shell -> open  say pokaż koło -> open  say schowaj koło -> closed  stop -> closed
    lock; toggle -> closed  lock; shell -> closed
    lock; toggle; shell; say pokaż koło; post 1 0 1; say kliknij; say pokaż siatkę -> closed woken 4
    lock; unlock; toggle -> open  close -> closed  destroy wheel -> closed  destroy wheel; toggle -> open
    toggle; toggle -> closed  toggle; shell -> closed
    toggle; aim 334 130; say pokaż koło -> open 334 130 field 0  toggle; say schowaj koło -> closed
    toggle; stop -> gone  toggle; quit -> gone  toggle; lock -> closed  toggle; monitors -> closed
    toggle; close -> closed  toggle; destroy wheel -> closed  toggle; stall; wait 15 -> closed
    takeFocus; toggle -> open in wheel  takeFocus; program chat; toggle; toggle -> closed in chat
    takeFocus; program chat; toggle; exit chat; toggle -> closed
    program chat; toggle; program other; toggle -> closed in chat
    wheels 4 4; toggle; aim 560 230; press; aim 334 130; toggle; toggle -> open wheel 1)";

constexpr char choosing[] = R"(
    toggle; aim 334 130; press -> closed | 265 65+, 325 65-
    toggle; aim 394 270; press; wheels 1 -> closed | 265 66+, 325 66-
    twice; toggle; aim 394 270; press -> closed | 265 66+, 325 66-
    toggle; aim 334 130; inject; wait 0; now -> closed | 250 65+, 310 65-  steps; toggle; aim 334 130; press -> closed
    toggle; press -> open  toggle; aim 80 20; press -> open 80 20
    wheels 4 4; toggle; aim 20 230; press -> open 20 230 arrow 0 wheel 1
    wheels 4 4 4; toggle; aim 20 230; press -> open 20 230 arrow 0 wheel 2
    twice; wheels 4 4 4; toggle; aim 560 230; press -> open 560 230 arrow 1 wheel 2
    post 1 0 1 -> closed | 100 66+, 160 66-
    sendDelay 400; wheels 4 3; toggle; post 1 1 2 -> closed | 400 67+, 460 67-  steps; toggle; run -> closed
    post 4 0 0 -> closed | 100 18++, 130 9+, 190 9-, 220 18-
    wheels 4 1 24; toggle; aim 194 190; say następne koło -> open 194 190 field 0 wheel 1
    wheels 4 1 24; toggle; aim 194 190; say poprzednie koło -> open 194 190 field 19 wheel 2
    wheels 4 4; say następne koło -> closed  toggle; say następne koło -> open
    cursor 100 100; say kliknij -> closed at 100 100 | 60 b0+, 120 b0-
    say dwuklik -> closed | 60 b0+, 120 b0-, 180 b0+, 240 b0-  say prawy klik -> closed | 60 b1+, 120 b1-
    toggle; aim 334 130; now; say kliknij -> closed | 250 65+, 310 65-  toggle; say kliknij; wait 500 -> open
    toggle; aim 334 130; now; say prawy klik; wait 500 -> open 334 130 field 0 | 60 b1+, 120 b1-
    post 1 1 0; post 1 0 4; post 1 0 -1; post 1 -1 0; post 4 1 0; post 4 -1 0; wait 500 -> closed
    toggle; post 1 0 4; post 1 9 99; post 4 -1 0; post 0 0 0; post 0 99 0; post 0 600 0; wait 500 -> open
    toggle; post 3 0 0; post 3 0 4660; post 2 0 4660; post 5 0 0; post 5 0 4660; post -1 0 0; wait 500 -> open)";

constexpr char steps[] = R"(
    steps hold a 1500 release b 0; run -> closed | 100 65+, 1600 65-, 1630 66-
    steps hold shift 0 click b 1; run -> closed | 100 16++, 130 66+, 190 66-
    steps hold a -1; run -> closed | 100 65++
    steps click a 1 release b 0; delay 0; run -> closed | 100 65+, 160 65-, 160 66-
    steps release a 0 release b 0; delay 2000; run -> closed | 100 65-, 2100 66-
    steps click a -7; run -> closed | 100 65+, 160 65-
    steps click nieznany 2 release b 0; run -> closed | 310 66-
    steps click left 1; run -> closed | 100 x37+, 160 x37-
    steps click a 2 open https://a.org/ą 1; run -> closed | 100 65+, 160 65-, 220 65+, 280 65-, 310 open https://a.org/ą
    steps click a 2; run; wait 170; keyHold 200 -> closed | 100 65+, 160 65-, 220 65+, 420 65-
    steps click lmb 1 click rmb 1 click mb4 1; swap 1; run -> closed | 100 b1+, 160 b1-, 190 b0+, 250 b0-, 280 b3+, 340 b3-
    steps click mmb 1 click rmb 1 click mb5 1; run -> closed | 100 b2+, 160 b2-, 190 b1+, 250 b1-, 280 b4+, 340 b4-
    swap 1; say dwuklik; wait 130; swap 0 -> closed | 60 b1+, 120 b1-, 180 b0+, 240 b0-
    steps hold a 1000 click b 1 hold lmb 0 open x.exe 1; run; wait 500; lock -> closed | 100 65+, 1100 65-, 1190 66-
    say dwuklik; wait 100; lock -> closed | 60 b0+, 120 b0-
    steps hold shift 0 hold mmb 0 hold a 60000; toggle; aim 334 130; press; wait 400; stop -> closed | 265 16++, 295 b2++, 325 65+, 60325 65-)";

constexpr char grid[] = R"(
    say pokaż siatkę -> closed grid 0 0 1920 1080
    say pokaż siatkę; say siedemnaście; say kliknij dwa razy na jeden -> closed grid 0 0 1920 1080
    say pokaż siatkę; say szesnaście; say pięć -> closed grid 1440 810 480 270 at 1680 945
    say pokaż siatkę; say szesnaście; say jeden; say cztery; say dwa -> closed grid 1620 877 60 34 at 1650 894
    say pokaż siatkę; say trzy; say pokaż siatkę; say trzy -> closed grid 960 0 480 270 at 1200 135
    say pokaż siatkę; say dwa; say kliknij -> closed at 720 135 | 60 b0+, 120 b0-
    say pokaż siatkę; say schowaj siatkę; say jeden -> closed
    left monitor; say pokaż siatkę -> closed grid -1281 -50 1281 1024 at -640 462
    left monitor; say pokaż siatkę; say dwa -> closed grid -961 -50 320 256 at -801 78
    cursor 5000 5000; say pokaż siatkę -> closed grid 0 0 1920 1080
    cursor 100 100; toggle; say pokaż siatkę; say kliknij -> open grid 0 0 1920 1080 at 100 100
    toggle; say pokaż siatkę; say prawy klik; wait 500 -> open | 60 b1+, 120 b1-
    say pokaż siatkę; lock -> closed  say pokaż siatkę; monitors -> closed
    say pokaż siatkę; destroy grid -> closed  say pokaż siatkę; destroy grid; say pokaż siatkę; stop -> closed)";

constexpr char labels[] = R"(
    label 2; say jeden; wait 200; say jeden -> closed at 60 40 | 60 b0+, 120 b0-
    label 2; say kliknij dwa razy na dwa -> closed at 600 520 | 60 b0+, 120 b0-, 180 b0+, 240 b0-
    label 2; say kliknij prawy na jeden -> closed at 60 40 | 60 b1+, 120 b1-
    label 2; say trzy; say kliknij prawy na trzy; wait 500 -> closed labels 2
    label 2; say kliknij -> closed labels 2 | 60 b0+, 120 b0-  label 1; say schowaj elementy -> closed
    label 1; say pokaż siatkę; say dwa -> closed grid 480 0 480 270 at 720 135  label 1; lock -> closed
    label 1; monitors -> closed  label 1; destroy grid -> closed  label 1; stop -> closed
    label 1; say pokaż elementy; wait 50 -> closed labels 1 unseen searched 2
    label 1; say pokaż elementy; wait 50; now; say jeden; wait 100 -> closed labels 1 searched 2 at 60 40 | 60 b0+, 120 b0-
    large; say pokaż elementy; wait 500 -> closed  large; say elementy strony; wait 500 -> closed labels 1
    small; say pokaż siatkę; say pokaż elementy; wait 50; say pokaż elementy -> closed
    small; say pokaż elementy; wait 50; say ukryj elementy; wait 500 -> closed
    small; say pokaż elementy; wait 50; lock; wait 500 -> closed
    small; say pokaż elementy; wait 50; post 2 0 4660; wait 500 -> closed labels 1
    small; say pokaż elementy; wait 50; post 2 0 0; wait 500 -> closed
    small; say pokaż elementy; wait 60; say ukryj elementy; say pokaż elementy; wait 50 -> closed labels 1 searched 2)";

constexpr char motion[] = R"(
    toggle; right 1; wait 14 -> open  toggle; right 1; wait 30 -> open 295 230
    toggle; right 1000; down 1000; right -990; down -995; wait 15 -> open 304 235
    toggle; right -200; down -200; right -95; down -31; wait 15 -> open 0 0
    toggle; right 294; down 230; wait 15 -> open 587 459
    toggle; right 2147483647; right 2147483647; wait 15 -> open 587 230
    toggle; right 50; down 50; toggle; right 70; down 70; toggle; wait 15 -> open at 1030 610
    gaze; toggle; look 594 530; wait 15 -> open 399 335 field 1
    gaze; toggle; look 297 227; wait 15 -> open 295 229  gaze; toggle; look 296 228; wait 15 -> open
    gaze; toggle; look 2000 -2000; wait 15 -> open 587 0
    second monitor; gaze; toggle; look -706 230; wait 15 -> open 0 230 at 2420 500
    toggle; look 594 530; wait 15 -> open  gaze; tracker 1; toggle; look 594 530; wait 15 -> open
    gaze; tracker 5; toggle; look 594 530; wait 15 -> open
    gaze; toggle; toggle; look 594 530; wait 234; toggle; wait 15 -> open 399 335 field 1
    gaze; toggle; toggle; look 594 530; wait 235; toggle; wait 15 -> open
    gaze; toggle; aim 294 229; wait 690; look 594 530; wait 15 -> open 399 334 field 1
    gaze; toggle; aim 294 229; wait 675; look 594 530; wait 15 -> open 294 229
    gaze; toggle; rest 334 130; wait 914 -> open 334 130 field 0 ring
    gaze; toggle; rest 334 130; wait 1300 -> closed | 1165 65+, 1225 65-
    gaze; toggle; rest 334 130; wait 615; rest 394 270; wait 899 -> open 394 270 field 1 ring
    gaze; toggle; rest 334 130; wait 615; rest 294 230; wait 15; rest 334 130; wait 600 -> open 334 130 field 0 ring
    gaze; toggle; rest 334 130; wait 900; right 1; wait 1000 -> open 335 130 field 0
    gaze; dwell 0; toggle; rest 334 130; wait 1500 -> open 334 130 field 0
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 914 -> open 560 230 arrow 1 ring
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 915 -> open 560 230 arrow 1 wheel 1
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 1829 -> open 560 230 arrow 1 wheel 1 ring
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 1830 -> open 560 230 arrow 1 wheel 2)";

INSTANTIATE_TEST_SUITE_P(Toggling, Scenes, testing::ValuesIn(rowsOf(toggling)));
INSTANTIATE_TEST_SUITE_P(Choosing, Scenes, testing::ValuesIn(rowsOf(choosing)));
INSTANTIATE_TEST_SUITE_P(Steps, Scenes, testing::ValuesIn(rowsOf(steps)));
INSTANTIATE_TEST_SUITE_P(Grid, Scenes, testing::ValuesIn(rowsOf(grid)));
INSTANTIATE_TEST_SUITE_P(Labels, Scenes, testing::ValuesIn(rowsOf(labels)));
INSTANTIATE_TEST_SUITE_P(Motion, Scenes, testing::ValuesIn(rowsOf(motion)));

TEST_F(Scenes, OpeningPaintsBeforeShowingClosingUndoesTheCaptureFirstAndAnIdleWheelPaintsNothing) {
    startWith({wheelOf(4)});
    const auto whatHappened = [this] {
        return journal({JournalKind::window, JournalKind::picture, JournalKind::focus, JournalKind::cursor,
                        JournalKind::capture, JournalKind::timer});
    };
    desktop.addProgram("chat"); // next in line when the wheel goes
    play("takeFocus; now; toggle");
    EXPECT_EQ(whatHappened(),
              "place wheel 666,310 588x460, paint wheel, show wheel, focus wheel, capture at 960,540, "
              "timer of wheel 15");
    play("now; gaze; wait 1500; right 0; look 294 230; wait 900");
    EXPECT_EQ(wheelPaintCount(), paints);
    play("now; toggle");
    EXPECT_EQ(whatHappened(),
              "timer of wheel stopped, capture ended, hide wheel, cursor 960,540, focus game");
}

} // namespace
