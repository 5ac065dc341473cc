#include "engine_test.h"

#include "overlay.h"
#include "platform/files.h"
#include "platform/paths.h"

#include "platform/simulated/simulated_files.h"

#include <random>

namespace {

SimulatedDesktop& freshDesktop() {
    resetSimulatedDesktop();
    return simulatedDesktop();
}

/// An empty folder that no other test uses, also in a test program that runs at the same time.
std::filesystem::path makeTemporaryFolder() {
    std::random_device source;
    std::filesystem::path folder;
    do
        folder = std::filesystem::temp_directory_path() / ("rotika-unit-" + std::to_string(source()));
    while (!std::filesystem::create_directory(folder));
    return folder;
}

} // namespace

EngineTest::EngineTest() : desktop(freshDesktop()), programFolderPath(makeTemporaryFolder()) {
    resetSimulatedFiles();
    setSimulatedProgramFolder(programFolderPath.u16string());
    resetEngineForTest();
}

EngineTest::~EngineTest() {
    desktop.clock.drain();
    resetSimulatedFiles();
    std::filesystem::remove_all(programFolderPath);
}

void EngineTest::startWith(std::vector<Wheel> wheels) {
    writeProgramFile(u"config.json", R"({"gazeEnabled": false, "voiceEnabled": false})");
    ASSERT_TRUE(OverlayEngineStart());
    engineState.wheels = std::move(wheels);
    desktop.clearJournal();
}

void EngineTest::pressToggleKey() {
    desktop.pressKey(engineConfig.toggleKeyCode.vk);
    desktop.releaseKey(engineConfig.toggleKeyCode.vk);
    desktop.pumpMessages();
}

void EngineTest::aimAt(std::int32_t x, std::int32_t y) {
    desktop.moveMouse(x - engineState.cursorX, y - engineState.cursorY);
    desktop.advanceBy(15);
    ASSERT_EQ(engineState.cursorX, x);
    ASSERT_EQ(engineState.cursorY, y);
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

std::vector<TimedText> EngineTest::played(std::uint64_t sinceMs) const {
    return desktop.timedJournalOf({JournalKind::input, JournalKind::target}, sinceMs);
}

KeyCode keyOf(std::uint16_t virtualKey) {
    KeyCode key;
    key.vk = virtualKey;
    key.valid = true;
    return key;
}

KeyCode mouseKey(std::uint32_t button) {
    KeyCode key;
    key.isMouse = true;
    key.mouseButton = button;
    key.valid = true;
    return key;
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

Wheel wheelOf(int fieldCount, const std::u16string& name) {
    Wheel wheel{name, {}};
    for (int i = 0; i < fieldCount; ++i)
        wheel.actions.push_back(field({}, static_cast<std::uint16_t>(65 + i)));
    return wheel;
}

void writeProgramFile(const std::u16string& name, const std::string& bytes) {
    ASSERT_TRUE(replaceFileBytes(joinPath(programFolder(), name), bytes));
}

void PrintTo(const TimedText& entry, std::ostream* out) {
    *out << entry.atMs << " " << entry.text;
}
