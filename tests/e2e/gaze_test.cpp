// An eye tracker that is looked into, breaks or hangs; its library is a stand-in.

#include "device_double.h"
#include "scenario.h"

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

constexpr std::chrono::milliseconds quickEnd{2000 + 1500};

/// The first steps of the pull bring the cursor at least so near.
constexpr int pulledNear = 5;

class Gaze : public Scenario {
protected:
    Stage& gazeStage() {
        Stage& s = stage();
        s.programVariables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
        s.writeFile("default.json", R"({"wheels": [
            {"actions": [{"name": "A", "key": "a", "color": "#E03030"}, {"name": "B", "key": "b"}]},
            {"actions": [{"name": "C", "key": "c", "color": "#3040E0"}, {"name": "D", "key": "d"}]}]})");
        return s;
    }

    void start(const std::string& script, const std::string& variant = "complete", int dwellMs = 500) {
        Stage& s = gazeStage();
        library = std::make_unique<DeviceDouble>(s, "tobii_stream_engine", "gaze", variant);
        library->write(script);
        s.writeFile("config.json", deviceSettings(false, true,
                                                  library->setting("gazeDllPath") +
                                                      ", \"gazeDwell\": " + std::to_string(dwellMs)));
        s.startProgram();
    }

    void expectStatus(const std::string& text) {
        const Target& target = *stage().target;
        if (!testArguments().statusReader.empty()) {
            waitFor("the status " + text,
                    [&] { return target.statusText("Tobii Eye Tracker").value_or("") == text; });
        }
    }

    /// Eyes that rest on a point of the open wheel from now on.
    void lookAt(LayerPoint point) {
        const XConnection& eyes = stage().screen.eyes();
        const ScreenPoint place = stage().wheel.onScreen(point);
        library->add("look " + std::to_string((place.x + 0.5) / eyes.width()) + " " +
                     std::to_string((place.y + 0.5) / eyes.height()) + " 1 1");
    }

    /// A program in front, the wheel over it, and eyes on the wheel.
    void openWheelAndLookAt(LayerPoint point) {
        stage().startRecorder();
        stage().recording.mark();
        stage().openWheel();
        lookAt(point);
    }

    void waitForPullTo(LayerPoint point) {
        waitFor("the eyes' pull", [&] { return cursorIsWithin(point, pulledNear); });
    }

    bool cursorIsWithin(LayerPoint point, int distance) {
        const std::optional<LayerPoint> cursor = stage().wheel.findCursor();
        return cursor && std::abs(cursor->x - point.x) <= distance &&
               std::abs(cursor->y - point.y) <= distance;
    }

    void expectKey(const std::string& key) {
        stage().recording.waitForPress("key-up " + key);
        EXPECT_EQ(stage().recording.pressTexts(), (Texts{"key-down " + key, "key-up " + key}));
        stage().recording.mark();
    }

    std::unique_ptr<DeviceDouble> library;
};

