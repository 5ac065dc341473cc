#include "core/text.h"
#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "platform/clock.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>

namespace {

using Texts = std::vector<std::string>;

/// The eye tracker of the test, and what was asked of it.
struct EyeTracker {
    std::deque<std::int32_t> waitAnswers; // 100 ms each; time-outs afterwards
    std::uint32_t waitMs = 100;
    GazePoint point{0, 1, 0.5F, 0.25F}; // told at each successful wait
    GazePointReceiver receiver = nullptr;
    Texts calls;
};

EyeTracker tracker;

std::int32_t note(const char* call) {
    tracker.calls.emplace_back(call);
    return 0;
}

std::int32_t createApi(void** api, const void*, const void*) {
    *api = &tracker;
    return 0;
}

std::int32_t listUrls(void*, GazeUrlReceiver receiver, void* user) {
    receiver("tobii-prp://first", user);
    return 1; // of no interest to anybody
}

std::int32_t createDevice(void*, const char*, std::int32_t, void** device) {
    *device = &tracker;
    return 0;
}

std::int32_t subscribe(void*, GazePointReceiver receiver, void* user) {
    tracker.receiver = receiver;
    EXPECT_EQ(user, nullptr);
    return 0;
}

std::int32_t waitForPoints(std::int32_t deviceCount, void* const* devices) {
    EXPECT_TRUE(deviceCount == 1 && *devices == &tracker);
    sleepMs(tracker.waitMs);
    if (tracker.waitAnswers.empty())
        return 6;
    const std::int32_t answer = tracker.waitAnswers.front();
    tracker.waitAnswers.pop_front();
    return answer;
}

std::int32_t processPoints(void*) {
    tracker.receiver(&tracker.point, nullptr);
    return 1;
}

SimulatedLibrary gazeLibrary() {
    return {{{"tobii_api_create", exported(createApi)},
             {"tobii_api_destroy", exported(+[](void*) { return note("free api"); })},
             {"tobii_enumerate_local_device_urls", exported(listUrls)},
             {"tobii_device_create", exported(createDevice)},
             {"tobii_device_destroy", exported(+[](void*) { return note("free device"); })},
             {"tobii_device_reconnect", exported(+[](void*) { return note("reconnect") + 1; })},
             {"tobii_gaze_point_subscribe", exported(subscribe)},
             {"tobii_gaze_point_unsubscribe", exported(+[](void*) { return note("unsubscribe"); })},
             {"tobii_wait_for_callbacks", exported(waitForPoints)},
             {"tobii_device_process_callbacks", exported(processPoints)}}};
}

class Gaze : public EngineTest {
protected:
    Gaze() {
        tracker = {};
        desktop.libraries[u"simulated-gaze"] = gazeLibrary();
        setGaze(false);
        EXPECT_TRUE(OverlayEngineStart());
    }

    void setGaze(bool enabled, const std::string& settings = "") {
        folder.write("config.json", std::string(R"({"voiceEnabled": false, "gazeEnabled": )") +
                                        (enabled ? "true" : "false") + settings + "}");
        OverlayReloadConfig();
        desktop.settle();
    }

