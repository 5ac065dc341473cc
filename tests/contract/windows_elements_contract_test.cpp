// The search for elements on Windows, served by a stand-in for UI Automation: tests/doubles/automation/.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/pointer.h"

#include "platform/windows/windows_api.h"

#include <chrono>
#include <fstream>
#include <future>

namespace {

/// The left edges of what was found below each root: in the scripts here no two are alike.
using Found = std::vector<std::vector<int>>;

const std::string usualTree = "root RotikaFront\n"
                              "element 1 button 50000 10 11 12 13 enabled\n"
                              "element 1 group 50026 20 21 22 23 enabled focusable\n"
                              "element 2 pane 50033 30 31 32 33 enabled\n"
                              "element 2 document 50030 40 41 42 43 enabled focusable\n"
                              "element 3 link 50005 50 51 52 53 offscreen\n"
                              "element 3 silent 50000 60 61 62 63 enabled focusable unreadable\n"
                              "root Shell_TrayWnd\n"
                              "element 1 start 50000 70 71 72 73 enabled focusable\n";

class TestWindow {
public:
    TestWindow(const char* name, Rect place, DWORD style, HWND parent = nullptr) {
        WNDCLASSA description{};
        description.lpszClassName = name;
        description.lpfnWndProc = DefWindowProcA;
        RegisterClassA(&description); // fails harmlessly from the second time on
        window = CreateWindowA(name, "", style, place.left, place.top, place.width(), place.height(), parent,
                               nullptr, nullptr, nullptr);
    }
    TestWindow(const TestWindow&) = delete;
    ~TestWindow() { DestroyWindow(window); }

