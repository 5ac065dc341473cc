#include "core/text.h"
#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "overlay.h"
#include "platform/clock.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>

namespace {

using Texts = std::vector<std::string>;

/// The eye tracker of the test, and what was asked of it.
struct EyeTracker {
    std::int32_t createAnswer = 0;
    std::int32_t deviceAnswer = 0;
    std::int32_t subscribeAnswer = 0;
    std::vector<const char*> urls{"tobii-prp://first", "tobii-prp://second"};
    std::deque<std::int32_t> waitAnswers; // 100 ms each; time-outs afterwards
    std::uint32_t waitMs = 100;
    GazePoint point{0, 1, 0.5F, 0.25F}; // told at each successful wait
    GazePointReceiver receiver = nullptr;
    Texts calls;
};

EyeTracker tracker;

std::int32_t note(const std::string& call, std::int32_t answer = 0) {
    tracker.calls.push_back(call);
    return answer;
}

std::int32_t createApi(void** api, const void*, const void*) {
    *api = &tracker;
    return note("api", tracker.createAnswer);
}

std::int32_t listUrls(void*, GazeUrlReceiver receiver, void* user) {
    for (const char* url : tracker.urls)
        receiver(url, user);
    return 1; // of no interest to anybody
}

std::int32_t createDevice(void*, const char* url, std::int32_t fieldOfUse, void** device) {
    *device = &tracker;
    return note(std::string("device ") + url + " " + std::to_string(fieldOfUse), tracker.deviceAnswer);
}

std::int32_t subscribe(void*, GazePointReceiver receiver, void* user) {
    tracker.receiver = receiver;
    EXPECT_EQ(user, nullptr);
    return note("subscribe", tracker.subscribeAnswer);
}

std::int32_t waitForPoints(std::int32_t deviceCount, void* const* devices) {
    EXPECT_EQ(deviceCount, 1);
    EXPECT_EQ(*devices, &tracker);
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

template <typename Function>
void* exported(Function* function) {
    return reinterpret_cast<void*>(function);
}

SimulatedLibrary gazeLibrary() {
    return {{{"tobii_api_create", exported(createApi)},
             {"tobii_api_destroy", exported(+[](void*) { return note("free api"); })},
             {"tobii_enumerate_local_device_urls", exported(listUrls)},
             {"tobii_device_create", exported(createDevice)},
             {"tobii_device_destroy", exported(+[](void*) { return note("free device"); })},
             {"tobii_device_reconnect", exported(+[](void*) { return note("reconnect", 1); })},
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

    static std::string status() {
        return utf8FromUtf16(reinterpret_cast<const char16_t*>(OverlayGazeStatus()));
    }
};

const Texts allCalls{"api",     "device tobii-prp://first 1", "subscribe", "unsubscribe", "free device",
                     "free api"};

TEST_F(Gaze, EachThingThatIsMissingHasItsStatusAndIsTriedAgainOnlyAfterGazeWasOff) {
    using Change = std::function<void(SimulatedLibrary&)>;
    constexpr const char* failed = "błąd inicjalizacji";
    std::vector<std::tuple<Change, const char*, Texts>> cases = {
        {[](SimulatedLibrary&) { tracker.createAnswer = 1; }, failed, {"api"}},
        {[](SimulatedLibrary&) {
             tracker.urls = {nullptr, ""};
         },
         "nie wykryto urządzenia",
         {"api", "free api"}},
        {[](SimulatedLibrary&) { tracker.deviceAnswer = 2; }, failed, {"api", allCalls[1], "free api"}},
        {[](SimulatedLibrary&) { tracker.subscribeAnswer = 3; },
         failed,
         {"api", allCalls[1], "subscribe", "free device", "free api"}},
        {[](SimulatedLibrary&) {}, "aktywny", allCalls},
    };
    for (const auto& [name, function] : gazeLibrary().functions) {
        const bool isReconnect = name == "tobii_device_reconnect";
        const bool isUnsubscribe = name == "tobii_gaze_point_unsubscribe";
        Texts calls;
        if (isReconnect || isUnsubscribe)
            calls = allCalls;
        if (isUnsubscribe)
            std::erase(calls, "unsubscribe");
        cases.emplace_back([n = name](SimulatedLibrary& library) { library.functions.erase(n); },
                           calls.empty() ? failed : "aktywny", calls);
    }
    for (const auto& [change, expected, calls] : cases) {
        tracker = {};
        desktop.libraries[u"simulated-gaze"] = gazeLibrary();
        change(desktop.libraries[u"simulated-gaze"]);
        setGaze(true);
        EXPECT_EQ(status(), expected);
        setGaze(true);
        EXPECT_EQ(status(), expected);
        setGaze(false);
        EXPECT_EQ(tracker.calls, calls) << expected;
        EXPECT_EQ(status(), "wyłączony (gazeEnabled = false)");
    }
    desktop.libraries.clear();
    setGaze(true);
    EXPECT_EQ(status(), "brak simulated-gaze (zainstaluj oprogramowanie Tobii)");
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
    const auto path = [this](const char* name) { return (folder.at(name) / "simulated-gaze").u16string(); };
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

TEST_F(Gaze, ALookOpensNothingButChoosesAFieldOfTheOpenWheelByDwell) {
    tracker.waitMs = 20;
    tracker.waitAnswers.assign(200, 0);
    tracker.point = {0, 1, (960.0F + 60) / 1920, (540.0F - 100) / 1080}; // in the first of four fields
    setGaze(true, R"(, "gazeDwell": 600, "sendDelay": 0)");
    engineState.wheels = {wheelOf(4)};
    desktop.advanceBy(500);
    EXPECT_FALSE(OverlayIsWheelVisible());
    pressToggleKey();
    desktop.advanceBy(550);
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(engineState.hoveredField, 0);
    EXPECT_GT(engineState.dwellProgress, 0.5F);
    desktop.moveMouse(1, 0);
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.dwellProgress, 0.0F) << "the mouse takes over at once";
    desktop.advanceBy(690);
    EXPECT_FALSE(engineState.gazeDriven);
    desktop.advanceBy(700);
    EXPECT_FALSE(OverlayIsWheelVisible());
    desktop.advanceBy(200);
    EXPECT_EQ(journal({JournalKind::input}), "key 65 down, key 65 up");
}

} // namespace
