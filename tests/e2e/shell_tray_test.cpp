#include "scenario.h"
#include "shell_user.h"

#include <algorithm>
#include <set>

namespace e2e {

namespace {

constexpr int traySize = 40; // px: one icon fills it
constexpr int tallestToolTip = 50;
constexpr int mostClicks = 5;
constexpr std::chrono::milliseconds clickPatience{4000};

class ShellTray : public Scenario {
protected:
    /// The program with its icon in a tray.
    void startWithTray() {
        Stage& s = stage();
        s.writeFile("default.json", oneWheelText("Litery", clickActions({"a", "b"})));
        tray = Process({{"trayer", "--edge", "top", "--align", "left", "--widthtype", "pixel", "--width",
                         "200", "--heighttype", "pixel", "--height", std::to_string(traySize),
                         "--SetDockType", "true", "--expand", "false"},
                        s.screen.environment(),
                        s.screen.folder(),
                        s.screen.folder() / "trayer.log"});
        waitFor("the tray", [&] { return s.screen.eyes().hasTray(); });
        s.startProgram();
        user.waitUntilInFront();
    }

    ScreenPoint icon() {
        std::optional<ShownWindow> found;
        waitFor("the icon in the tray", [&] {
            for (const ShownWindow& shown : stage().screen.eyes().shownWindows()) {
                const bool isInTray = shown.top >= 0 && shown.top + shown.height <= traySize + 10 &&
                                      shown.left >= 0 && shown.left < 300;
                if (isInTray && shown.width <= traySize && shown.height <= traySize && shown.width >= 16)
                    found = shown;
            }
            return found.has_value();
        });
        return {found->left + found->width / 2, found->top + found->height / 2};
    }

    void openMenu() {
        const XConnection& eyes = stage().screen.eyes();
        placePointer(eyes, icon());
        std::set<unsigned long> before;
        for (const ShownWindow& shown : eyes.shownWindows())
            before.insert(shown.id);
        const auto isMenuShown = [&] {
            const std::vector<ShownWindow> now = eyes.shownWindows();
            return std::any_of(now.begin(), now.end(), [&](const ShownWindow& shown) {
                return !before.contains(shown.id) && shown.height > tallestToolTip;
            });
        };
        // A tray may still be making room when it is clicked.
        for (int clicks = 0; clicks < mostClicks && !isMenuShown(); ++clicks) {
            stage().mouse->click(MouseButton::right);
            holdsWithin(clickPatience, isMenuShown);
        }
        ASSERT_TRUE(isMenuShown());
        user.waitForRest();
    }

    void closeWindow() {
        stage().screen.eyes().close(*stage().mainWindow());
        waitFor("the window to go", [this] { return !stage().mainWindow(); });
        EXPECT_TRUE(stage().program.isRunning());
    }

    ShellUser user{stage()};
    Process tray;
};

TEST_F(ShellTray, ClosingHidesAndTheTrayBringsBackOrEnds) {
    startWithTray();
    Stage& s = stage();
    closeWindow();
    placePointer(s.screen.eyes(), icon());
    s.mouse->click(MouseButton::left);
    s.mouse->click(MouseButton::left);
    s.waitForMainWindow();

    closeWindow();
    openMenu();
    keepPicture("tray-menu");
    user.key("Down", 2);
    user.key("Return");
    s.waitForMainWindow();

    openMenu();
    user.key("Down");
    s.openWheelAfter([&] { user.key("Return"); });
    s.toggle();
    s.waitUntilWheelIsClosed();

    openMenu();
    user.key("Up");
    user.key("Return");
    EXPECT_EQ(s.program.statusWithin(generousLimit), 0);
}

TEST_F(ShellTray, WithoutATrayClosingLeavesTheToggleKey) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("Litery", clickActions({"a", "b"})));
    s.startProgram();
    closeWindow();
    s.startRecorder();
    s.recording.mark();
    s.openWheel();
    s.choose(fieldPoint(1, 2));
    s.recording.waitForPress("key-up b");
    s.endProgram();
}

} // namespace

} // namespace e2e