    static std::string status() { return textOf(OverlayGazeStatus()); }
};

TEST_F(Gaze, ALibraryThatLacksANameIsNoTrackerUnlessItCanDoWithoutUntilGazeWasOff) {
    for (const auto& [name, function] : gazeLibrary().functions) {
        const bool isOptional = name == "tobii_device_reconnect" || name == "tobii_gaze_point_unsubscribe";
        desktop.libraries[u"simulated-gaze"] = gazeLibrary();
        desktop.libraries[u"simulated-gaze"].functions.erase(name);
        setGaze(true);
        desktop.libraries[u"simulated-gaze"] = gazeLibrary();
        setGaze(true); // not tried again
        EXPECT_EQ(status(), isOptional ? "aktywny" : "błąd inicjalizacji") << name;
        setGaze(false);
        EXPECT_EQ(status(), "wyłączony (gazeEnabled = false)");
    }
}

TEST_F(Gaze, TheLibraryIsLookedForInFourPlacesTheLastDownToTheThirdLevel) {
    namespace fs = std::filesystem;
    desktop.libraries.clear();
    for (const char* place : {"z/a/b/c", "z/a/b/c/d", "z/.ukryty", "m"}) {
        fs::create_directories(folder.at(place));
        std::ofstream(folder.at(place) / "simulated-gaze") << "x";
    }
    fs::create_directories(folder.at("m/n/simulated-gaze"));
    desktop.gazeRoots = {folder.path("brak"), folder.path("z"), folder.path("m")};
    const auto path = [this](const char* name) {
        return (folder.at(name) / "simulated-gaze").make_preferred().u16string();
    };
    desktop.libraries[path("m/n")] = gazeLibrary();
    setGaze(true, R"(, "gazeDllPath": "/brak/lib.so")");
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(desktop.libraryAttempts,
              (std::vector<std::u16string>{u"/brak/lib.so", folder.path("simulated-gaze"), u"simulated-gaze",
                                           path("z/a/b/c"), path("m"), path("m/n")}));
}

TEST_F(Gaze, ValidPointsBecomeTheSampleInForce) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const std::tuple<GazePoint, std::int32_t, std::int32_t> cases[] = {
        {{0, 1, 0.5F, 0.25F}, 5000, 2500},    {{0, 1, 1.2F, -0.33339F}, 12000, -3333},
        {{0, 0, 0.9F, 0.9F}, 12000, -3333},   {{0, 2, 0.9F, 0.9F}, 12000, -3333},
        {{0, 1, 1e30F, -1e30F}, most, least}, {{0, 1, std::nanf(""), 0}, least, 0},
    };
    for (const auto& [point, x, y] : cases) {
        const std::uint64_t before = engineState.gazeSampleTick;
        desktop.advanceBy(10);
        onGazePoint(&point, nullptr);
        EXPECT_EQ(engineState.gazeX, x);
        EXPECT_EQ(engineState.gazeY, y);
        EXPECT_EQ(engineState.gazeSampleTick != before, point.validity == 1);
    }
    GazeDeviceUrl url{};
    firstDeviceUrl(nullptr, &url);
    firstDeviceUrl("", &url);
    EXPECT_EQ(url[0], '\0');
    firstDeviceUrl(std::string(400, 'u').c_str(), &url);
    EXPECT_EQ(std::strlen(url.data()), 255U);
    firstDeviceUrl("other", &url);
    EXPECT_EQ(url[0], 'u');
}

TEST_F(Gaze, ATrackerThatIsLostIsReconnectedForAsLongAsItTakes) {
    tracker.waitAnswers = {0, 4, 5, 6, 0};
    setGaze(true);
    desktop.advanceBy(1'250); // two waits, a pause, a wait
    EXPECT_EQ(tracker.calls.back(), "reconnect");
    EXPECT_EQ(status(), "aktywny");
    engineState.gazeX = -1;
    desktop.advanceBy(1'000);
    EXPECT_EQ(engineState.gazeX, 5000);
    EXPECT_EQ(std::ranges::count(tracker.calls, "reconnect"), 2);
}

TEST_F(Gaze, AWaitThatHangsOutlivesTheStopAndDoesNoHarmToTheNextStart) {
    tracker.waitMs = 10'000;
    setGaze(true);
    const std::uint64_t before = desktop.clock.now();
    setGaze(false);
    EXPECT_EQ(desktop.clock.now() - before, 1500U);
    tracker.waitMs = 100;
    setGaze(true);
    EXPECT_EQ(status(), "aktywny");
    tracker.calls.clear();
    desktop.advanceBy(12'000);
    EXPECT_EQ(tracker.calls, (Texts{"unsubscribe", "free device", "free api"})) << "of the run that hung";
    EXPECT_EQ(status(), "aktywny");
}

} // namespace
