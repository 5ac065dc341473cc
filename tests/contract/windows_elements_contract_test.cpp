// The search for elements on Windows, served by a stand-in for UI Automation: tests/doubles/.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/pointer.h"

#include "platform/windows/windows_api.h"

#include <chrono>
#include <future>

namespace {

/// The left edges of what was found below each root: no two elements are alike in it.
using Found = std::vector<std::vector<int>>;

class WindowsElements : public ContractTest {
protected:
    void SetUp() override {
        ContractTest::SetUp();
        const std::string server = std::string(automationClass) + "\\InprocServer32";
        RegSetKeyValueA(HKEY_CLASSES_ROOT, server.c_str(), nullptr, REG_SZ, ROTIKA_AUTOMATION_DOUBLE,
                        sizeof(ROTIKA_AUTOMATION_DOUBLE));
        RegSetKeyValueA(HKEY_CLASSES_ROOT, server.c_str(), "ThreadingModel", REG_SZ, "Both", 5);
        SetForegroundWindow(front);
        SetWindowPos(taskbar, HWND_TOPMOST, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
        ASSERT_TRUE(pumpUntil([this] { return GetForegroundWindow() == front; }));
    }

    void TearDown() override {
        RegDeleteTreeA(HKEY_CLASSES_ROOT, automationClass);
        EXPECT_TRUE(search().roots.empty()) << "Wine has no such service of its own";
        DestroyWindow(front);
        DestroyWindow(taskbar);
        ContractTest::TearDown();
    }

    static HWND makeWindow(const char* name, Point size, DWORD style, HWND parent = nullptr) {
        WNDCLASSA description{};
        description.lpszClassName = name;
        description.lpfnWndProc = DefWindowProcA;
        RegisterClassA(&description); // fails harmlessly from the second time on
        return CreateWindowA(name, "", style, 0, 0, size.x, size.y, parent, nullptr, nullptr, nullptr);
    }

    /// Searches as the engine does, from a thread of its own.
    static FoundElements search(ElementScope scope = ElementScope::windowAndTaskbar,
                                WindowHandle ownWindow = mainWindow()) {
        auto found = std::async(std::launch::async, [&] {
            return findElements({scope, {gridWindow(), ownWindow}});
        });
        EXPECT_TRUE(
            pumpUntil([&] { return found.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return found.get();
    }

    static Found leftEdges(const FoundElements& found) {
        Found edges(found.roots.size());
        for (std::size_t i = 0; i < edges.size(); ++i)
            for (const ScreenElement& element : found.roots[i])
                edges[i].push_back(element.rect.left);
        return edges;
    }

    static constexpr const char* automationClass = "CLSID\\{ff48dba4-60ef-4201-aa87-54103eef594e}";
    const HWND front = makeWindow("RotikaFront", {800, 700}, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    const HWND taskbar = makeWindow("Shell_TrayWnd", {400, 40}, WS_POPUP); // shown later, without the focus
};

TEST_F(WindowsElements, WhatCanBeClickedComesInOrderWithWhatIsKnownOfIt) {
    using enum ControlType;
    const FoundElements found = search();
    EXPECT_EQ(found.area, primaryMonitor());
    const std::vector<std::vector<ScreenElement>> expected{
        {{{10, 11, 12, 13}, button, true, false, false},
         {{20, 21, 22, 23}, static_cast<ControlType>(50026), true, false, true},
         {{40, 41, 42, 43}, hyperlink, false, true, false},
         {}},
        {{{70, 71, 72, 73}, button, true, false, false}}};
    EXPECT_EQ(found.roots, expected);
    EXPECT_EQ(leftEdges(search(ElementScope::windowAndTaskbar, windowHandle(front))), Found{{70}});
    const HWND refusing = makeWindow("RotikaRefusing", {700, 600}, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    EXPECT_TRUE(pumpUntil([&] { return GetForegroundWindow() == refusing; }));
    EXPECT_EQ(leftEdges(search()), Found{{70}}) << "it costs no more than itself";
    DestroyWindow(refusing);
}

/// A browser's window of the class of its pages may also be narrow, and shows none then.
TEST_F(WindowsElements, APageIsWhereTheBrowserShowsIt) {
    constexpr DWORD style = WS_CHILD | WS_VISIBLE;
    makeWindow("MozillaWindowClass", {200, 400}, style, front);
    EXPECT_EQ(leftEdges(search(ElementScope::page)), (Found{{10, 20, 40, 0}}));
    RECT place{};
    GetWindowRect(makeWindow("MozillaWindowClass", {3000, 201}, style, front), &place);
    const FoundElements found = search(ElementScope::page);
    EXPECT_EQ(found.area, (Rect{place.left, place.top, primaryMonitor().right, place.bottom}));
    EXPECT_EQ(leftEdges(found), Found{{60}});
}

} // namespace
