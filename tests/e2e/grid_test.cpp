// The grid, by what a stand-in for the recogniser says it has heard.

#include "device_double.h"
#include "scenario.h"

#include <algorithm>

namespace e2e {

namespace {

class Grid : public Scenario {};

TEST_F(Grid, NumbersNarrowItDownToAPointThatIsClicked) {
    Stage& s = stage({.sound = Sound::microphone});
    const DeviceDouble library(s, "libvosk", "speech");
    s.writeFile("config.json", deviceSettings(true, false, library.setting("voiceDllPath")));
    s.startProgram();
    s.startRecorder(40);
    placePointer(s.screen.eyes(), {900, 300});
    s.recording.mark();
    const struct {
        const char* words;
        ScreenPoint corner;
        ScreenPoint size;
        ScreenPoint centre;
    } steps[] = {
        {"pokaż siatkę", {0, 0}, {1280, 800}, {640, 400}}, {"siedemnaście", {0, 0}, {1280, 800}, {640, 400}},
        {"sześć", {320, 200}, {320, 200}, {480, 300}},     {"cztery", {480, 300}, {160, 100}, {560, 350}},
        {"jeden", {480, 300}, {80, 50}, {520, 325}},       {"trzy", {480, 325}, {40, 25}, {500, 337}},
    };
    const auto isWhite = [&](int x, int y) {
        const PixelColor color = s.screen.eyes().pixel(x, y);
        return std::min({color.red, color.green, color.blue}) > 0xB0;
    };
    for (const auto& step : steps) {
        library.add(std::string("say ") + step.words);
        waitFor(std::string("the cursor and the grid after ") + step.words, [&] {
            const std::vector<ShownWindow> shown = s.screen.eyes().shownWindows();
            return s.screen.eyes().pointer() == step.centre &&
                   std::any_of(shown.begin(), shown.end(), [&](const ShownWindow& window) {
                       return window.title.empty() && window.left == step.corner.x &&
                              window.top == step.corner.y && window.width == step.size.x &&
                              window.height == step.size.y;
                   });
        });
        const int besideCentre = step.centre.y - step.size.y / 8;
        waitFor("the line through its middle", [&] { return isWhite(step.centre.x, besideCentre); });
        if (step.size.x >= 320)
            keepPicture(step.size.x == 320 ? "grid-narrowed" : "grid");
    }
    library.add("say kliknij");
    s.recording.waitForPress("button-up left");
    for (const RecordedEvent& press : s.recording.presses())
        EXPECT_EQ((ScreenPoint{press.x, press.y}), (ScreenPoint{500, 337})) << press.what();
    EXPECT_EQ(s.screen.eyes().shownWindow(40, 25), std::nullopt);
}

/// Where nothing can be tinted, lines and numbers must do.
class OnLinuxGrid : public Grid {};

TEST_F(OnLinuxGrid, WithoutACompositorTheProgramBelowStaysInSight) {
    Stage& s = stage({.compositing = Compositing::off, .sound = Sound::microphone});
    const DeviceDouble library(s, "libvosk", "speech");
    s.writeFile("config.json", deviceSettings(true, false, library.setting("voiceDllPath")));
    s.startProgram();
    s.startRecorder(40);
    const XConnection& eyes = s.screen.eyes();
    const ScreenPoint inCell{400, 230};
    const PixelColor below = eyes.pixel(inCell.x, inCell.y);
    library.add("say pokaż siatkę");
    waitFor("the line down the middle", [&] {
        const PixelColor line = eyes.pixel(640, 230);
        return std::min({line.red, line.green, line.blue}) > 0xA0;
    });
    keepPicture("grid-without-compositor");
    EXPECT_EQ(eyes.pixel(inCell.x, inCell.y), below);
}

} // namespace

} // namespace e2e
