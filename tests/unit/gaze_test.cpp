#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "platform/clock.h"

#include <cmath>
#include <cstring>
#include <deque>
#include <limits>

namespace {

/// The eye tracker of the test, and what was asked of it.
struct EyeTracker {
    std::deque<std::int32_t> waitAnswers; // time-outs afterwards
    std::uint32_t waitMs = 100;
    GazePointReceiver receiver = nullptr;
    Texts calls;
};

EyeTracker tracker;
using Device = void*;

std::int32_t note(const char* call) {
    tracker.calls.emplace_back(call);
    return 0;
}

std::int32_t waitForPoints(std::int32_t, void* const*) {
    sleepMs(tracker.waitMs);
    if (tracker.waitAnswers.empty())
        return 6;
    const std::int32_t answer = tracker.waitAnswers.front();
    tracker.waitAnswers.pop_front();
    return answer;
}

std::int32_t tellPoint(Device) {
    const GazePoint point{0, 1, 0.5F, 0.25F};
    tracker.receiver(&point, nullptr);
    return 0;
}

SimulatedLibrary gazeLibrary() {
    const auto create = [](void** api, const void*, const void*) { return *api = &tracker, 0; };
    const auto listUrls = [](void*, GazeUrlReceiver receive, void* user) {
        return receive("first", user), 0;
    };
    const auto createDevice = [](void*, const char*, std::int32_t, Device* made) {
        return *made = &tracker, 0;
    };
    const auto subscribe = [](Device, GazePointReceiver receiver, void*) {
        return tracker.receiver = receiver, 0;
    };
    return {{{"tobii_api_create", exported(+create)},
             {"tobii_api_destroy", exported(+[](void*) { return note("free api"); })},
             {"tobii_enumerate_local_device_urls", exported(+listUrls)},
             {"tobii_device_create", exported(+createDevice)},
             {"tobii_device_destroy", exported(+[](Device) { return note("free device"); })},
             {"tobii_device_reconnect", exported(+[](Device) { return note("reconnect"); })},
             {"tobii_gaze_point_subscribe", exported(+subscribe)},
             {"tobii_gaze_point_unsubscribe", exported(+[](Device) { return note("unsubscribe"); })},
             {"tobii_wait_for_callbacks", exported(waitForPoints)},
             {"tobii_device_process_callbacks", exported(tellPoint)}}};
}

class Gaze : public EngineTest {
protected:
    Gaze() {
        tracker = {};
        desktop.libraries[u"simulated-gaze"] = gazeLibrary();
        configure();
        EXPECT_TRUE(OverlayEngineStart());
    }

    static std::string status() { return textOf(OverlayGazeStatus()); }

    const std::string on = R"("gazeEnabled": true,)";
};

TEST_F(Gaze, TheLibraryIsLookedForInFourPlacesTheLastDownToTheThirdLevel) {
    for (const char* place : {"z/a/b/c", "z/a/b/c/d", "z/.ukryty", "m"}) {
        std::filesystem::create_directories(folder.at(place));
        folder.write(place + "/simulated-gaze"s, "x");
    }
    const auto library = [this](const char* place) {
        return (folder.at(place) / "simulated-gaze").make_preferred().u16string();
    };
    desktop.gazeRoots = {folder.path("brak"), folder.path("z"), folder.path("m")};
    desktop.libraries = {{library("m"), gazeLibrary()}};
    reload(on + R"("gazeDllPath": "/brak/lib.so",)");
    EXPECT_EQ(desktop.libraryAttempts, (std::vector{u"/brak/lib.so"s, folder.path("simulated-gaze"),
                                                    u"simulated-gaze"s, library("z/a/b/c"), library("m")}));
    EXPECT_EQ(status(), "aktywny");
}

TEST_F(Gaze, ValidPointsBecomeTheSampleInForce) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const std::tuple<GazePoint, std::int32_t, std::int32_t> cases[] = {
        {{0, 1, 0.5F, 0.25F}, 5000, 2500},    {{0, 1, 1.2F, -0.33339F}, 12000, -3333},
        {{0, 0, 0.9F, 0.9F}, 12000, -3333},   {{0, 2, 0.9F, 0.9F}, 12000, -3333},
        {{0, 1, 1e30F, -1e30F}, most, least}, {{0, 1, std::nanf(""), 0}, least, 0}};
    for (const auto& [point, x, y] : cases) {
        const std::uint64_t before = engineState.gazeSampleTick;
        desktop.advanceBy(10);
        onGazePoint(&point, nullptr);
        EXPECT_EQ(std::pair(engineState.gazeX.load(), engineState.gazeY.load()), std::pair(x, y));
        EXPECT_EQ(engineState.gazeSampleTick != before, point.validity == 1);
    }
    GazeDeviceUrl url{};
    for (const char* each : {static_cast<const char*>(nullptr), "", "first", "other"})
        firstDeviceUrl(each, &url);
    EXPECT_STREQ(url.data(), "first");
    url = {};
    firstDeviceUrl(std::string(400, 'u').c_str(), &url);
    EXPECT_EQ(std::strlen(url.data()), 255U);
}

TEST_F(Gaze, ALostTrackerIsReconnectedAndAWaitThatHangsOutlivesTheStopWithoutHarm) {
    tracker.waitAnswers = {0, 4, 5, 6, 0};
    reload(on);
    desktop.advanceBy(1'250); // two waits, a pause, a wait
    EXPECT_EQ(tracker.calls, Texts{"reconnect"});
    EXPECT_EQ(status(), "aktywny");
    engineState.gazeX = -1;
    desktop.advanceBy(1'000);
    EXPECT_EQ(engineState.gazeX, 5000);
    tracker.waitMs = 10'000;
    desktop.advanceBy(100);
    const std::uint64_t before = desktop.clock.now();
    reload();
    EXPECT_EQ(desktop.clock.now() - before, 1500U);
    tracker.waitMs = 100;
    reload(on);
    tracker.calls.clear();
    desktop.advanceBy(12'000);
    EXPECT_EQ(tracker.calls, (Texts{"unsubscribe", "free device", "free api"})) << "of the run that hung";
    EXPECT_EQ(status(), "aktywny");
}

} // namespace
