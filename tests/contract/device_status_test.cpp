// What the engine says of its devices, with stand-ins for their libraries that fail in every way.

#include "core/text.h"
#include "overlay.h"
#include "platform/dynamic_library.h"
#include "platform/paths.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct StatusCase {
    const char* variant; // of the stand-in; empty: no library at all
    const char* script;
    std::string status;
};

/// One of the two devices: its settings, its stand-in and its status.
struct Device {
    const char* kind;
    const char* enabledKey;
    const char* pathKey;
    std::u16string libraryName;
    const OverlayChar* (*status)();
};

const Device voice{"speech", "voiceEnabled", "voiceDllPath", speechLibraryName(), OverlayVoiceStatus};
const Device gaze{"gaze", "gazeEnabled", "gazeDllPath", gazeLibraryName(), OverlayGazeStatus};

fs::path besideProgram() {
    return fs::path(programFolder());
}

std::string statusOf(const Device& device) {
    return utf8FromUtf16(reinterpret_cast<const char16_t*>(device.status()));
}

bool becomes(const Device& device, const std::string& status) {
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(20);
    while (statusOf(device) != status && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return statusOf(device) == status;
}

class DeviceStatus : public testing::Test {
protected:
    /// What an earlier run has left may be of an older build. Later tests have it loaded already.
    static void SetUpTestSuite() {
        for (const Device* device : {&voice, &gaze})
            for (const char* variant : {"complete", "without_required"})
                fs::remove_all(folderOf(*device, variant));
    }

    void SetUp() override {
        writeSettings(voice, "", false);
        ASSERT_TRUE(OverlayEngineStart());
    }

    static fs::path folderOf(const Device& device, const std::string& variant) {
        return besideProgram() / (std::string(device.kind) + "-" + variant);
    }

    static void writeSettings(const Device& device, const std::string& variant, bool isEnabled) {
        const Device& other = &device == &voice ? gaze : voice;
        const fs::path library = folderOf(device, variant) / fs::path(device.libraryName);
        std::ofstream file(besideProgram() / "config.json", std::ios::binary | std::ios::trunc);
        file << R"({"toggleKey": "F9", ")" << other.enabledKey << R"(": false, ")" << device.enabledKey
             << R"(": )" << (isEnabled ? "true" : "false") << R"(, ")" << device.pathKey << R"(": ")"
             << library.generic_string() << "\"}\n";
    }

    static void writeScript(const Device& device, const std::string& variant, const std::string& script) {
        std::ofstream(folderOf(device, variant) / (std::string(device.kind) + "_script.txt"),
                      std::ios::binary | std::ios::trunc)
            << script << "\n";
    }

    static void turnOn(const Device& device, const StatusCase& how) {
        if (*how.variant != '\0') {
            fs::create_directories(folderOf(device, how.variant));
            const fs::path name(device.libraryName);
            const fs::path copy = folderOf(device, how.variant) / name;
            if (!fs::exists(copy)) // it may be loaded already
                fs::copy_file(fs::path(ROTIKA_DOUBLES) / how.variant / name, copy);
            writeScript(device, how.variant, how.script);
        }
        writeSettings(device, how.variant, true);
        OverlayReloadConfig();
    }

    static void turnOff(const Device& device) {
        writeSettings(device, "", false);
        OverlayReloadConfig();
        EXPECT_EQ(statusOf(device), std::string("wyłączony (") + device.enabledKey + " = false)");
    }

    static void expectStatus(const Device& device, const StatusCase& expected) {
        SCOPED_TRACE(std::string(expected.variant) + " " + expected.script);
        turnOn(device, expected);
        EXPECT_TRUE(becomes(device, expected.status)) << statusOf(device);
        OverlayReloadConfig();
        EXPECT_EQ(statusOf(device), expected.status) << "a failed start is not tried again by itself";
        turnOff(device);
    }

    /// A library that holds its thread longer than the stop waits, and the thread's next run.
    static void expectHangToBeLeftBehind(const Device& device, const char* script, const char* waiting,
                                         std::chrono::milliseconds limit) {
        turnOn(device, {"complete", script, ""});
        EXPECT_TRUE(becomes(device, waiting)) << statusOf(device);
        const Clock::time_point asked = Clock::now();
        turnOff(device);
        const auto took = Clock::now() - asked;
        EXPECT_GE(took, limit - std::chrono::milliseconds(50));
        EXPECT_LT(took, limit + std::chrono::seconds(2));
        turnOn(device, {"complete", "", ""}); // which also lets the first run go on
        EXPECT_TRUE(becomes(device, "aktywny")) << statusOf(device);
        turnOff(device);
    }

    const std::string failed = "błąd inicjalizacji";
};

TEST_F(DeviceStatus, OfVoice) {
    const StatusCase cases[] = {
        {"", "", "brak " + utf8FromUtf16(speechLibraryName())},
        {"without_required", "", failed},
        {"complete", "model null", "brak katalogu modelu języka"},
        {"complete", "recognizer null", failed},
        {"complete", "recognizer fault", failed},
        {"complete", "", "aktywny"},
    };
    for (const StatusCase& each : cases)
        expectStatus(voice, each);
    expectHangToBeLeftBehind(voice, "model hang", "ładowanie modelu…", std::chrono::milliseconds(2000));
}

TEST_F(DeviceStatus, OfVoiceWithoutSound) {
    turnOn(voice, {"complete", "", ""});
    EXPECT_TRUE(becomes(voice, "brak mikrofonu")) << statusOf(voice);
    const Clock::time_point asked = Clock::now();
    turnOff(voice);
    EXPECT_LT(Clock::now() - asked, std::chrono::milliseconds(1900)) << "the wait for a microphone is left";
}

TEST_F(DeviceStatus, OfGaze) {
    const StatusCase cases[] = {
        {"", "", "brak " + utf8FromUtf16(gazeLibraryName()) + " (zainstaluj oprogramowanie Tobii)"},
        {"without_required", "", failed},
        {"complete", "api_create fail", failed},
        {"complete", "url none", "nie wykryto urządzenia"},
        {"complete", "device_create fail", failed},
        {"complete", "subscribe fail", failed},
        {"complete", "", "aktywny"},
    };
    for (const StatusCase& each : cases)
        expectStatus(gaze, each);
    expectHangToBeLeftBehind(gaze, "api_create hang", "szukanie urządzenia…",
                             std::chrono::milliseconds(1500));
}

} // namespace
