#pragma once

#include "core/engine_state.h"
#include "core/text.h"
#include "core/wheel_records.h"

#include "platform/simulated/simulated_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// A folder of its own for each test, gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device random;
        do {
            folder = std::filesystem::temp_directory_path() / ("rotika-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(folder));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::filesystem::path at(const std::string& name) const { return folder / name; }
    std::u16string path() const { return folder.u16string(); }
    std::u16string path(const std::string& name) const { return at(name).u16string(); }

    std::u16string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(at(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string read(const std::string& name) const {
        std::ifstream file(at(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                      std::filesystem::directory_iterator()));
    }

private:
    std::filesystem::path folder;
};

class FilesTest : public testing::Test {
protected:
    void SetUp() override {
        resetEngineForTest();
        setSimulatedProgramFolder(folder.path());
    }
    void TearDown() override {
        resetSimulatedFiles();
        resetEngineForTest();
    }

    TemporaryFolder folder;
};

/// A wheel as one line, with everything that differs from a default shown:
/// "name[field{click a 2, hold b 0, open c 1} delay=5 bgr=ABCDEF icon=i voice=v; field{}]".
inline std::string describe(const WheelAction& action) {
    static const char* const kinds[] = {"click ", "hold ", "release ", "open "};
    std::ostringstream text;
    text << utf8FromUtf16(action.name) << '{';
    for (const ActionStep& step : action.steps) {
        text << (&step == &action.steps.front() ? "" : ", ") << kinds[static_cast<int>(step.kind)]
             << utf8FromUtf16(step.kind == StepKind::open ? step.target : step.key.text) << ' ' << step.value;
    }
    text << '}';
    if (action.delay != 30) {
        text << " delay=" << action.delay;
    }
    if (action.hasColor) {
        text << " bgr=" << std::hex << std::uppercase << action.color;
    }
    if (!action.icon.empty()) {
        text << " icon=" << utf8FromUtf16(action.icon);
    }
    if (!action.voice.empty()) {
        text << " voice=" << utf8FromUtf16(action.voice);
    }
    return text.str();
}

inline std::string describe(const std::vector<WheelAction>& actions) {
    std::ostringstream text;
    for (const WheelAction& action : actions) {
        text << (&action == &actions.front() ? "" : "; ") << describe(action);
    }
    return text.str();
}

inline std::string describe(const std::vector<Wheel>& wheels) {
    std::ostringstream text;
    for (const Wheel& wheel : wheels) {
        text << (&wheel == &wheels.front() ? "" : " ") << utf8FromUtf16(wheel.name) << '['
             << describe(wheel.actions) << ']';
    }
    return text.str();
}
