#pragma once

#include "base/text.h"
#include "core/overlay.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"

#include "platform/simulated/files.h"
#include "platform/simulated/keyboard_layout.h"
#include "platform/simulated/paths.h"
#include "platform/simulated/simulated_desktop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace rotika;

using namespace std::string_literals;
using Texts = std::vector<std::string>;
using Row = std::pair<std::string, std::string>;

/// Splits rows "input -> result", separated by line feeds or two spaces; rows "# comment" are skipped.
std::vector<Row> rowsOf(const std::string& table);
/// Replaces every occurrence of the first text of each pair by its second.
std::string replaced(std::string text, const Texts& pairs);
std::string repeated(const std::string& piece, std::size_t count);

/// Shows everything that differs from a default:
/// "name[field{click a 2, hold b 0, open c 1} delay=5 bgr=ABCDEF icon=i voice=v; field{}]".
std::string describe(const std::vector<Wheel>& wheels);
std::string describe(const std::vector<WheelAction>& actions);
/// Parses a text such as "hold shift 0 click a 2 open https://example.org 1".
std::vector<ActionStep> stepsOf(const std::string& text);
/// A field with one click step.
WheelAction field(const std::string& key, const std::u16string& name = u"",
                  const std::u16string& voice = u"");
/// A wheel whose fields click keys 65, 66 and so on.
Wheel wheelOf(int fieldCount);
/// Converts a result of the engine's interface.
std::string textOf(const OverlayChar* text);
bool activateFile(const std::u16string& path);

/// A unique folder, also among concurrent test programs; removed by the destructor.
struct TemporaryFolder {
    TemporaryFolder() { std::filesystem::create_directory(folder); }
    ~TemporaryFolder() { std::filesystem::remove_all(folder); }

    std::filesystem::path at(const std::string& name) const { return folder / utf16FromUtf8(name); }
    std::u16string path() const { return folder.u16string(); }
    std::u16string path(const std::string& name) const { return at(name).u16string(); }
    std::u16string write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("rotika-test-" + std::to_string(std::random_device()()));
};

/// Resets the engine and the simulated desktop; the program's folder is empty, the engine is not started.
class EngineTest : public testing::Test {
public:
    EngineTest();
    ~EngineTest() override;

    /// Writes config.json with `settings`, such as R"("keyHold": 5,)", followed by gaze and voice off: the
    /// first of duplicate members applies.
    void configure(const std::string& settings = "") const {
        folder.write("config.json", "{" + settings + R"("gazeEnabled": false, "voiceEnabled": false})");
    }
    /// Starts the engine with gaze and voice off and activates `wheels`.
    void startWith(std::vector<Wheel> wheels) {
        configure();
        ASSERT_TRUE(OverlayEngineStart());
        engineState.wheels = std::move(wheels);
        desktop.clearJournal();
    }
    void pressToggleKey() {
        desktop.pressKey(engineConfig.toggleKeyCode.vk);
        desktop.releaseKey(engineConfig.toggleKeyCode.vk);
        desktop.pumpMessages();
    }
    /// Reloads with those settings and handles the resulting messages.
    void reload(const std::string& settings = "") {
        configure(settings);
        OverlayReloadConfig();
        desktop.settle();
    }
    /// Moves the open wheel's virtual cursor to `point` by mouse motion and one tick.
    void aimAt(Point point) {
        desktop.moveMouse(point.x - engineState.cursorX, point.y - engineState.cursorY);
        desktop.advanceBy(15);
    }
    void clickMouse() {
        desktop.pressMouse(0);
        desktop.settle();
    }

    /// The journal's entries since it was last cleared, joined by ", ": all, or of one kind.
    std::string journal(std::optional<JournalKind> kind = {}) const;
    /// The draw commands of that kind in the wheel's picture.
    template <typename Command>
    std::vector<Command> shown() {
        std::vector<Command> found;
        for (const DrawCommand& each : desktop.windowNamed("wheel")->picture.value().commands)
            if (const auto* command = std::get_if<Command>(&each))
                found.push_back(*command);
        return found;
    }

    TemporaryFolder folder;
    SimulatedDesktop& desktop;
};
