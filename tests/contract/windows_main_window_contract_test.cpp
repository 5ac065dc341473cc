// What our windows do on Windows alone: the status page, the tray, and what the system and other programs
// send.

#include "contract_test.h"
#include "platform/main_window.h"
#include "platform/overlay_window.h"
#include "platform/tray.h"

#include "platform/windows/windows_api.h"

#include <gtest/gtest.h>

namespace {

class WindowsMainWindow : public ContractTest {
protected:
    void SetUp() override {
        ContractTest::SetUp();
        window = nativeWindow(mainWindow());
        ShowWindow(window, SW_RESTORE);
        ASSERT_TRUE(pumpUntil([] { return heard.statusPages > 0; }));
    }

    void TearDown() override {
        ShowWindow(window, SW_HIDE);
        ContractTest::TearDown();
    }

    bool isShown() const { return IsWindowVisible(window) != 0; }

    HWND window = nullptr;
};

TEST_F(WindowsMainWindow, ClosingAndMinimisingHideIt) {
    for (const WPARAM command : {SC_CLOSE, SC_MINIMIZE}) {
        ShowWindow(window, SW_RESTORE);
        EXPECT_TRUE(isShown());
        PostMessageW(window, WM_SYSCOMMAND, command, 0);
        EXPECT_TRUE(pumpUntil([this] { return !isShown(); })) << command;
        EXPECT_NE(IsWindow(window), 0);
    }
}

TEST_F(WindowsMainWindow, ItIsRepaintedWhenAskedAndItsButtonAsksForTheEditor) {
    const int before = heard.statusPages;
    repaintMainWindow(mainWindow());
    EXPECT_TRUE(pumpUntil([&] { return heard.statusPages > before; }));
    const HWND button = FindWindowExW(window, nullptr, L"BUTTON", L"Edytor funkcji…");
    ASSERT_NE(button, nullptr);
    PostMessageW(button, BM_CLICK, 0, 0);
    EXPECT_TRUE(pumpUntil([] { return heard.editorRequests == 1; }));
}

TEST_F(WindowsMainWindow, TheTrayShowsItAgain) {
    addTrayIcon(mainWindow(), std::u16string(300, u'ż')); // longer than the system's field
    ShowWindow(window, SW_HIDE);
    constexpr UINT trayMessage = WM_APP + 1;
    PostMessageW(window, trayMessage, 1, WM_LBUTTONDBLCLK);
    EXPECT_TRUE(pumpUntil([this] { return isShown(); }));
    showTrayBalloon(std::u16string(300, u'ą'), std::u16string(900, u'ę'), BalloonIcon::warning);
    removeTrayIcon();
    showTrayBalloon(u"Rotika", u"lost", BalloonIcon::info); // without an icon nothing happens
    EXPECT_TRUE(heard.byMain.empty()) << "the tray's message is the platform's own";
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, 0), 0) << "data that are none";
}

TEST_F(WindowsMainWindow, ItTellsOfMonitorsAndOfTheSessionsLock) {
    PostMessageW(window, WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 800));
    for (const WPARAM change : {WTS_SESSION_LOCK, WTS_SESSION_UNLOCK, WTS_REMOTE_CONNECT})
        PostMessageW(window, WM_WTSSESSION_CHANGE, change, 1);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges >= 1 && heard.lockChanges.size() >= 2; }));
    EXPECT_EQ(heard.lockChanges, (std::vector<bool>{true, false}));
}

using WindowsLayers = ContractTest;

TEST_F(WindowsLayers, TheyStayWhenAskedToCloseAndTellOfTheirEnd) {
    for (const WindowHandle layer : {wheelWindow(), gridWindow()}) {
        PostMessageW(nativeWindow(layer), WM_CLOSE, 0, 0);
        PostMessageW(nativeWindow(layer), WM_SYSCOMMAND, SC_CLOSE, 0);
        PostMessageW(nativeWindow(layer), WM_APP + 2, 0, 0);
    }
    EXPECT_TRUE(pumpUntil([] { return heard.closeRequests == 2 && heard.byWheel.size() == 1; }));
    EXPECT_TRUE(IsWindow(nativeWindow(wheelWindow())) && IsWindow(nativeWindow(gridWindow())));

    // The last one that is made tells, and it may make its successor meanwhile.
    static WindowHandle successor;
    const WindowHandle doomed = createOverlayWindow(
        OverlayKind::grid, 50, 50,
        {.destroyed = []() noexcept { successor = createOverlayWindow(OverlayKind::grid, 50, 50, {}); }});
    DestroyWindow(nativeWindow(doomed));
    EXPECT_NE(successor, nullptr);
    DestroyWindow(nativeWindow(successor));
}

} // namespace
