#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "model/status_codes.h"
#include "platform/clock.h"
#include "platform/injection.h"
#include "voice/phrase_table.h"
#include "voice/voice_dispatch.h"

#include <functional>
#include <map>
#include <sstream>

using namespace rotika;

// A scene is a sequence of user actions and desktop events, followed after the arrow by the visible state at
// its end. The engine is started with an eye tracker that is connected but not enabled, and one wheel, whose
// four fields click the keys 65 to 68. "lampa" is the phrase of the first, "radio" that of a voice function
// of key 68. After "|" come the injected events with their time in ms since the start or "now": "65+" is key
// 65 down, "b0-" the left button up, "16++" a key that stays down.

namespace {

class Scenes : public EngineTest, public testing::WithParamInterface<Row> {
protected:
    void play(const std::string& script);
    std::string seen();

    // Arguments of a verb
    std::int32_t number() {
        std::int32_t value = 0;
        words >> value;
        return value;
    }
    Point point() {
        const std::int32_t x = number();
        return {x, number()};
    }
    Rect rect() {
        const Point corner = point();
        return {corner.x, corner.y, number(), number()};
    }
    std::string text() {
        std::string rest;
        std::getline(words >> std::ws, rest);
        return rest;
    }

    /// Simulates a gaze sample at a layer point, in ten-thousandths of the screen.
    void look(Point point) const {
        const Rect place = desktop.windowNamed("wheel")->place;
        const Rect& screen = desktop.monitors.front();
        engineState.gazeX = ((place.left + point.x) * 10000 + screen.width() / 2) / screen.width();
        engineState.gazeY = ((place.top + point.y) * 10000 + screen.height() / 2) / screen.height();
        engineState.gazeSampleTick = tickCount();
    }
    void rest(Point point) const { // also moves the virtual cursor
        std::tie(engineState.cursorX, engineState.cursorY) = std::tie(point.x, point.y);
        look(point);
    }
    void tapKey(std::uint16_t virtualKey) {
        desktop.pressKey(virtualKey);
        desktop.releaseKey(virtualKey);
        desktop.pumpMessages();
    }
    void setWheels() {
        engineState.wheels.clear();
        for (int fieldCount = 0; words >> fieldCount;)
            engineState.wheels.push_back(wheelOf(fieldCount));
    }
    void post(std::int32_t message) {
        const Point numbers = point();
        postWindowMessage(engineState.mainWindow, MsgVoiceCommand + static_cast<std::uint32_t>(message),
                          static_cast<std::uintptr_t>(numbers.x), numbers.y);
        desktop.settle();
    }
    std::uint64_t startMs = 0;

private:
    WheelAction& firstField() { return engineState.wheels[0].actions[0]; }
    void addElement(const Rect& rect) {
        desktop.elements.roots.push_back({{rect, ControlType::button, true, false, false}});
    }

