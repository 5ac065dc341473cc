#include "engine_test.h"

#include "core/lifecycle.h"
#include "picture_text.h"

namespace {

SimulatedDesktop& freshDesktop() {
    resetSimulatedDesktop();
    return simulatedDesktop();
}

} // namespace

EngineTest::EngineTest() : desktop(freshDesktop()) {}

/// The workers that only a stop ends must hear of it before the others can be played to their end.
EngineTest::~EngineTest() {
    stopWorkers();
    desktop.clock.drain();
}

void EngineTest::startWith(std::vector<Wheel> wheels) {
    folder.write("config.json", R"({"gazeEnabled": false, "voiceEnabled": false})");
    ASSERT_TRUE(OverlayEngineStart());
    engineState.wheels = std::move(wheels);
    desktop.clearJournal();
}

void EngineTest::pressToggleKey() {
    desktop.pressKey(engineConfig.toggleKeyCode.vk);
    desktop.releaseKey(engineConfig.toggleKeyCode.vk);
    desktop.pumpMessages();
}

void EngineTest::aimAt(Point point) {
    desktop.moveMouse(point.x - engineState.cursorX, point.y - engineState.cursorY);
    desktop.advanceBy(15);
    ASSERT_EQ(virtualCursor(), point);
}

void EngineTest::putCursorAt(Point point) {
    engineState.cursorX = point.x;
    engineState.cursorY = point.y;
}

void EngineTest::clickMouse() {
    desktop.pressMouse(0);
    desktop.releaseMouse(0);
    desktop.settle();
}

void EngineTest::postToMain(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    ASSERT_TRUE(postWindowMessage(engineState.mainWindow, message, wParam, lParam));
    desktop.settle();
}

std::string EngineTest::journal(std::initializer_list<JournalKind> kinds) const {
    std::string text;
    for (const std::string& entry : desktop.journalOf(kinds))
        text += (text.empty() ? "" : ", ") + entry;
    return text;
}

std::string EngineTest::played(std::uint64_t sinceMs) const {
    std::string text;
    for (const JournalEntry& entry : desktop.journal)
        if (entry.kind == JournalKind::input || entry.kind == JournalKind::target)
            text += (text.empty() ? "" : ", ") + std::to_string(entry.atMs - sinceMs) + " " + entry.text;
    return text;
}

std::vector<std::string> EngineTest::shownLines(const std::string& word) {
    return linesOf(pictureLines(*desktop.windowNamed("wheel")->picture), word);
}

std::string textOf(const OverlayChar* text) {
    return utf8FromUtf16(reinterpret_cast<const char16_t*>(text));
}

KeyCode keyOf(std::uint16_t virtualKey) {
    return {.vk = virtualKey, .valid = true, .text = {}};
}

KeyCode mouseKey(std::uint32_t button) {
    return {.isMouse = true, .mouseButton = button, .valid = true, .text = {}};
}

ActionStep click(KeyCode key, std::int32_t count) {
    return {std::move(key), StepKind::click, count, {}};
}

ActionStep hold(KeyCode key, std::int32_t durationMs) {
    return {std::move(key), StepKind::hold, durationMs, {}};
}

ActionStep release(KeyCode key) {
    return {std::move(key), StepKind::release, 0, {}};
}

ActionStep open(const std::u16string& target) {
    return {{}, StepKind::open, 1, target};
}

WheelAction field(const std::u16string& name, std::uint16_t virtualKey) {
    WheelAction action;
    action.name = name;
    action.steps = {click(keyOf(virtualKey))};
    return action;
}

Wheel wheelOf(int fieldCount) {
    Wheel wheel;
    for (int i = 0; i < fieldCount; ++i)
        wheel.actions.push_back(field({}, static_cast<std::uint16_t>(65 + i)));
    return wheel;
}
