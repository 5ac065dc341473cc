// The search for elements on Windows, served by a stand-in for UI Automation: tests/doubles/automation/.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/files.h"
#include "platform/pointer.h"

#include "platform/windows/windows_api.h"

#include <chrono>
#include <fstream>
#include <future>

namespace {

using Lines = std::vector<std::string>;
/// The left edges of what was found below each root: in the scripts here no two are alike.
using Found = std::vector<std::vector<int>>;

constexpr const char* frontClass = "RotikaFront";
constexpr const char* taskbarClass = "Shell_TrayWnd";

constexpr const char* usualTree = "root RotikaFront\n"
                                  "element 1 button 50000 10 11 12 13 enabled\n"
                                  "element 1 group 50026 20 21 22 23 enabled focusable\n"
                                  "element 2 pane 50033 30 31 32 33 enabled\n"
                                  "element 2 document 50030 40 41 42 43 enabled focusable\n"
                                  "element 3 link 50005 50 51 52 53 offscreen\n"
                                  "element 1 tab 50019 60 61 62 63 enabled\n"
                                  "root Shell_TrayWnd\n"
                                  "element 1 start 50000 70 71 72 73 enabled focusable\n"
                                  "root Chrome_RenderWidgetHostHWND\n"
                                  "element 1 text 50004 80 81 82 83 enabled focusable\n";

class TestWindow {
public:
    TestWindow(const std::string& name, const RECT& place, DWORD style, HWND parent = nullptr) {
        WNDCLASSA description{};
        description.hInstance = moduleInstance();
        description.lpszClassName = name.c_str();
        description.lpfnWndProc = DefWindowProcA;
        RegisterClassA(&description); // fails harmlessly from the second time on
        window = CreateWindowA(name.c_str(), "", style, place.left, place.top, place.right - place.left,
                               place.bottom - place.top, parent, nullptr, moduleInstance(), nullptr);
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow() { DestroyWindow(window); }

    HWND window = nullptr;
};

constexpr DWORD child = WS_CHILD | WS_VISIBLE;

class WindowsElements : public ContractTest {
protected:
    void SetUp() override {
        ContractTest::SetUp();
        folder = temporaryFolder();
        const std::filesystem::path library = folder / "automation_double.dll";
        std::filesystem::copy_file(ROTIKA_AUTOMATION_DOUBLE, library);
        server = LoadLibraryW(library.c_str());
        ASSERT_NE(server, nullptr);
        SetWindowPos(taskbar.window, HWND_TOPMOST, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
        SetForegroundWindow(front.window);
        ASSERT_TRUE(pumpUntil([this] { return GetForegroundWindow() == front.window; }));
    }

    void TearDown() override {
        FreeLibrary(server);
        ContractTest::TearDown();
    }

    /// Searches as the engine does, from a thread of its own.
    FoundElements search(const std::string& script, ElementScope scope = ElementScope::windowAndTaskbar,
                         std::vector<WindowHandle> ownWindows = {mainWindow(), gridWindow(), wheelWindow()}) {
        std::filesystem::remove(folder / "automation_log.txt");
        // Two scripts of one second and one size are the same to the server.
        std::ofstream(folder / "automation_script.txt", std::ios::binary)
            << script << "#" << std::string(++searches, '.') << "\n";
        auto found = std::async(std::launch::async, [&] { return served({scope, std::move(ownWindows)}); });
        EXPECT_TRUE(
            pumpUntil([&] { return found.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return found.get();
    }

    Lines log() const {
        std::ifstream stream(folder / "automation_log.txt");
        Lines lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    static Found leftEdges(const FoundElements& found) {
        Found edges;
        for (const std::vector<ScreenElement>& root : found.roots) {
            edges.emplace_back();
            for (const ScreenElement& element : root) {
                edges.back().push_back(element.rect.left);
            }
        }
        return edges;
    }

    TestWindow front{frontClass, {100, 100, 800, 700}, WS_OVERLAPPEDWINDOW | WS_VISIBLE};
    TestWindow taskbar{taskbarClass, {0, 760, 400, 800}, WS_POPUP}; // shown later, without the focus

private:
    /// The server serves this thread alone: the registry stays as it is.
    FoundElements served(const ElementSearch& search) const {
        using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
        constexpr CLSID automation{
            0xff48dba4, 0x60ef, 0x4201, {0xaa, 0x87, 0x54, 0x10, 0x3e, 0xef, 0x59, 0x4e}};
        IUnknown* factory = nullptr;
        DWORD registration = 0;
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        const auto getClassObject = reinterpret_cast<GetClassObject>(
            reinterpret_cast<void*>(GetProcAddress(server, "DllGetClassObject")));
        EXPECT_EQ(getClassObject(automation, IID_IUnknown, reinterpret_cast<void**>(&factory)), S_OK);
        EXPECT_EQ(CoRegisterClassObject(automation, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                        &registration),
                  S_OK);
        FoundElements found = findElements(search);
        CoRevokeClassObject(registration);
        CoUninitialize();
        return found;
    }

    std::filesystem::path folder;
    std::size_t searches = 0;
    HMODULE server = nullptr;
};

TEST_F(WindowsElements, TheServiceIsAskedForEverythingAtOnceInOrder) {
    const FoundElements found = search(usualTree);
    EXPECT_EQ(found.area, primaryMonitor());
    const std::string below =
        " scope 4 for 30003=50000 30003=50031 30003=50002 30003=50013 30003=50003 30003=50004 30003=50005"
        " 30003=50007 30003=50011 30003=50019 30003=50024 30003=50015 30003=50016 30009=1"
        " with 30001 30003 30009 30010 30022";
    Lines expected{"create", "CreateCacheRequest"};
    for (const char* type : {"50000", "50031", "50002", "50013", "50003", "50004", "50005", "50007", "50011",
                             "50019", "50024", "50015", "50016"}) {
        expected.push_back(std::string("CreatePropertyCondition 30003 ") + type);
    }
    for (const std::string& line :
         {std::string("CreatePropertyCondition 30009 1 flag"),
          std::string("CreateOrConditionFromNativeArray 14"), std::string("ElementFromHandle RotikaFront"),
          std::string("ElementFromHandle Shell_TrayWnd"), "FindAllBuildCache RotikaFront" + below,
          std::string("GetElement button"), std::string("GetElement group"),
          std::string("GetElement document"), std::string("GetElement link"), std::string("GetElement tab"),
          "FindAllBuildCache Shell_TrayWnd" + below, std::string("GetElement start"),
          std::string("left behind 0")}) {
        expected.push_back(line);
    }
    EXPECT_EQ(log(), expected);
}

TEST_F(WindowsElements, WhatCannotBeReadCountsAsUnclickable) {
    const ScreenElement whole{{10, 11, 12, 13}, ControlType::button, true, false, false};
    const std::vector<std::pair<const char*, ScreenElement>> cases{
        {"", whole},
        {"fail get_CachedIsEnabled button\n", {whole.rect, whole.type, false, false, false}},
        {"fail get_CachedIsOffscreen button\n", {whole.rect, whole.type, true, true, false}},
        {"fail get_CachedControlType button\n", {whole.rect, ControlType::unknown, true, false, false}},
        {"fail get_CachedBoundingRectangle button\n", {{}, whole.type, true, false, false}},
        {"fail get_CachedIsEnabled\nfail get_CachedIsOffscreen\nfail get_CachedIsKeyboardFocusable\n"
         "fail get_CachedControlType\nfail get_CachedBoundingRectangle\n",
         {}},
    };
    for (const auto& [failure, expected] : cases) {
        const FoundElements found = search(std::string(usualTree) + failure);
        ASSERT_EQ(leftEdges(found).size(), 2U) << failure;
        EXPECT_EQ(found.roots[0][0], expected) << failure;
        EXPECT_EQ(found.roots[0][1].isFocusable, expected != ScreenElement{}) << failure;
        EXPECT_TRUE(found.roots[0][3].isOffscreen) << failure;
    }
}

TEST_F(WindowsElements, AFailureCostsOnlyWhatItConcerns) {
    const std::vector<std::pair<const char*, Found>> cases{
        {"fail create", {}},
        {"fail CreateCacheRequest", {{}, {}}},
        {"fail CreatePropertyCondition 30003 50019", {{10, 20, 40, 50}, {70}}},
        {"fail CreatePropertyCondition", {{10, 20, 30, 40, 50, 60}, {70}}},
        {"fail CreateOrConditionFromNativeArray", {{10, 20, 30, 40, 50, 60}, {70}}},
        {"fail CreateOrConditionFromNativeArray\nfail get_ControlViewCondition", {{}, {}}},
        {"fail ElementFromHandle RotikaFront", {{70}}},
        {"fail ElementFromHandle", {}},
        {"fail FindAllBuildCache RotikaFront", {{}, {70}}},
        {"fail GetElement group", {{10, 40, 50, 60}, {70}}},
    };
    for (const auto& [failure, expected] : cases) {
        const FoundElements found = search(std::string(usualTree) + failure + "\n");
        EXPECT_EQ(leftEdges(found), expected) << failure;
        EXPECT_EQ(found.area, primaryMonitor()) << failure;
        EXPECT_EQ(log().back(), failure == std::string("fail create") ? "create" : "left behind 0")
            << failure;
    }
}

TEST_F(WindowsElements, OwnAndHiddenWindowsAreLeftOut) {
    const WindowHandle inFront = windowHandle(front.window);
    const std::vector<WindowHandle> own{mainWindow(), gridWindow(), inFront};
    EXPECT_EQ(leftEdges(search(usualTree, ElementScope::windowAndTaskbar, own)), (Found{{70}}));
    EXPECT_EQ(leftEdges(search(usualTree, ElementScope::page, own)), Found{});
    ShowWindow(taskbar.window, SW_HIDE);
    EXPECT_EQ(leftEdges(search(usualTree)), (Found{{10, 20, 40, 50, 60}}));
}

TEST_F(WindowsElements, APageIsWhereTheBrowserShowsIt) {
    struct Case {
        const char* name;
        SIZE size;
        DWORD style;
        bool isPage;
    };
    const std::vector<Case> cases{
        {"RotikaOther", {300, 300}, child, false},
        {"Chrome_RenderWidgetHostHWND", {200, 400}, child, false},
        {"Chrome_RenderWidgetHostHWND", {400, 200}, child, false},
        {"Chrome_RenderWidgetHostHWND", {300, 300}, WS_CHILD, false},
        {"Chrome_RenderWidgetHostHWND", {201, 201}, child, true},
        {"xMozillaWindowClassx", {300, 300}, child, true},
        {"MozillaContentWindowClass", {3000, 300}, child, true},
    };
    const TestWindow frame("RotikaFrame", {0, 0, 4000, 600}, child, front.window);
    for (const Case& each : cases) {
        const TestWindow page(each.name, {0, 0, each.size.cx, each.size.cy}, each.style, frame.window);
        const std::string tree =
            std::string(usualTree) + "root " + each.name + "\nelement 1 text 50004 90 0 0 0\n";
        const std::string name = each.name + (" " + std::to_string(each.size.cx));
        RECT place{};
        GetWindowRect(page.window, &place);
        const Rect cut{place.left, place.top, std::min<int>(place.right, primaryMonitor().right),
                       place.bottom};

        const FoundElements found = search(tree, ElementScope::page);
        EXPECT_EQ(found.area, each.isPage ? cut : primaryMonitor()) << name;
        ASSERT_EQ(found.roots.size(), 1U) << name;
        EXPECT_EQ(leftEdges(found)[0].back(), each.isPage ? 90 : 50) << name;

        // A page that says nothing leaves the first document of the window, within the page's limits.
        const FoundElements other =
            search(tree + "fail ElementFromHandle " + each.name + "\n", ElementScope::page);
        EXPECT_EQ(leftEdges(other), (Found{{50}})) << name;
        EXPECT_EQ(other.area, found.area) << name;
        EXPECT_EQ(log().back(), "left behind 0");
    }
    for (const char* failure : {"fail FindFirst\n", "fail CreatePropertyCondition 30003 50030\n"}) {
        const FoundElements found = search(std::string(usualTree) + failure, ElementScope::page);
        EXPECT_EQ(leftEdges(found), (Found{{10, 20, 40, 50, 60}})) << failure;
        EXPECT_EQ(found.area, primaryMonitor());
    }
    const FoundElements without =
        search("root RotikaFront\nelement 1 a 50000 10 0 0 0\n", ElementScope::page);
    EXPECT_EQ(leftEdges(without), (Found{{10}}));
}

/// Wine has no such service; on Windows proper there is one, which answers in its own way.
TEST_F(WindowsElements, WithoutTheStandInTheSearchEnds) {
    auto found = std::async(std::launch::async, [] { return findElements({}); });
    EXPECT_TRUE(
        pumpUntil([&] { return found.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(found.get().area, primaryMonitor());
}

} // namespace