    std::istringstream words;
    const std::map<std::string, std::function<void()>> verbs = {
        // settings and the machine
        {"wheels", [this] { setWheels(); }},
        {"steps", [this] { firstField().steps = stepsOf(text()); }},
        {"delay", [this] { firstField().delay = number(); }},
        {"sendDelay", [this] { engineConfig.sendDelay = number(); }},
        {"keyHold", [this] { engineConfig.keyHold = number(); }},
        {"takeFocus", [] { engineConfig.takeFocus = true; }},
        {"local", [] { engineConfig.voiceGlobal = false; }},
        {"gaze", [] { engineConfig.gazeEnabled = true; }},
        {"dwell", [this] { engineConfig.gazeDwell = number(); }},
        {"tracker", [this] { engineState.gazeStatus = number(); }},
        {"swap", [this] { desktop.buttonsAreSwapped = number() != 0; }},
        {"program", [this] { desktop.focusProgram(desktop.addProgram(text())); }},
        {"focus", [this] { desktop.focusProgram(desktop.windowNamed(text())); }},
        {"exit", [this] { desktop.closeProgram(desktop.windowNamed(text())); }},
        {"monitors", [this] { desktop.changeMonitors(std::vector(1, rect())); }},
        {"monitor", [this] { desktop.monitors.push_back(rect()); }},
        {"element", [this] { addElement(rect()); }},
        {"label", [this] { play("element 10 20 111 61; scan"); }},
        {"labels", [this] { play("element 10 20 111 61; element 500 500 700 540; scan"); }},
        {"scan", [this] { play("say pokaż elementy; wait 500; now"); }},
        {"twice", [this] { desktop.pressDelivery = PressDelivery::hookAndRaw; }},
        // user actions
        {"toggle", [this] { pressToggleKey(); }},
        {"shell", [] { OverlayToggleWheel(); }},
        {"key", [this] { tapKey(static_cast<std::uint16_t>(number())); }},
        {"hold", [this] { desktop.pressKey(static_cast<std::uint16_t>(number())), desktop.pumpMessages(); }},
        {"let", [this] { desktop.releaseKey(static_cast<std::uint16_t>(number())), desktop.pumpMessages(); }},
        {"aim", [this] { aimAt(point()); }},
        {"right", [this] { desktop.moveMouse(number(), 0); }},
        {"down", [this] { desktop.moveMouse(0, number()); }},
        {"press", [this] { clickMouse(); }},
        {"inject", [] { injectMouseButton(0, InputMotion::downUntilReleased); }},
        {"cursor", [this] { desktop.cursor = point(); }},
        {"look", [this] { look(point()); }},
        {"rest", [this] { rest(point()); }},
        {"say", [this] { dispatchRecognisedText(text()), desktop.settle(); }},
        // messages, time and system events
        {"run", [this] { play("post 1 0 0"); }}, // the first field, after 100 ms
        {"post", [this] { post(number()); }},
        {"wait", [this] { desktop.advanceBy(static_cast<std::uint64_t>(number())); }},
        {"now", [this] { desktop.clearJournal(), startMs = desktop.clock.now(); }},
        {"lock", [this] { desktop.lockSession(true); }},
        {"unlock", [this] { desktop.lockSession(false); }},
        {"close", [this] { desktop.requestClose("wheel"); }},
        {"destroy", [this] { desktop.destroyOverlay(text()); }},
        {"quit", [this] { desktop.destroyMainWindow(); }},
        {"stall", [this] { desktop.captureWasSilent = true; }},
        {"stop", [] { OverlayEngineStop(); }},
    };
};

void Scenes::play(const std::string& script) {
    std::istringstream parts(script);
    std::string verb;
    for (std::string part; std::getline(parts, part, ';');) {
        words = std::istringstream(part);
        words >> verb;
        ASSERT_TRUE(verbs.contains(verb)) << part;
        verbs.at(verb)();
    }
}

/// In every state, capture, timer and window must match the wheel's visibility.
std::string Scenes::seen() {
    const bool isOpen = OverlayIsWheelVisible();
    const PlatformWindow& wheel = *desktop.windowNamed("wheel");
    const bool isActive = isOpen || engineState.holdsFocus;
    EXPECT_TRUE(desktop.isCaptured() == isOpen && desktop.timers.size() == (isActive ? 1U : 0U) &&
                wheel.isShown == isActive && (wheel.place.width() > 1 || !isOpen));
    std::ostringstream text;
    const auto append = [&text](bool isSo, const std::string& word, auto... numbers) {
        if (isSo)
            ((text << word) << ... << (" " + std::to_string(numbers)));
    };
    const bool hasGrid = engineState.gridVisible;
    const bool hasLabels = engineState.elementsVisible;
    const Point aimed{engineState.cursorX, engineState.cursorY};
    const PlatformWindow& grid = *desktop.windowNamed("grid");
    text << (isOpen ? "open" : engineState.restorePending ? "unrestored" : "closed");
    append(isOpen && aimed != Point{294, 230}, "", aimed.x, aimed.y);
    append(isOpen && engineState.hoveredField >= 0, " field", engineState.hoveredField);
    append(isOpen && engineState.hoveredArrow >= 0, " arrow", engineState.hoveredArrow);
    append(engineState.activeWheel != 0, " wheel", engineState.activeWheel);
    append(isOpen && !shown<OutlinedArc>().empty(), " ring");
    append(hasGrid, " grid", grid.place.left, grid.place.top, grid.place.width(), grid.place.height());
    append(hasLabels, " labels", engineState.elementRects.size());
    append(grid.isShown != (hasGrid || hasLabels), grid.isShown ? " left over" : " unseen");
    append(desktop.searches.size() > 1, " searched", desktop.searches.size());
    append(desktop.screenWakeUps > 0, " woken", desktop.screenWakeUps);
    append(desktop.cursor != Point{960, 540}, " at", desktop.cursor.x, desktop.cursor.y);
    append(desktop.foreground != desktop.windowNamed("game"), " in " + desktop.foreground->name);
    if (!isOpen)
        desktop.advanceBy(70'000);
    std::string input;
    for (const JournalEntry& entry : desktop.journal)
        if (entry.kind == JournalKind::input || entry.kind == JournalKind::target)
            input += (input.empty() ? " | " : ", ") + std::to_string(entry.atMs - startMs) + " " + entry.text;
    return text.str() + replaced(input, {"key ", "", "button ", "b", "extended ", "x", " down and stays",
                                         "++", " down", "+", " up", "-"});
}

TEST_P(Scenes, EndInTheExpectedState) {
    startWith({wheelOf(4)});
    engineState.wheels[0].actions[0].voice = u"lampa";
    engineState.wheels[0].actions[1].voice = u"kliknij";
    engineState.voiceActions.push_back(field("d", u"", u"radio"));
    rebuildPhraseTable();
    engineState.gazeStatus = gazeStatusActive;
    desktop.elements.area = desktop.monitors.front();
    desktop.elementSearchMs = 100;
    play(GetParam().first);
    EXPECT_EQ(seen(), GetParam().second);
}

constexpr char scenes[] = R"(
    # toggling
    toggle -> open  shell -> open  say pokaż koło -> open  say schowaj koło -> closed  stop -> closed
    lock; toggle -> closed
    lock; toggle; shell; say pokaż koło; post 1 0 1; say kliknij; say pokaż siatkę -> closed woken 4
    lock; unlock; toggle -> open  close -> closed  destroy wheel -> closed  destroy wheel; toggle -> open
    toggle; aim 334 130; say pokaż koło -> open 334 130 field 0  toggle; say schowaj koło -> closed
    toggle; stop -> unrestored  toggle; quit -> unrestored  toggle; lock -> closed  toggle; monitors 0 0 1800 1000 -> closed
    toggle; close -> closed  toggle; destroy wheel -> closed  toggle; stall; wait 15 -> closed
    takeFocus; toggle -> open in wheel  takeFocus; program chat; toggle; toggle -> closed in chat
    takeFocus; program chat; toggle; exit chat; toggle -> closed
    program chat; toggle; program other; toggle -> closed in chat
    # selection
    toggle; aim 334 130; press -> closed | 265 65+, 325 65-
    toggle; aim 394 270; press; wheels 1 -> closed | 265 66+, 325 66-
    toggle; aim 334 130; inject; wait 0; now -> closed | 250 65+, 310 65-  steps; toggle; aim 334 130; press -> closed
    toggle; aim 80 20; press -> open 80 20
    wheels 4 4 4; toggle; aim 20 230; press -> open 20 230 arrow 0 wheel 2
    twice; wheels 4 4 4; toggle; aim 560 230; press -> open 560 230 arrow 1 wheel 2
    post 1 0 1 -> closed | 100 66+, 160 66-
    sendDelay 400; wheels 4 3; toggle; post 1 1 2 -> closed | 400 67+, 460 67-  steps; toggle; run -> closed
    post 4 0 0 -> closed | 100 18++, 130 9+, 190 9-, 220 18-
    wheels 4 1 24; toggle; aim 194 190; say następne koło -> open 194 190 field 0 wheel 1
    wheels 4 1 24; toggle; aim 194 190; say poprzednie koło -> open 194 190 field 19 wheel 2
    cursor 100 100; say kliknij -> closed at 100 100 | 60 b0+, 120 b0-
    say dwuklik -> closed | 60 b0+, 120 b0-, 180 b0+, 240 b0-  say prawy klik -> closed | 60 b1+, 120 b1-
    toggle; aim 334 130; now; say kliknij -> closed | 250 65+, 310 65-  toggle; say kliknij; wait 500 -> open
    toggle; aim 334 130; now; say prawy klik; wait 500 -> open 334 130 field 0 | 60 b1+, 120 b1-
    post 1 1 0; post 1 0 4; post 1 0 -1; post 1 -1 0; post 4 2 0; post 4 -1 0; wait 500 -> closed
    toggle; post 1 0 4; post 1 9 99; post 4 -1 0; post 0 0 0; post 0 99 0; post 0 600 0; wait 500 -> open
    toggle; post 3 0 0; post 3 0 4660; post 2 0 4660; post 5 0 0; post 5 0 4660; post -1 0 0; wait 500 -> open
    say lampa -> closed | 100 65+, 160 65-  toggle; say lampa -> closed | 250 65+, 310 65-
    local; say lampa -> closed  local; toggle; say lampa -> closed | 250 65+, 310 65-
    local; say radio -> closed | 100 68+, 160 68-  toggle; say radio -> closed | 250 68+, 310 68-
    local; say kliknij -> closed | 60 b0+, 120 b0-  toggle; say lampa [unk] -> open  toggle; say Lampa -> open
    # keys on a wheel that has the focus: 37 to 40 left, up, right, down, 13 Enter, 32 Space, 27 Escape, 33 page up,
    # 34 page down, 48 to 57 and 96 to 105 the digits
    toggle; key 39; key 50; key 27 -> open  toggle; focus wheel; key 39; key 50; key 27 -> open in wheel  takeFocus; key 50; key 27; toggle -> open in wheel
    takeFocus; toggle; key 37 -> open 397 127 field 0 in wheel
    takeFocus; toggle; key 39; key 39; key 40 -> open 191 333 field 2 in wheel
    takeFocus; toggle; hold 39; hold 39; hold 39; key 38; key 37 -> open 397 127 field 0 in wheel
    takeFocus; toggle; aim 334 130; key 38 -> open 191 127 field 3 in wheel
    takeFocus; toggle; key 39; key 13 -> closed | 250 65+, 310 65-
    takeFocus; toggle; key 39; key 39; key 32 -> closed | 250 66+, 310 66-
    takeFocus; toggle; key 52 -> closed | 250 68+, 310 68-  takeFocus; toggle; key 98 -> closed | 250 66+, 310 66-
    takeFocus; toggle; key 53; key 48; key 65; key 13 -> open in wheel  takeFocus; toggle; key 34 -> open in wheel
    wheels 10; takeFocus; toggle; key 48 -> closed | 250 74+, 310 74-
    wheels 10; takeFocus; toggle; key 96 -> closed | 250 74+, 310 74-
    wheels 4 1 24; takeFocus; toggle; key 37; key 34 -> open 397 127 field 0 wheel 1 in wheel
    wheels 4 1 24; takeFocus; toggle; hold 33; hold 33 -> open wheel 1 in wheel
    takeFocus; toggle; hold 51; hold 51; aim 334 130 -> open 334 130 field 0 in wheel
    takeFocus; toggle; hold 51; hold 51; aim 334 130; now; let 51 -> closed | 250 67+, 310 67-
    takeFocus; toggle; key 39; hold 13; wait 2000; hold 13 -> open 397 127 field 0 in wheel
    takeFocus; toggle; hold 27; hold 27 -> open in wheel  takeFocus; toggle; key 27 -> closed
    takeFocus; toggle; hold 49; key 39; let 49 -> open 397 333 field 1 in wheel
    takeFocus; hold 50; toggle; hold 50; let 50 -> open in wheel  takeFocus; toggle; hold 50; toggle; toggle; let 50 -> open in wheel
    takeFocus; toggle; hold 50; program chat; let 50 -> open 397 333 field 1 in chat
    takeFocus; toggle; hold 50; program chat; focus wheel; let 50 -> open 397 333 field 1 in wheel
    takeFocus; toggle; hold 13; aim 334 130; now; press -> closed in wheel | 1255 65+, 1315 65-
    takeFocus; toggle; hold 65; now; say lampa; wait 300; let 65; wait 45 -> closed | 565 65+, 625 65-
    takeFocus; toggle; hold 65; now; say lampa; program chat; wait 15 -> closed in chat | 265 65+, 325 65-
    takeFocus; toggle; hold 65; toggle -> closed in wheel  takeFocus; toggle; hold 65; toggle; toggle -> open in wheel
    takeFocus; toggle; hold 65; say lampa; lock -> closed  takeFocus; toggle; hold 65; say lampa; stop -> closed
    takeFocus; toggle; hold 65; toggle; quit -> closed  takeFocus; toggle; hold 65; toggle; destroy wheel -> closed
    takeFocus; gaze; toggle; rest 334 130; wait 900; key 39; look 334 130; wait 600 -> open 397 333 field 1 in wheel
    # steps
    steps hold a 1500 release b 0; run -> closed | 100 65+, 1600 65-, 1630 66-
    steps hold shift 0 click b 1; run -> closed | 100 16++, 130 66+, 190 66-
    steps click nieznany 2 release b 0; run -> closed | 310 66-
    steps click a 2 open https://a.org/ą 1; run -> closed | 100 65+, 160 65-, 220 65+, 280 65-, 310 open https://a.org/ą
    steps click a 2; run; wait 170; keyHold 200 -> closed | 100 65+, 160 65-, 220 65+, 420 65-
    steps click lmb 1 click rmb 1 click mb4 1; swap 1; run -> closed | 100 b1+, 160 b1-, 190 b0+, 250 b0-, 280 b3+, 340 b3-
    steps hold a 1000 click b 1 hold lmb 0 open x.exe 1; run; wait 500; lock -> closed | 100 65+, 1100 65-, 1190 66-
    say dwuklik; wait 100; lock -> closed | 60 b0+, 120 b0-
    steps hold shift 0 hold mmb 0 hold a 60000; toggle; aim 334 130; press; wait 400; stop -> closed | 265 16++, 295 b2++, 325 65+, 60325 65-
    # grid
    say pokaż siatkę -> closed grid 0 0 1920 1080
    say pokaż siatkę; say siedemnaście; say kliknij dwa razy na jeden -> closed grid 0 0 1920 1080
    say pokaż siatkę; say szesnaście; say pięć -> closed grid 1440 810 480 270 at 1680 945
    say pokaż siatkę; say szesnaście; say jeden; say cztery; say dwa -> closed grid 1620 877 60 34 at 1650 894
    say pokaż siatkę; say trzy; say pokaż siatkę; say trzy -> closed grid 960 0 480 270 at 1200 135
    say pokaż siatkę; say dwa; say kliknij -> closed at 720 135 | 60 b0+, 120 b0-
    say pokaż siatkę; say schowaj siatkę; say jeden -> closed
    monitor -1281 -50 0 974; cursor -1 10; say pokaż siatkę -> closed grid -1281 -50 1281 1024 at -640 462
    cursor 100 100; toggle; say pokaż siatkę; say kliknij -> open grid 0 0 1920 1080 at 100 100
    toggle; say pokaż siatkę; say prawy klik; wait 500 -> open | 60 b1+, 120 b1-
    say pokaż siatkę; lock -> closed  say pokaż siatkę; monitors 0 0 1800 1000 -> closed
    say pokaż siatkę; destroy grid -> closed  say pokaż siatkę; destroy grid; say pokaż siatkę; stop -> closed
    # labels
    labels; say jeden; wait 200; say jeden -> closed at 60 40 | 60 b0+, 120 b0-
    labels; say kliknij dwa razy na dwa -> closed at 600 520 | 60 b0+, 120 b0-, 180 b0+, 240 b0-
    labels; say trzy; say kliknij prawy na trzy; wait 500 -> closed labels 2
    labels; say kliknij -> closed labels 2 | 60 b0+, 120 b0-  label; say schowaj elementy -> closed
    label; say pokaż siatkę; say dwa -> closed grid 480 0 480 270 at 720 135  label; lock -> closed
    label; monitors 0 0 1800 1000 -> closed  label; destroy grid -> closed  label; stop -> closed
    label; say pokaż elementy; wait 50 -> closed labels 1 unseen searched 2
    label; say pokaż elementy; wait 50; now; say jeden; wait 100 -> closed labels 1 searched 2 at 60 40 | 60 b0+, 120 b0-
    element 0 0 1000 800; say pokaż elementy; wait 500 -> closed  element 0 0 1000 800; say elementy strony; wait 500 -> closed labels 1
    element 0 0 50 50; say pokaż siatkę; say pokaż elementy; wait 50; say pokaż elementy -> closed
    element 0 0 50 50; say pokaż elementy; wait 50; say ukryj elementy; wait 500 -> closed
    element 0 0 50 50; say pokaż elementy; wait 50; lock; wait 500 -> closed
    element 0 0 50 50; say pokaż elementy; wait 50; post 2 0 4660; wait 500 -> closed labels 1
    element 0 0 50 50; say pokaż elementy; wait 50; post 2 0 0; wait 500 -> closed
    element 0 0 50 50; say pokaż elementy; wait 60; say ukryj elementy; say pokaż elementy; wait 50 -> closed labels 1 searched 2
    # motion
    toggle; right 1; wait 14 -> open  toggle; right 1; wait 30 -> open 295 230
    toggle; right 1000; down 1000; right -990; down -995; wait 15 -> open 304 235
    toggle; right -200; down -200; right -95; down -31; wait 15 -> open 0 0
    toggle; right 2147483647; right 2147483647; wait 15 -> open 587 230
    toggle; right 50; down 50; toggle; right 70; down 70; toggle; wait 15 -> open at 1030 610
    gaze; toggle; look 594 530; wait 15 -> open 399 335 field 1
    gaze; toggle; look 297 227; wait 15 -> open 295 229  gaze; toggle; look 296 228; wait 15 -> open
    gaze; toggle; look 2000 -2000; wait 15 -> open 587 0
    monitor 1920 0 2920 1000; cursor 2420 500; gaze; toggle; look -706 230; wait 15 -> open 0 230 at 2420 500
    toggle; look 594 530; wait 15 -> open  gaze; tracker 1; toggle; look 594 530; wait 15 -> open
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
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 915 -> open 560 230 arrow 1 wheel 1
    gaze; wheels 4 4 4; toggle; rest 560 230; wait 1830 -> open 560 230 arrow 1 wheel 2)";

INSTANTIATE_TEST_SUITE_P(All, Scenes, testing::ValuesIn(rowsOf(scenes)));

TEST_F(Scenes, OpeningPaintsBeforeShowingClosingEndsTheCaptureFirstAndAnIdleWheelIsNotRepainted) {
    startWith({wheelOf(4)});
    desktop.addProgram("chat"); // would get the focus when the wheel closes
    play("takeFocus; now; toggle");
    EXPECT_EQ(journal(), "place wheel 666,310 588x460, paint wheel, show wheel, focus wheel, "
                         "capture at 960,540, timer of wheel 15");
    play("gaze; wait 1500; now; right 0; look 294 230; wait 900");
    EXPECT_EQ(journal(), "");
    play("toggle");
    EXPECT_EQ(journal(), "timer of wheel stopped, capture ended, hide wheel, cursor 960,540, focus game");
}

} // namespace