TEST_F(Gaze, EachFailureOfTheStartHasItsStatusAndUndoesWhatWasMade) {
    Stage& s = gazeStage();
    const struct {
        const char* script;
        const char* variant;
        const char* status;
        Texts calls;
    } cases[] = {
        {"", "without_required", "błąd inicjalizacji", {}},
        {"api_create fail", "complete", "błąd inicjalizacji", {"api_create"}},
        {"url none",
         "complete",
         "nie wykryto urządzenia",
         {"api_create", "enumerate_local_device_urls", "api_destroy"}},
        {"device_create fail",
         "complete",
         "błąd inicjalizacji",
         {"api_create", "enumerate_local_device_urls", "device_create double://only 1", "api_destroy"}},
        {"url double://first\nurl double://second\nsubscribe fail",
         "complete",
         "błąd inicjalizacji",
         {"api_create", "enumerate_local_device_urls", "device_create double://first 1",
          "gaze_point_subscribe", "device_destroy", "api_destroy"}},
        {"",
         "complete",
         "aktywny",
         {"api_create", "enumerate_local_device_urls", "device_create double://only 1",
          "gaze_point_subscribe", "gaze_point_unsubscribe", "device_destroy", "api_destroy"}},
        {"",
         "without_optional",
         "aktywny",
         {"api_create", "enumerate_local_device_urls", "device_create double://only 1",
          "gaze_point_subscribe", "device_destroy", "api_destroy"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.script) + ", " + each.variant);
        start(each.script, each.variant);
        if (std::string(each.status) == "aktywny")
            library->waitForCall("gaze_point_subscribe");
        else if (!each.calls.empty())
            library->waitForCall(each.calls.back());
        expectStatus(each.status);
        s.endProgram();
        EXPECT_EQ(library->log(), each.calls);
        library->forgetLog();
    }
    s.writeFile("config.json", deviceSettings(false, true, "\"gazeDllPath\": \"nothing\""));
    s.startProgram();
    expectStatus("brak " + s.target->libraryFile("tobii_stream_engine") +
                 " (zainstaluj oprogramowanie Tobii)");
    s.endProgram();
    s.writeFile("config.json", deviceSettings(false, false, "\"gazeDllPath\": \"nothing\""));
    s.startProgram();
    expectStatus("wyłączony (gazeEnabled = false)");
}

TEST_F(Gaze, LookingTurnsTheWheelAndChooses) {
    Stage& s = gazeStage();
    start("rest 1", "complete", 1500); // long enough to look away from the arrow before it turns again
    openWheelAndLookAt(fieldPoint(0, 2));
    s.waitUntilWheelIsClosed();
    expectKey("a");
    s.toggle();
    waitFor("the wheel", [&] { return s.wheelIsOpen(); });
    lookAt(rightArrow);
    waitFor("the second wheel", [&] {
        const PixelColor color = s.wheel.pixel(fieldPoint(0, 2, 75));
        return color.blue > color.red;
    });
    lookAt(fieldPoint(1, 2));
    s.waitUntilWheelIsClosed();
    expectKey("d");
}

TEST_F(Gaze, TheMouseTakesOverAtOnceAndTheEyesComeBackLater) {
    Stage& s = gazeStage();
    start("rest 1", "complete", 3000);
    openWheelAndLookAt(fieldPoint(0, 2));
    waitForPullTo(fieldPoint(0, 2));
    s.mouse->move(-250, 0);
    waitFor("the mouse's push", [&] {
        return cursorIsWithin({fieldPoint(0, 2).x - 250, fieldPoint(0, 2).y}, 8);
    });
    waitForPullTo(fieldPoint(0, 2));
    s.waitUntilWheelIsClosed();
    expectKey("a");
}

TEST_F(Gaze, SamplesThatEndOrCountForNothingLeaveTheCursorAndTheDwellAlone) {
    Stage& s = gazeStage();
    start("rest 1", "complete", 3000);
    openWheelAndLookAt(fieldPoint(0, 2));
    waitForPullTo(fieldPoint(0, 2));
    library->add("look 0.01 0.01 0 50"); // closed eyes
    library->add("rest 1");
    s.waitUntilWheelIsClosed();
    expectKey("a");
}

TEST_F(Gaze, ATrackerThatIsUnpluggedComesBackByItself) {
    Stage& s = gazeStage();
    start("error 2\nrest 1");
    library->waitForCall("device_reconnect", 2);
    expectStatus("aktywny");
    openWheelAndLookAt(fieldPoint(1, 2));
    s.waitUntilWheelIsClosed();
    expectKey("b");
}

TEST_F(Gaze, ALibraryThatHangsHoldsTheProgramUpNoLongerThanGranted) {
    start("hang");
    library->waitForCall("gaze_point_subscribe");
    const auto asked = std::chrono::steady_clock::now();
    stage().endProgram();
    EXPECT_LT(std::chrono::steady_clock::now() - asked, quickEnd);
}

} // namespace

} // namespace e2e
