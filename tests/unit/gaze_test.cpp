#include "engine_test.h"
#include "gaze/gaze_thread.h"

#include <cmath>
#include <cstring>
#include <limits>

TEST_F(EngineTest, TheGazeLibraryIsLookedForInFourPlacesTheLastDownToTheThirdLevel) {
    for (const char* place : {"z/a/b/c", "z/a/b/c/d", "z/.ukryty", "m"}) {
        std::filesystem::create_directories(folder.at(place));
        folder.write(place + "/simulated-gaze"s, "x");
    }
    const auto library = [this](const char* place) {
        return (folder.at(place) / "simulated-gaze").make_preferred().u16string();
    };
    desktop.gazeRoots = {folder.path("brak"), folder.path("z"), folder.path("m")};
    configure(R"("gazeEnabled": true, "gazeDllPath": "/brak/lib.so",)");
    EXPECT_TRUE(OverlayEngineStart());
    desktop.settle();
    EXPECT_EQ(desktop.libraryAttempts, (std::vector{u"/brak/lib.so"s, folder.path("simulated-gaze"),
                                                    u"simulated-gaze"s, library("z/a/b/c"), library("m")}));
}

TEST_F(EngineTest, ValidPointsBecomeTheSampleInForce) {
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
