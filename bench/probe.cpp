#include "probe.h"

#include "harness/waiting.h"
#include "target_reporter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

int runProbe(int argc, char** argv, void (*measure)()) {
    if (!e2e::readTestArguments(argc, argv))
        return 2;
    try {
        printFigureHead();
        measure();
    } catch (const e2e::ScenarioError& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}

std::vector<double> motionLatencies(e2e::Stage& stage, int count) {
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::duration<double, std::milli>;
    constexpr e2e::LayerPoint insideCursor{3, 10}; // of its picture, which is white there; from its tip
    const e2e::XConnection& eyes = stage.screen.eyes();
    e2e::LayerPoint tip = e2e::layerCentre;
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        const int step = i % 2 == 0 ? 30 : -30;
        tip.x += step;
        const e2e::ScreenPoint spot = stage.wheel.onScreen({tip.x + insideCursor.x, tip.y + insideCursor.y});
        const Clock::time_point start = Clock::now();
        stage.mouse->move(step, 0);
        while (e2e::differenceOf(eyes.pixel(spot.x, spot.y), {255, 255, 255}) >= 8)
            if (Clock::now() - start > std::chrono::seconds(5))
                throw e2e::ScenarioError("the cursor did not follow the mouse");
        values.push_back(Milliseconds(Clock::now() - start).count());
        std::this_thread::sleep_for(std::chrono::milliseconds(7 + i % 11)); // any phase of the tick
    }
    std::sort(values.begin(), values.end());
    return values;
}
