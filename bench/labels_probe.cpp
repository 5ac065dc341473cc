// From a spoken command to the labels over a full window, with a stand-in for the recogniser.

#include "device_double.h"
#include "harness/waiting.h"
#include "probe.h"
#include "target_reporter.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace e2e;
using Clock = std::chrono::steady_clock;

/// The window has something to click in its upper left corner.
void measureLabels(const char* what, const std::vector<std::string>& words, const std::string& title,
                   double targetMs) {
    Stage stage(ScreenSetup{.sound = Sound::microphone});
    const DeviceDouble library(stage, "libvosk", "speech");
    stage.writeFile("config.json", deviceSettings(true, false, library.setting("voiceDllPath")));
    stage.startProgram();
    const XConnection& eyes = stage.screen.eyes();
    const Process other(Command{words, stage.screen.environment(), {}, {}});
    waitFor("its window", [&] { return eyes.titleOfActiveWindow() == title; });
    std::this_thread::sleep_for(std::chrono::seconds(2)); // it goes on publishing for a while
    const ShownWindow window = *eyes.shownWindow(title);
    const auto inBadge = [&] { return eyes.pixel(window.left + 4, window.top + 4); };
    const PixelColor bare = inBadge();
    std::vector<double> values;
    for (int i = 0; i < 12; ++i) {
        const Clock::time_point start = Clock::now();
        library.add("say pokaż elementy");
        waitFor("labels", [&] { return differenceOf(inBadge(), bare) > 40; });
        values.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        library.add("say ukryj elementy");
        waitFor("the bare window", [&] { return inBadge() == bare; });
    }
    std::sort(values.begin(), values.end());
    printFigure(what, values[values.size() / 2], values.back(), targetMs, "ms");
}

/// A program that does not answer keeps the scan waiting for 1.5 s; the wheel must not notice.
void measureWheelDuringScan() {
    Stage stage(ScreenSetup{.sound = Sound::microphone});
    const DeviceDouble library(stage, "libvosk", "speech");
    stage.writeFile("config.json", deviceSettings(true, false, library.setting("voiceDllPath")));
    stage.startProgram();
    const XConnection& eyes = stage.screen.eyes();
    const Process other(Command{{"gtk3-demo"}, stage.screen.environment(), {}, {}});
    waitFor("its window", [&] { return eyes.titleOfActiveWindow() == "Application Class"; });
    stage.openWheel();
    const std::vector<double> before = motionLatencies(stage, 24);
    other.send(SIGSTOP);
    library.add("say pokaż elementy");
    std::this_thread::sleep_for(std::chrono::milliseconds(250)); // until it has been heard
    const std::vector<double> during = motionLatencies(stage, 24);
    other.send(SIGCONT);
    printFigure("what a scan adds to motion to repainted cursor",
                during[during.size() / 2] - before[before.size() / 2], during.back() - before.back(), 2,
                "ms");
}

} // namespace

int main(int argc, char** argv) {
    return runProbe(argc, argv, [] {
        // 665 buttons, some 240 of which, with the cells around them, are in sight.
        measureLabels("spoken command to labels over 250 elements, 100 ms of it sound",
                      {"gtk3-demo", "--run=flowbox"}, "Flow Box", 400);
        measureLabels("spoken command to 99 labels on a window of 5,000 elements", {ROTIKA_FULL_WINDOW},
                      "Full Window", 500);
        measureWheelDuringScan();
    });
}
