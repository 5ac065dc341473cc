#include "scenario.h"
#include "shell_user.h"

#include <set>

namespace e2e {

namespace {

constexpr int traySize = 40; // px: one icon fills it
constexpr int tallestToolTip = 50;
constexpr std::chrono::milliseconds clickPatience{3000};

// Where the middle of an entry lies in the menu.
constexpr double showWheel = 0.17;
constexpr double showWindow = 0.44;
constexpr double quit = 0.82;

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

    /// Opens the icon's menu and clicks the entry that lies at this share of the menu's height.
    void chooseInMenu(double share) {
        const XConnection& eyes = stage().screen.eyes();
        placePointer(eyes, icon());
        std::set<unsigned long> before;
        for (const ShownWindow& shown : eyes.shownWindows())
            before.insert(shown.id);
        std::optional<ShownWindow> menu;
        const auto isMenuShown = [&] {
            for (const ShownWindow& shown : eyes.shownWindows()) {
                if (!before.contains(shown.id) && shown.height > tallestToolTip)
                    menu = shown;
            }
            return menu.has_value();
        };
        // Wine passes some clicks on a tray's icon to nobody.
        waitFor("the menu", [&] {
            stage().mouse->click(MouseButton::right);
            return holdsWithin(clickPatience, isMenuShown);
        });
        user.waitForRest();
        keepPicture("tray-menu");
        const int down = static_cast<int>(menu->height * share);
        placePointer(eyes, {menu->left + menu->width / 2, menu->top + down});
        user.waitForRest();
        stage().mouse->click(MouseButton::left);
    }

    /// Until it has worked: Wine now and then loses a click on a menu as well.
    void chooseInMenu(double share, const std::function<bool()>& outcome) {
        waitFor("the menu to do as told", [&] {
            chooseInMenu(share);
            return holdsWithin(clickPatience, outcome);
        });
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
    waitFor("the double click to be heard", [&] {
        s.mouse->click(MouseButton::left);
        s.mouse->click(MouseButton::left);
        return holdsWithin(clickPatience, [&] { return s.mainWindow().has_value(); });
    });

    closeWindow();
    chooseInMenu(showWindow, [&] { return s.mainWindow().has_value(); });
    user.waitUntilInFront();
    s.openWheelAfter([&] { chooseInMenu(showWheel, [&] { return s.wheelIsOpen(); }); });
    user.waitUntilInFront(); // the menu had the focus, and Wine hears the key only with one of its windows in
                             // front
    s.toggle();
    s.waitUntilWheelIsClosed();
    // With the window in sight, which a quit would ask and which never agrees to close.
    ASSERT_TRUE(s.mainWindow().has_value());
    chooseInMenu(quit);
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
