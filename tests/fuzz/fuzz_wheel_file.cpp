#include "base/text.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

using namespace rotika;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// The file that passes the bytes to the reader, one per process, removed at the end.
struct TemporaryFile {
    const std::string path = "/tmp/rotika-fuzz-" + std::to_string(getpid()) + ".json";
    ~TemporaryFile() { std::remove(path.c_str()); }
};

std::vector<Wheel> load(std::string_view bytes) {
    static const TemporaryFile file;
    std::ofstream(file.path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::vector<Wheel> wheels;
    std::u16string problems;
    const bool isClean = loadWheelFile(utf16FromUtf8(file.path), wheels, problems);
    require(isClean == problems.empty());
    require(isClean || problems.back() == u'\n');
    return wheels;
}

void requireLimits(const WheelAction& action) {
    require(action.delay >= 0 && action.delay <= 2000);
    for (const ActionStep& step : action.steps) {
        require(step.kind == StepKind::open || step.key.valid);
        require(step.kind != StepKind::click || (step.value >= 1 && step.value <= 100));
        require(step.kind != StepKind::hold || (step.value >= 0 && step.value <= 60000));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    // The decoder's output is valid UTF-16, so it survives a round trip unchanged.
    const std::u16string text = utf16FromUtf8(bytes);
    require(utf16FromUtf8(utf8FromUtf16(text)) == text);
    const std::vector<Wheel> wheels = load(bytes);
    for (const Wheel& wheel : wheels) {
        require(!wheel.actions.empty() && wheel.actions.size() <= maxFieldCount);
        for (const WheelAction& action : wheel.actions)
            requireLimits(action);
    }
    // The writer's output is a fixed point of reading and writing.
    const std::string written = serializeWheels(wheels);
    require(serializeWheels(load(written)) == written);
    return 0;
}
