// What the main window does on Windows alone: the status page and the tray.

#include "contract_test.h"
#include "platform/main_window.h"
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

} // namespace
