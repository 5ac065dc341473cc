// The search for elements on Windows, served by a stand-in for UI Automation: tests/doubles/automation/.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/pointer.h"

#include "platform/windows/windows_api.h"

#include <chrono>
#include <fstream>
#include <future>

namespace {

/// The left edges of what was found below each root: in the script no two are alike.
using Found = std::vector<std::vector<int>>;

const std::string usualTree = "root RotikaFront\n"
                              "element 1 button 50000 10 11 12 13 enabled\n"
                              "element 1 group 50026 20 21 22 23 enabled focusable\n"
                              "element 2 pane 50033 30 31 32 33 enabled\n"
                              "element 2 document 50030 40 41 42 43 enabled focusable\n"
                              "element 3 link 50005 50 51 52 53 offscreen\n"
                              "element 3 silent 50000 60 61 62 63 enabled focusable unreadable\n"
                              "root MozillaWindowClass\n"
                              "element 1 text 50004 70 71 72 73 enabled focusable\n"
                              "root Shell_TrayWnd\n"
                              "element 1 start 50000 80 81 82 83 enabled focusable\n";

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
        for (const char* const name : {"automation_script.txt", "automation_log.txt"})
            std::filesystem::remove(besideDouble(name));
        ContractTest::TearDown();
    }

    static HWND makeWindow(const char* name, Point size, DWORD style, HWND parent = nullptr) {
        WNDCLASSA description{};
        description.lpszClassName = name;
        description.lpfnWndProc = DefWindowProcA;
        RegisterClassA(&description); // fails harmlessly from the second time on
        return CreateWindowA(name, "", style, 0, 0, size.x, size.y, parent, nullptr, nullptr, nullptr);
    }

    static std::filesystem::path besideDouble(const char* name) {
        return std::filesystem::path(ROTIKA_AUTOMATION_DOUBLE).replace_filename(name);
    }

    /// Searches as the engine does, from a thread of its own.
    static FoundElements search(ElementScope scope = ElementScope::windowAndTaskbar,
                                const std::string& failure = "", WindowHandle ownWindow = mainWindow()) {
        std::ofstream(besideDouble("automation_script.txt"), std::ios::binary)
            << usualTree << failure << "\n";
        std::ofstream(besideDouble("automation_log.txt"), std::ios::binary) << "left behind 0\n";
        auto found = std::async(std::launch::async, [&] {
            return findElements({scope, {gridWindow(), ownWindow}});
        });
        EXPECT_TRUE(
            pumpUntil([&] { return found.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        std::string last;
        for (std::ifstream log(besideDouble("automation_log.txt")); log.peek() != EOF;)
            std::getline(log, last);
        EXPECT_TRUE(last == "left behind 0" || last == "create ") << last;
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

TEST_F(WindowsElements, WhatCanBeClickedComesInOrderWithWhatIsKnownOfItAndAFailureCostsNoMoreThanItself) {
    using enum ControlType;
    const FoundElements found = search();
    EXPECT_EQ(found.area, primaryMonitor());
    const std::vector<std::vector<ScreenElement>> expected{
        {{{10, 11, 12, 13}, button, true, false, false},
         {{20, 21, 22, 23}, static_cast<ControlType>(50026), true, false, true},
         {{40, 41, 42, 43}, document, true, false, true},
         {{50, 51, 52, 53}, hyperlink, false, true, false},
         {}},
        {{{80, 81, 82, 83}, button, true, false, true}}};
    EXPECT_EQ(found.roots, expected);
    const auto windowAndTaskbar = ElementScope::windowAndTaskbar;
    EXPECT_EQ(leftEdges(search(windowAndTaskbar, "fail create")), Found{});
    EXPECT_EQ(leftEdges(search(windowAndTaskbar, "fail ElementFromHandle RotikaFront")), Found{{80}});
    EXPECT_EQ(leftEdges(search(windowAndTaskbar, "fail FindAllBuildCache RotikaFront")), (Found{{}, {80}}));
    EXPECT_EQ(leftEdges(search(windowAndTaskbar, "", windowHandle(front))), Found{{80}});
    EXPECT_EQ(leftEdges(search(ElementScope::page, "", windowHandle(front))), Found{});
    ShowWindow(taskbar, SW_HIDE);
    EXPECT_EQ(search().roots.size(), 1U);
}

/// Elsewhere it is the first document of the window, or the whole of it.
TEST_F(WindowsElements, APageIsWhereTheBrowserShowsIt) {
    struct Case {
        const char* name;
        Point size;
        DWORD style;
        bool isPage;
    };
    constexpr Case cases[] = {{"RotikaOther", {300, 300}, WS_CHILD | WS_VISIBLE, false},
                              {"MozillaWindowClass", {200, 400}, WS_CHILD | WS_VISIBLE, false},
                              {"MozillaWindowClass", {400, 200}, WS_CHILD | WS_VISIBLE, false},
                              {"MozillaWindowClass", {300, 300}, WS_CHILD, false},
                              {"MozillaWindowClass", {3000, 201}, WS_CHILD | WS_VISIBLE, true}};
    for (const auto& [name, size, style, isPage] : cases) {
        const HWND page = makeWindow(name, size, style, front);
        RECT place{};
        GetWindowRect(page, &place);
        const FoundElements found = search(ElementScope::page);
        const Rect cut{place.left, place.top, std::min<int>(place.right, primaryMonitor().right),
                       place.bottom};
        EXPECT_EQ(found.area, isPage ? cut : primaryMonitor()) << size.x;
        EXPECT_EQ(leftEdges(found), (isPage ? Found{{70}} : Found{{50, 0}})) << size.x;
        DestroyWindow(page);
    }
    EXPECT_EQ(leftEdges(search(ElementScope::page, "fail FindFirst")), (Found{{10, 20, 40, 50, 0}}));
}

} // namespace
