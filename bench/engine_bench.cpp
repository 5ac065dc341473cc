// Work of the engine on the owner thread, measured in-process on a real X server.

#include "files/key_names.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/overlay_window.h"
#include "platform/paths.h"
#include "platform/platform.h"
#include "platform/pointer.h"
#include "target_reporter.h"
#include "wheel/painter.h"
#include "wheel/tick.h"
#include "wheel/wheel_layout.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace rotika;

namespace {

std::u16string iconPath;

/// A round trip: the reply comes after the server has executed all earlier requests.
void waitForServer() {
    cursorPosition();
}

/// Keeps the compositor's work on the last frame, which uses the same server, out of the figure.
void waitForCompositor() {
    waitForServer();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

Wheel wheelOf(std::size_t fieldCount, bool hasIcons) {
    Wheel wheel{u"Próba", {}};
    for (std::size_t i = 0; i < fieldCount; ++i) {
        WheelAction action;
        const std::string number = std::to_string(i + 1);
        action.name = u"Czynność " + std::u16string(number.begin(), number.end());
        action.icon = hasIcons ? iconPath : std::u16string();
        wheel.actions.push_back(std::move(action));
    }
    return wheel;
}

void showOpenWheel(std::size_t fieldCount, bool hasIcons) {
    engineState.wheels = {wheelOf(fieldCount, hasIcons)};
    engineState.activeWheel = 0;
    if (engineState.wheelWindow == nullptr)
        engineState.wheelWindow = createOverlayWindow(OverlayKind::wheel, layerWidthPx, layerHeightPx, {});
    engineState.cursorX = wheelCentre.x;
    engineState.cursorY = wheelCentre.y;
    engineState.hoveredField = -1;
    engineState.wheelVisible = true;
    paintWheel();
    showOverlayWindow(engineState.wheelWindow);
    waitForServer();
}

/// A complete repaint of every command and pixel, until the server has finished it.
void paintWhole(benchmark::State& state, std::size_t fieldCount, bool hasIcons) {
    showOpenWheel(fieldCount, hasIcons);
    waitForCompositor();
    for (auto _ : state) {
        // A changed tint, so that every pie, and with it the whole layer, differs from the last picture.
        engineConfig.segmentColor ^= 1;
        paintWheel();
        waitForServer();
    }
    state.counters["worst_ms"] = 15;
}

void paint24FieldsWithIconsAndNames(benchmark::State& state) {
    paintWhole(state, 24, true);
    state.counters["target_ms"] = 2;
}

void paint8NamedFields(benchmark::State& state) {
    paintWhole(state, 8, false);
    state.counters["target_ms"] = 1;
}

/// Cost of a mouse motion: one tick that moves the cursor to another field.
void tickWithMotionAcrossFields(benchmark::State& state) {
    showOpenWheel(24, true);
    waitForCompositor();
    static std::int32_t direction = 1;
    for (auto _ : state) {
        addRawMotion(100 * direction, 0);
        tickWheel();
        waitForServer();
    }
    direction = -direction;
    state.counters["target_ms"] = 2;
}

void tickWithoutChange(benchmark::State& state) {
    showOpenWheel(24, true);
    for (auto _ : state)
        tickWheel();
    state.counters["target_ms"] = 0.01;
}

const std::u16string& megabyteFile() {
    static const std::u16string path = [] {
        std::vector<Wheel> wheels;
        while (serializeWheels(wheels).size() < 1'000'000)
            for (int i = 0; i < 32; ++i)
                wheels.push_back(wheelOf(24, true));
        const auto file = std::filesystem::temp_directory_path() / "rotika-bench-wheels.json";
        std::ofstream(file, std::ios::binary) << serializeWheels(wheels);
        return file.u16string();
    }();
    return path;
}

void readOneMegabyteWheelFile(benchmark::State& state) {
    const std::u16string& path = megabyteFile();
    std::vector<Wheel> wheels;
    std::u16string problems;
    for (auto _ : state)
        loadWheelFile(path, wheels, problems);
    if (wheels.empty())
        state.SkipWithError("nothing was read");
    state.counters["target_ms"] = 15;
}

/// What the engine's own editor does at each save, on the largest document that the reader does not truncate.
void serialize24WheelsOf24FieldsOf10Steps(benchmark::State& state) {
    std::vector<Wheel> wheels(24, wheelOf(24, true));
    for (Wheel& wheel : wheels) {
        for (WheelAction& action : wheel.actions)
            action.steps.assign(10, {parseKeyCode(u"shift"), StepKind::hold, 250, {}});
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(serializeWheels(wheels));
    state.counters["target_ms"] = 5;
}

BENCHMARK(paint24FieldsWithIconsAndNames)->Apply(asSingleRuns);
BENCHMARK(paint8NamedFields)->Apply(asSingleRuns);
BENCHMARK(tickWithMotionAcrossFields)->Apply(asSingleRuns);
BENCHMARK(tickWithoutChange)->Apply(asSingleRuns);
BENCHMARK(readOneMegabyteWheelFile)->Apply(asSingleRuns);
BENCHMARK(serialize24WheelsOf24FieldsOf10Steps)->Apply(asSingleRuns);

} // namespace

int main(int argc, char** argv) {
    if (!openPlatform()) {
        std::fputs("engine_bench: needs an X server\n", stderr);
        return 1;
    }
    iconPath = std::filesystem::path(ROTIKA_BENCH_ICON).u16string();
    return runAgainstTargets(argc, argv);
}
