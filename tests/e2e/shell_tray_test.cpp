#include "scenario.h"
#include "tray_user.h"

namespace e2e {

namespace {

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
        tray.startTray();
        tray.whenMenuIsOpen = [this] { keepPicture("tray-menu"); };
        s.startProgram();
        user.waitUntilInFront();
    }

    void closeWindow() {
        stage().screen.eyes().close(*stage().mainWindow());
        waitFor("the window to go", [this] { return !stage().mainWindow(); });
        EXPECT_TRUE(stage().program.isRunning());
    }

    ShellUser user{stage()};
    TrayUser tray{stage()};
};

TEST_F(ShellTray, ClosingHidesAndTheTrayBringsBackOrEnds) {
    startWithTray();
    Stage& s = stage();
    closeWindow();
    tray.doubleClickUntil([&] { return s.mainWindow().has_value(); });

    closeWindow();
    tray.chooseUntil(showWindow, [&] { return s.mainWindow().has_value(); });
    user.waitUntilInFront();
    s.openWheelAfter([&] { tray.chooseUntil(showWheel, [&] { return s.wheelIsOpen(); }); });
    user.waitUntilInFront(); // the menu had the focus, and Wine hears the key only with one of its windows in
                             // front
    s.toggle();
    s.waitUntilWheelIsClosed();
    // With the window in sight, which a quit would ask and which never agrees to close.
    ASSERT_TRUE(s.mainWindow().has_value());
    tray.chooseUntil(quit, [&] { return !s.program.isRunning(); });
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
