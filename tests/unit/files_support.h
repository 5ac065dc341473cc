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
#include <system_error>
#include <vector>

/// A folder that no other test uses, also in a test program that runs at the same time; gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device random;
        do
            folder = std::filesystem::temp_directory_path() / ("rotika-test-" + std::to_string(random()));
        while (!std::filesystem::create_directory(folder));
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
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

private:
    std::filesystem::path folder;
};

/// A fresh process whose program lies in an empty folder.
class FilesTest : public testing::Test {
public:
    FilesTest() {
        resetEngineForTest();
        setSimulatedProgramFolder(folder.path());
    }
    ~FilesTest() override { resetSimulatedFiles(); }

    TemporaryFolder folder;
};

template <typename Text>
Text repeated(const Text& piece, std::size_t count) {
    Text text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

/// A wheel as one line, with everything that differs from a default shown:
/// "name[field{click a 2, hold b 0, open c 1} delay=5 bgr=ABCDEF icon=i voice=v; field{}]".
template <typename Item>
std::string describe(const std::vector<Item>& items, const std::string& separator = " ") {
    std::string text;
    for (const Item& item : items)
        text += (&item == &items.front() ? "" : separator) + describe(item);
    return text;
}

inline std::string describe(const ActionStep& step) {
    static const char* const kinds[] = {"click ", "hold ", "release ", "open "};
    const bool opens = step.kind == StepKind::open;
    return kinds[static_cast<int>(step.kind)] + utf8FromUtf16(opens ? step.target : step.key.text) + " " +
           std::to_string(step.value);
}

inline std::string describe(const WheelAction& action) {
    std::ostringstream text;
    text << utf8FromUtf16(action.name) << "{" << describe(action.steps, ", ") << "}";
    if (action.delay != 30)
        text << " delay=" << action.delay;
    if (action.hasColor)
        text << " bgr=" << std::hex << std::uppercase << action.color;
    if (!action.icon.empty())
        text << " icon=" << utf8FromUtf16(action.icon);
    if (!action.voice.empty())
        text << " voice=" << utf8FromUtf16(action.voice);
    return text.str();
}

inline std::string describe(const Wheel& wheel) {
    return utf8FromUtf16(wheel.name) + "[" + describe(wheel.actions, "; ") + "]";
}
