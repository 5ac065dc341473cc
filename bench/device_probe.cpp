// What listening and following the eyes cost the whole program, with stand-ins for both libraries.

#include "device_double.h"
#include "harness/waiting.h"
#include "probe.h"
#include "target_reporter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace e2e;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds restTime{10};
constexpr LayerPoint insideCursor{3, 10}; // of its picture, which is white there; from its tip

/// Milliseconds of a processor that all threads but the first have used. The first is the owner thread, whose
/// share is measured with the window.
double workersMs(pid_t process) {
    double nanoseconds = 0;
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        if (task.path().filename() == std::to_string(process))
            continue;
        double onProcessor = 0;
        std::ifstream(task.path() / "schedstat") >> onProcessor;
        nanoseconds += onProcessor;
    }
    return nanoseconds / 1e6;
}

class DeviceProbe {
public:
    DeviceProbe()
        : stage(ScreenSetup{.sound = Sound::microphone}), speech(stage, "libvosk", "speech"),
          gaze(stage, "tobii_stream_engine", "gaze") {
        speech.write("");
        gaze.write("period 30\nrest 1"); // as often as a tracker of 33 Hz
        stage.writeFile("default.json", oneWheelText("", clickActions({"a", "b"})));
        stage.writeFile("config.json",
                        deviceSettings(true, true,
                                       speech.setting("voiceDllPath") + ", " + gaze.setting("gazeDllPath") +
                                           ", \"gazeDwell\": 0"));
        stage.startProgram();
        speech.waitForCall("accept_waveform");
        gaze.waitForCall("gaze_point_subscribe");
    }

    /// The stand-ins read their scripts and write their logs in these threads, so the figure is too high.
    void measureRest() {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const double before = workersMs(stage.program.pid());
        std::this_thread::sleep_for(restTime);
        const double used = workersMs(stage.program.pid()) - before;
        const double share = used / std::chrono::duration<double, std::milli>(restTime).count() * 100;
        printFigure("both threads with nothing said or seen, of one core", share, share, 0.5, "% ");
    }

    void measureLook() {
        gaze.write("period 11\nrest 1");
        stage.startRecorder();
        stage.openWheel();
        std::vector<double> values;
        for (int i = 0; i < 30; ++i) {
            const LayerPoint before = *stage.wheel.findCursor();
            const LayerPoint point{layerCentre.x + (i % 2 == 0 ? -150 : 150), layerCentre.y};
            const ScreenPoint spot =
                stage.wheel.onScreen({before.x + insideCursor.x, before.y + insideCursor.y});
            const Clock::time_point start = look(point);
            while (differenceOf(stage.screen.eyes().pixel(spot.x, spot.y), {255, 255, 255}) < 8) {
                if (Clock::now() - start > std::chrono::seconds(5))
                    throw ScenarioError("the cursor did not follow the eyes");
            }
            values.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            std::this_thread::sleep_for(std::chrono::milliseconds(600 + i % 11)); // at rest again
        }
        std::sort(values.begin(), values.end());
        // The stand-in looks into its script once in its period, which is no part of the figure.
        printFigure("gaze sample (and up to 11 ms of the stand-in) to moved cursor",
                    values[values.size() / 2], values.back(), 17 + 11, "ms");
    }

private:
    Clock::time_point look(LayerPoint point) {
        const ScreenPoint place = stage.wheel.onScreen(point);
        const XConnection& eyes = stage.screen.eyes();
        const std::string line = "look " + std::to_string((place.x + 0.5) / eyes.width()) + " " +
                                 std::to_string((place.y + 0.5) / eyes.height()) + " 1 1";
        const Clock::time_point start = Clock::now();
        gaze.add(line);
        return start;
    }

    Stage stage;
    DeviceDouble speech;
    DeviceDouble gaze;
};

} // namespace

int main(int argc, char** argv) {
    return runProbe(argc, argv, [] {
        DeviceProbe probe;
        probe.measureRest();
        probe.measureLook();
    });
}
