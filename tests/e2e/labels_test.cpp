// Numbers on what can be clicked in other programs, by what a stand-in for the recogniser says it has heard.

#include "device_double.h"
#include "scenario.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <csignal>

namespace e2e {

namespace {

const std::vector<std::string> gtkProgram{"gtk3-demo"};
constexpr const char* gtkTitle = "Application Class";
const std::vector<std::string> qtProgram{"/usr/lib/qt6/bin/designer"};
constexpr const char* qtTitle = "New Form — Qt Designer";

/// Programs publish what they hold on this system alone; Wine's do so for nobody.
class OnLinuxLabels : public Scenario {
protected:
    void startBesides(const std::vector<std::string>& words, const std::string& title,
                      const std::vector<std::string>& monitors = {}) {
        Stage& s = stage({.monitors = monitors, .sound = Sound::microphone});
        library = std::make_unique<DeviceDouble>(s, "libvosk", "speech");
        s.writeFile("config.json", deviceSettings(true, false, library->setting("voiceDllPath")));
        s.startProgram();
        other = Process({words, s.screen.environment(), {}, s.screen.folder() / "other.log"});
        waitForTitle(title);
        placePointer(s.screen.eyes(), {1270, 790});
        for (const ShownWindow& shown : s.screen.eyes().shownWindows())
            others.push_back(shown.id);
    }

    void say(const std::string& words) { library->add("say " + words); }

    std::optional<ShownWindow> layer(const ScreenPoint& size) {
        for (const ShownWindow& shown : stage().screen.eyes().shownWindows())
            if (shown.title.empty() && shown.width == size.x && shown.height == size.y &&
                std::ranges::find(others, shown.id) == others.end())
                return shown;
        return std::nullopt;
    }

    /// A program that has just come up may not have published anything yet.
    ShownWindow showLabels(const std::string& words = "pokaż elementy",
                           const ScreenPoint& size = {1280, 800}) {
        const XConnection& eyes = stage().screen.eyes();
        const ScreenPart before = eyes.look(0, 0, eyes.width(), eyes.height());
        waitFor("labels after " + words, [&] {
            say(words);
            return holdsWithin(std::chrono::milliseconds(3000), [&] { return layer(size).has_value(); });
        });
        const ShownWindow shown = *layer(size);
        waitFor("their picture", [&] {
            const ScreenPart part = eyes.look(0, 0, eyes.width(), eyes.height());
            int changed = 0;
            for (std::size_t i = 0; i < part.pixels.size(); ++i)
                changed += part.pixels[i] == before.pixels[i] ? 0 : 1;
            return changed > 1000;
        });
        return shown;
    }

    void waitForTitle(const std::string& title) {
        waitFor("the window " + title, [&] { return stage().screen.eyes().titleOfActiveWindow() == title; });
    }

    std::unique_ptr<DeviceDouble> library;
    Process other;
    std::vector<unsigned long> others; // windows that are no layer
};

TEST_F(OnLinuxLabels, NumbersClickTheControlsOfAGtkProgram) {
    startBesides(gtkProgram, gtkTitle);
    showLabels();
    keepPicture("labels-gtk");
    say("siedem"); // an entry of the list
    waitForTitle("Assistant");
    EXPECT_EQ(layer({1280, 800}), std::nullopt);
    showLabels();
    const std::size_t before = stage().screen.eyes().shownWindows().size();
    say("kliknij prawy na trzydzieści trzy"); // the text, which has a menu
    waitFor("the menu in the labels' place", [&] {
        return !layer({1280, 800}) && stage().screen.eyes().shownWindows().size() >= before;
    });
    keepPicture("labels-gtk-menu");
    showLabels();
    keepPicture("labels-gtk-menu-labels");
    say("jeden"); // the one entry of the menu that can be chosen
    waitFor("the menu to go", [&] { return stage().screen.eyes().shownWindows().size() < before; });
    showLabels();
    say("kliknij dwa razy na dwanaście"); // an entry that starts something
    waitForTitle("Clipboard");
}

TEST_F(OnLinuxLabels, ANumberClicksAButtonOfAQtProgram) {
    startBesides(qtProgram, qtTitle);
    showLabels("pokaż elementy strony"); // where there is no page, the window counts
    keepPicture("labels-qt");
    say("jedenaście");
    waitFor("the dialogue to close", [&] { return !stage().screen.eyes().shownWindow(qtTitle); });
    showLabels();
    keepPicture("labels-qt-window");
    say("ukryj elementy");
    waitFor("the labels to go", [&] { return !layer({1280, 800}); });
}

TEST_F(OnLinuxLabels, AProgramThatHasStoppedHoldsNothingUp) {
    startBesides(gtkProgram, gtkTitle);
    showLabels();
    say("ukryj elementy");
    waitFor("the labels to go", [&] { return !layer({1280, 800}); });
    other.send(SIGSTOP);
    library->forgetLog();
    say("pokaż elementy");
    stage().openWheel();
    stage().toggle();
    stage().waitUntilWheelIsClosed();
    // The next scan can only begin once that one has ended.
    stage().screen.eyes().activate(*stage().mainWindow());
    waitForTitle("Rotika");
    showLabels();
    keepPicture("labels-own-window");
    other.send(SIGCONT);
}

TEST_F(OnLinuxLabels, LabelsAndGridKeepToTheMonitorThatIsMeant) {
    const ScreenPoint half{640, 800};
    startBesides(gtkProgram, gtkTitle, {"640/200x800/250+0+0", "640/200x800/250+640+0"});
    const XConnection& eyes = stage().screen.eyes();
    for (const int left : {700, 60}) {
        const int monitorLeft = left / half.x * half.x;
        const ShownWindow moved = *eyes.shownWindow(gtkTitle);
        XMoveResizeWindow(eyes.raw(), moved.id, left, 60, 500, 600);
        XFlush(eyes.raw());
        waitFor("the window to move",
                [&] { return eyes.shownWindow(gtkTitle)->left / half.x * half.x == monitorLeft; });
        EXPECT_EQ(showLabels("pokaż elementy", half).left, monitorLeft);
        placePointer(eyes, {monitorLeft + 10, 790});
        say("pokaż siatkę");
        const ScreenPoint middle{monitorLeft + 320, 400};
        waitFor("the grid", [&] { return eyes.pointer() == middle && layer(half); });
        EXPECT_EQ(layer(half)->left, monitorLeft);
        say("szesnaście");
        waitFor("the last cell", [&] { return eyes.pointer() == ScreenPoint{monitorLeft + 560, 700}; });
        say("schowaj siatkę");
        waitFor("the grid to go", [&] { return !layer({160, 200}); });
    }
}

} // namespace

} // namespace e2e
