// What the main window does on Windows alone: the status page, the tray and data from other processes.

#include "contract_test.h"
#include "other_process.h"
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
    struct Command {
        const char* name;
        WPARAM code;
    };
    for (const Command& command : {Command{"close", SC_CLOSE}, Command{"minimise", SC_MINIMIZE}}) {
        ShowWindow(window, SW_RESTORE);
        EXPECT_TRUE(isShown());
        PostMessageW(window, WM_SYSCOMMAND, command.code, 0);
        EXPECT_TRUE(pumpUntil([this] { return !isShown(); })) << command.name;
        EXPECT_NE(IsWindow(window), 0);
    }
}

TEST_F(WindowsMainWindow, ItIsRepaintedWhenAsked) {
    const int before = heard.statusPages;
    repaintMainWindow(mainWindow());
    EXPECT_TRUE(pumpUntil([&] { return heard.statusPages > before; }));
}

TEST_F(WindowsMainWindow, ItsButtonAsksForTheEditor) {
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
}

TEST_F(WindowsMainWindow, DataFromAnotherProcessIsAnswered) {
    const OtherProcess accepted({"send-data", "1", "path"});
    EXPECT_TRUE(accepted.tells("answer 1"));
    const OtherProcess refused({"send-data", "2", "x"});
    EXPECT_TRUE(refused.tells("answer 0"));
    EXPECT_EQ(heard.data, (std::vector<std::string>{"1: path", "2: x"}));
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, 0), 0);
}

} // namespace
