#pragma once

#include "core/engine_config.h"
#include "core/engine_state.h"
#include "core/private_messages.h"
#include "core/wheel_records.h"
#include "files_support.h"
#include "overlay.h"

#include "platform/simulated/simulated_desktop.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

/// A fresh process on a fresh simulated desktop: the engine not yet started.
class EngineTest : public FilesTest {
public:
    EngineTest();
    ~EngineTest() override;

    /// Starts the engine with gaze and voice off and puts `wheels` in force.
    void startWith(std::vector<Wheel> wheels);

    /// Presses and releases the toggle key.
    void pressToggleKey();

    /// Moves the virtual cursor of the open wheel there, with the real mouse and one tick.
    void aimAt(Point point);
    /// Puts the virtual cursor there without a mouse.
    static void putCursorAt(Point point);
    static Point virtualCursor() { return {engineState.cursorX, engineState.cursorY}; }

    /// A press and release of the real left button, and what follows at once.
    void clickMouse();

    void postToMain(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam = 0);

    /// What the engine did, joined by ", ".
    std::string journal(std::initializer_list<JournalKind> kinds) const;
    /// Injected input and opened targets, each behind its time from `sinceMs`: "0 key 65 down, 60 key 65 up".
    std::string played(std::uint64_t sinceMs = 0) const;

    bool isForeground(const std::string& name) { return desktop.foreground == desktop.windowNamed(name); }
    int wheelPaintCount() { return desktop.windowNamed("wheel")->paintCount; }
    /// Those lines of the wheel's picture on show that begin with `word`.
    std::vector<std::string> shownLines(const std::string& word);

    SimulatedDesktop& desktop;
};

/// A function as a simulated library holds it.
template <typename Function>
void* exported(Function* function) {
    return reinterpret_cast<void*>(function);
}

/// What the engine's face answered.
std::string textOf(const OverlayChar* text);

// Layer points that lie in a wheel of four fields, and elsewhere
inline constexpr Point inFieldOfFour[] = {{334, 130}, {394, 270}, {254, 330}, {194, 190}};
inline constexpr Point inLeftArrow{20, 230};
inline constexpr Point inRightArrow{560, 230};
inline constexpr Point inHole{294, 230};

KeyCode keyOf(std::uint16_t virtualKey);
KeyCode mouseKey(std::uint32_t button);
ActionStep click(KeyCode key, std::int32_t count = 1);
ActionStep hold(KeyCode key, std::int32_t durationMs);
ActionStep release(KeyCode key);
ActionStep open(const std::u16string& target);

/// A field that clicks one key.
WheelAction field(const std::u16string& name, std::uint16_t virtualKey);
/// `fieldCount` fields, the first of which clicks key 65, the second 66, and so on.
Wheel wheelOf(int fieldCount);
