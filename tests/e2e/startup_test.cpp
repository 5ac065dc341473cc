#include "scenario.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace e2e {

namespace {

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

class Startup : public Scenario {
protected:
    /// A small window of the program, such as a message box.
    std::optional<ShownWindow> shownBox() {
        for (const ShownWindow& shown : stage().screen.eyes().shownWindows()) {
            if (shown.title == "Rotika" && shown.width < smallestMainWindow)
                return shown;
        }
        return std::nullopt;
    }

    /// There is something in it: the window is painted as a whole.
    bool isPainted(const ShownWindow& window) {
        const ScreenPart part =
            stage().screen.eyes().look(window.left, window.top, window.width, window.height);
        const auto other = std::find_if(part.pixels.begin(), part.pixels.end(), [&](const PixelColor& pixel) {
            return !(pixel == part.pixels.front());
        });
        return other != part.pixels.end();
    }

    void expectWheelOpensByKey(const std::string& key) {
        Stage& s = stage();
        s.openWheel(key);
        tapKey(s.screen.eyes(), key);
        s.waitUntilWheelIsClosed();
    }
};

TEST_F(Startup, ASecondCopySaysSoAndEndsWithoutDisturbingTheFirst) {
    Stage& s = stage();
    s.startProgram();
    Process second = s.launchProgram();
    waitFor("the message", [&] { return shownBox().has_value(); });
    keepPicture("second-copy");
    EXPECT_TRUE(second.isRunning());
    s.screen.eyes().close(*shownBox());
    EXPECT_EQ(second.statusWithin(generousLimit), 0);
    EXPECT_TRUE(s.program.isRunning());
    s.startRecorder();
    expectWheelOpensByKey(toggleKey);
}

TEST_F(Startup, AClosedMainWindowLeavesTheWheelWorking) {
    Stage& s = stage();
    s.startProgram();
    s.screen.eyes().close(*s.mainWindow());
    waitFor("the window to go", [&] { return !s.mainWindow(); });
    s.startRecorder();
    expectWheelOpensByKey(toggleKey);
    EXPECT_TRUE(s.program.isRunning());
}

TEST_F(Startup, AnUnknownThemeLooksLikeTheFirst) {
    Stage& s = stage();
    const auto sidebarOf = [&](const std::string& theme) {
        s.target->saveTheme(theme);
        s.startProgram();
        const ShownWindow window = *s.mainWindow();
        waitFor("the window to be painted", [&] { return isPainted(window); });
        keepPicture("theme-" + theme);
        const PixelColor color = s.screen.eyes().pixel(window.left + 20, window.top + window.height - 20);
        s.endProgram();
        return color;
    };
    const PixelColor fluent = sidebarOf("fluent");
    EXPECT_EQ(sidebarOf("nieznany"), fluent);
    EXPECT_GT(differenceOf(sidebarOf("neon"), fluent), 50);
}

TEST_F(Startup, StartedFromElsewhereItStillWorksInItsOwnFolder) {
    Stage& s = stage();
    const std::filesystem::path elsewhere = s.screen.folder() / "gdzie indziej";
    std::filesystem::create_directory(elsewhere);
    std::filesystem::remove(s.folder() / "config.json");
    s.program = s.launchProgram(elsewhere);
    s.waitForMainWindow();
    EXPECT_EQ(contentOf(s.folder() / "config.json"),
              "{\n  \"segmentColor\": \"#3498DB\",\n  \"toggleKey\": \"x\"\n}\n");
    EXPECT_NE(contentOf(s.folder() / "default.json").find("\"Kolo 1\""), std::string::npos);
    EXPECT_NE(contentOf(s.folder() / "voice.json").find("przełącz okno"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
    // The eight fields of the first run.
    s.startRecorder();
    s.recording.mark();
    s.openWheel("x");
    keepPicture("first-run");
    s.choose(fieldPoint(6, 8));
    s.recording.waitForPress("key-up 7");
}

TEST_F(Startup, BrokenOrMissingFilesNeverStopIt) {
    Stage& s = stage();
    s.writeFile("config.json", "{ \"toggleKey\": \"F9\", ");
    s.writeFile("default.json", "[1, 2");
    s.writeFile("voice.json", "\xff\xfe nonsense");
    std::filesystem::remove(s.folder() / "rotika.ico");
    std::filesystem::remove_all(s.folder() / "themes");
    s.startAll();
    EXPECT_EQ(contentOf(s.folder() / "config.json"), "{ \"toggleKey\": \"F9\", ");
    keepPicture("broken-files");
    expectWheelOpensByKey("x");
}

} // namespace

} // namespace e2e