    HWND window = nullptr;
};

class WindowsElements : public ContractTest {
protected:
    void SetUp() override {
        ContractTest::SetUp();
        constexpr const char* server = "CLSID\\{ff48dba4-60ef-4201-aa87-54103eef594e}\\InprocServer32";
        RegSetKeyValueA(HKEY_CLASSES_ROOT, server, nullptr, REG_SZ, ROTIKA_AUTOMATION_DOUBLE,
                        sizeof(ROTIKA_AUTOMATION_DOUBLE));
        RegSetKeyValueA(HKEY_CLASSES_ROOT, server, "ThreadingModel", REG_SZ, "Both", 5);
        SetForegroundWindow(front.window);
        SetWindowPos(taskbar.window, HWND_TOPMOST, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
        ASSERT_TRUE(pumpUntil([this] { return GetForegroundWindow() == front.window; }));
    }

    void TearDown() override {
        RegDeleteTreeA(HKEY_CLASSES_ROOT, "CLSID\\{ff48dba4-60ef-4201-aa87-54103eef594e}");
        // Wine has no such service of its own.
        EXPECT_TRUE(search(usualTree).roots.empty());
        std::filesystem::remove(script);
        std::filesystem::remove(log);
        ContractTest::TearDown();
    }

    /// Searches as the engine does, from a thread of its own.
    FoundElements search(const std::string& text, ElementScope scope = ElementScope::windowAndTaskbar,
                         WindowHandle ownWindow = mainWindow()) {
        std::ofstream(script, std::ios::binary) << text;
        std::ofstream(log, std::ios::binary).close();
        auto found = std::async(std::launch::async, [&] {
            return findElements({scope, {ownWindow, gridWindow()}});
        });
        EXPECT_TRUE(
            pumpUntil([&] { return found.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        std::string last = "left behind 0";
        for (std::ifstream stream(log); stream.peek() != EOF;)
            std::getline(stream, last);
        EXPECT_TRUE(last == "left behind 0") << last;
        return found.get();
    }

    static Found leftEdges(const FoundElements& found) {
        Found edges(found.roots.size());
        for (std::size_t i = 0; i < edges.size(); ++i)
            for (const ScreenElement& element : found.roots[i])
                edges[i].push_back(element.rect.left);
        return edges;
    }

    const std::filesystem::path log =
        std::filesystem::path(ROTIKA_AUTOMATION_DOUBLE).replace_filename("automation_log.txt");
    const std::filesystem::path script =
        std::filesystem::path(ROTIKA_AUTOMATION_DOUBLE).replace_filename("automation_script.txt");
    TestWindow front{"RotikaFront", {100, 100, 800, 700}, WS_OVERLAPPEDWINDOW | WS_VISIBLE};
    TestWindow taskbar{"Shell_TrayWnd", {0, 760, 400, 800}, WS_POPUP}; // shown later, without the focus
};

TEST_F(WindowsElements, WhatCanBeClickedComesInOrderWithWhatIsKnownOfIt) {
    using enum ControlType;
    const FoundElements found = search(usualTree);
    EXPECT_EQ(found.area, primaryMonitor());
    const std::vector<std::vector<ScreenElement>> expected{
        {{{10, 11, 12, 13}, button, true, false, false},
         {{20, 21, 22, 23}, static_cast<ControlType>(50026), true, false, true},
         {{40, 41, 42, 43}, document, true, false, true},
         {{50, 51, 52, 53}, hyperlink, false, true, false},
         {}},
        {{{70, 71, 72, 73}, button, true, false, true}}};
    EXPECT_EQ(found.roots, expected);

    std::string everyType = "root RotikaFront\n";
    for (int type = 50000; type < 50040; ++type)
        everyType += "element 1 x " + std::to_string(type) + " " + std::to_string(type - 50000) + " 0 0 0\n";
    EXPECT_EQ(leftEdges(search(everyType)), (Found{{0, 2, 3, 4, 5, 7, 11, 13, 15, 16, 19, 24, 31}, {}}));
}

TEST_F(WindowsElements, AFailureCostsOnlyWhatItConcernsAndOwnAndHiddenWindowsAreLeftOut) {
    const std::pair<const char*, Found> failures[] = {{"fail create", {}},
                                                      {"fail ElementFromHandle RotikaFront", {{70}}},
                                                      {"fail FindAllBuildCache RotikaFront", {{}, {70}}}};
    for (const auto& [failure, expected] : failures) {
        const FoundElements found = search(usualTree + failure + "\n");
        EXPECT_EQ(leftEdges(found), expected) << failure;
        EXPECT_EQ(found.area, primaryMonitor()) << failure;
    }
    const WindowHandle own = windowHandle(front.window);
    EXPECT_EQ(leftEdges(search(usualTree, ElementScope::windowAndTaskbar, own)), (Found{{70}}));
    EXPECT_EQ(leftEdges(search(usualTree, ElementScope::page, own)), Found{});
    ShowWindow(taskbar.window, SW_HIDE);
    EXPECT_EQ(search(usualTree).roots.size(), 1U);
}

/// Elsewhere it is the first document of the window, or the whole of it.
TEST_F(WindowsElements, APageIsWhereTheBrowserShowsIt) {
    struct Case {
        const char* name;
        Rect place;
        DWORD style;
        bool isPage;
    };
    constexpr DWORD visible = WS_CHILD | WS_VISIBLE;
    constexpr Case cases[] = {{"RotikaOther", {0, 0, 300, 300}, visible, false},
                              {"Chrome_RenderWidgetHostHWND", {0, 0, 200, 400}, visible, false},
                              {"Chrome_RenderWidgetHostHWND", {0, 0, 400, 200}, visible, false},
                              {"Chrome_RenderWidgetHostHWND", {0, 0, 300, 300}, WS_CHILD, false},
                              {"Chrome_RenderWidgetHostHWND", {0, 0, 201, 201}, visible, true},
                              {"xMozillaWindowClassx", {0, 0, 300, 300}, visible, true},
                              {"MozillaContentWindowClass", {0, 0, 3000, 300}, visible, true}};
    const TestWindow frame("RotikaFrame", {0, 0, 4000, 600}, visible, front.window);
    for (const auto& [name, place, style, isPage] : cases) {
        const TestWindow page(name, place, style, frame.window);
        RECT rect{};
        GetWindowRect(page.window, &rect);
        const std::string tree = usualTree + "root " + name + "\nelement 1 text 50004 90 0 0 0\n";
        const FoundElements found = search(tree, ElementScope::page);
        EXPECT_EQ(leftEdges(found), (isPage ? Found{{90}} : Found{{50, 0}})) << name << place.right;
        const Rect cut{rect.left, rect.top, std::min<int>(rect.right, primaryMonitor().right), rect.bottom};
        EXPECT_EQ(found.area, isPage ? cut : primaryMonitor()) << name << place.right;
    }
    EXPECT_EQ(leftEdges(search(usualTree + "fail FindFirst\n", ElementScope::page)),
              (Found{{10, 20, 40, 50, 0}}));
}

} // namespace
