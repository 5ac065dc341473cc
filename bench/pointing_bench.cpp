// Grid and element labels on large screens: from the model to the visible picture.

#include "model/engine_state.h"
#include "platform/overlay_window.h"
#include "platform/platform.h"
#include "platform/pointer.h"
#include "pointing/element_filter.h"
#include "pointing/element_labels.h"
#include "pointing/grid.h"
#include "target_reporter.h"

#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>

using namespace rotika;

namespace {

/// As after a narrowed grid: hidden, with surfaces of another size, and with the compositor idle.
void prepareLayer() {
    if (engineState.gridWindow == nullptr)
        engineState.gridWindow = createOverlayWindow(OverlayKind::grid, 1, 1, {});
    hideOverlayWindow(engineState.gridWindow);
    presentPictureAt(engineState.gridWindow, {0, 0}, Picture{60, 33, {}});
    cursorPosition(); // a round trip, as in waitForServer() of engine_bench.cpp
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

void showPicture(benchmark::State& state, const std::function<Picture()>& picture) {
    prepareLayer();
    for (auto _ : state) {
        presentPictureAt(engineState.gridWindow, {0, 0}, picture());
        showOverlayWindow(engineState.gridWindow);
        cursorPosition();
    }
    prepareLayer();
}

void showGridOf(benchmark::State& state, std::int32_t width, std::int32_t height) {
    engineState.gridRect = {0, 0, width, height};
    engineState.gridLevel = 1;
    showPicture(state, gridPicture);
}

void showGrid1920x1080(benchmark::State& state) {
    showGridOf(state, 1920, 1080);
    state.counters["target_ms"] = 12;
}

void showGrid3840x2160(benchmark::State& state) {
    showGridOf(state, 3840, 2160);
    state.counters["target_ms"] = 40;
}

void show99Labels1920x1080(benchmark::State& state) {
    engineState.elementsOrigin = {0, 0, 1920, 1080};
    engineState.elementRects.clear();
    for (std::int32_t i = 0; i < 99; ++i) {
        const std::int32_t left = i % 11 * 170 + 10;
        const std::int32_t top = i / 11 * 115 + 10;
        engineState.elementRects.push_back({left, top, left + 120, top + 40});
    }
    showPicture(state, elementLabelsPicture);
    state.counters["target_ms"] = 15;
}

/// The worst case: one fewer than the limit is kept, and every other element is compared with all of them.
void filter5000Elements(benchmark::State& state) {
    FoundElements found{{0, 0, 1920, 1080}, {{}}};
    for (std::int32_t i = 0; i < 5000; ++i) {
        const std::int32_t kept = std::min(i, 97);
        const std::int32_t left = kept % 11 * 170;
        const std::int32_t top = kept / 11 * 115;
        found.roots[0].push_back({{left, top, left + 120, top + 40}, ControlType::button, true, false, true});
    }
    std::size_t kept = 0;
    for (auto _ : state)
        kept = filterElements(found, ElementScope::windowAndTaskbar).rects.size();
    if (kept != 98)
        state.SkipWithError("another number was kept");
    state.counters["target_ms"] = 2;
}

BENCHMARK(showGrid1920x1080)->Apply(asSingleRuns);
BENCHMARK(showGrid3840x2160)->Apply(asSingleRuns);
BENCHMARK(show99Labels1920x1080)->Apply(asSingleRuns);
BENCHMARK(filter5000Elements)->Apply(asSingleRuns);

} // namespace

int main(int argc, char** argv) {
    if (!openPlatform()) {
        std::fputs("pointing_bench: needs an X server\n", stderr);
        return 1;
    }
    return runAgainstTargets(argc, argv);
}
