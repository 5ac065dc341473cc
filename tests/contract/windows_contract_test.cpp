// Windows only: the shared cursor clip, a desktop that refuses input, faults in code without unwind tables,
// and the search for elements with a test double of UI Automation.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/fault_guard.h"
#include "platform/injection.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include "platform/windows/handles.h"

#include <future>
#include <type_traits>
#include <utility>

using namespace rotika;

extern "C" decltype(&SendInput) __imp_SendInput;
extern "C" decltype(&MapVirtualKeyW) __imp_MapVirtualKeyW;

// Overwrites a callee-saved register, and has no unwind tables for it or the return address, as in
// hand-written matrix kernels.
extern "C" void faultWithoutUnwindTables(void*);
__asm__(".text\n"
        "faultWithoutUnwindTables:\n"
        "    subq $200, %rsp\n"
        "    xorl %ebx, %ebx\n"
        "    movl %ebx, 8(%rbx)\n");

namespace {

/// Replaces a function of the system while it exists.
template <typename Function>
class StandIn {
public:
    StandIn(Function& imported, std::type_identity_t<Function> other) : place(imported) {
        DWORD protection = 0;
        VirtualProtect(&place, sizeof(place), PAGE_READWRITE, &protection);
        system = std::exchange(place, other);
    }
    ~StandIn() { place = system; }

private:
    Function& place;
    Function system;
};

class WindowsContract : public ContractTest {
protected:
    const std::unique_ptr<Recorder> recorder = openRecorder(recorderPlace);
};

TEST_F(WindowsContract, TheGuardEndsAStaleCaptureAndRestoresTheEarlierClip) {
    constexpr RECT before{120, 120, 480, 380}; // as games do
    const auto clipIs = [](const RECT& wanted) {
        RECT clip{};
        GetClipCursor(&clip);
        return EqualRect(&clip, &wanted) != 0;
    };
    ClipCursor(&before);
    beginCapture(overRecorder);
    EXPECT_TRUE(clipIs({300, 250, 301, 251}) && renewPointerCapture());
    stopWindowTimer(wheelWindow());
    EXPECT_TRUE(pumpUntil([&] { return clipIs(before); }));
    clickRealButton(2);
    PostMessageW(nativeWindow(wheelWindow()), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_TRUE(recorder->receives("button 2 up"));
    EXPECT_FALSE(renewPointerCapture());
    EXPECT_EQ(received.capturePresses + received.windowPresses, 0);
    endPointerCapture();
    EXPECT_TRUE(clipIs(before) && renewPointerCapture()) << "no capture, so it cannot be stale";
    ClipCursor(nullptr);
}

TEST_F(WindowsContract, ARefusedReleaseIsRetriedButNotAfterANewPress) {
    injectKey('A', false, InputMotion::downUntilReleased);
    injectKey('B', false, InputMotion::downUntilReleased);
    ASSERT_TRUE(recorder->receives("key 66 down"));
    {
        const StandIn refusal(__imp_SendInput, [](UINT, LPINPUT, int) -> UINT { return 0; });
        injectKey('A', false, InputMotion::up);
        injectKey('A', false, InputMotion::downUntilReleased);
        injectKey('B', false, InputMotion::up);
        tapInjected('B');
        tapInjected('C');
        keybd_event('C', 0, 0, 0); // the user's press, the only one that arrives
    }
    EXPECT_TRUE(recorder->receives("key 66 up"));
    for (const char* const early : {"key 65 up", "key 67 up"})
        EXPECT_FALSE(contains(recorder->events(), early)) << early;
    keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(recorder->receives("key 65 up"));
}

WORD sentScanCode = 0;

TEST_F(WindowsContract, PrintScreenHasItsOwnScanCodeWhateverTheSystemReturns) {
    // Windows returns the code of the key with Alt, Wine the right one.
    const StandIn mapping(__imp_MapVirtualKeyW, [](UINT, UINT) -> UINT { return 0x54; });
    const StandIn sending(__imp_SendInput, [](UINT, LPINPUT input, int) -> UINT {
        sentScanCode = input->ki.wScan;
        return 1;
    });
    tapInjected(VK_SNAPSHOT, true);
    EXPECT_EQ(sentScanCode, 0x37);
    tapInjected(VK_RIGHT, true);
    EXPECT_EQ(sentScanCode, 0x54);
}

TEST_F(WindowsContract, AFaultWithoutUnwindTablesEndsOnlyTheInnermostGuard) {
    int survived = 0;
    const auto faultInside = [](void* count) {
        *static_cast<int*>(count) += runGuarded(faultWithoutUnwindTables, nullptr) ? 0 : 1;
    };
    for (int round = 0; round < 1000; ++round)
        EXPECT_TRUE(runGuarded(faultInside, &survived));
    EXPECT_EQ(survived, 1000);
}

TEST_F(WindowsContract, OurWindowsIgnoreCloseRequestsAndReportSystemEvents) {
    const WindowHandle windows[] = {mainWindow(), wheelWindow(), gridWindow()};
    for (const WindowHandle window : windows) {
        PostMessageW(nativeWindow(window), WM_CLOSE, 0, 0);
        PostMessageW(nativeWindow(window), WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 800));
    }
    for (const WPARAM change : {WTS_SESSION_LOCK, WTS_SESSION_UNLOCK})
        PostMessageW(nativeWindow(mainWindow()), WM_WTSSESSION_CHANGE, change, 1);
    EXPECT_TRUE(pumpUntil([] { return received.lockChanges == std::vector<bool>{true, false}; }));
    EXPECT_TRUE(pumpUntil([] { return received.closeRequests == 1 && received.monitorChanges >= 1; }));
    for (const WindowHandle window : windows)
        EXPECT_TRUE(IsWindow(nativeWindow(window)));
}

/// The left edges of the elements below each root; they differ for all elements.
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
        RegisterClassA(&description); // fails harmlessly if registered already
        return CreateWindowA(name, "", style, 0, 0, size.x, size.y, parent, nullptr, nullptr, nullptr);
    }

    /// Searches on a thread of its own, as the engine does.
    static FoundElements search(ElementScope scope = ElementScope::windowAndTaskbar,
                                WindowHandle ownWindow = mainWindow()) {
        const ElementSearch wanted{scope, {gridWindow(), ownWindow}};
        return std::async(std::launch::async, findElements, wanted).get();
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

TEST_F(WindowsElements, ClickableElementsAreReturnedInOrderWithTheirProperties) {
    using enum ControlType;
    const FoundElements found = search();
    EXPECT_EQ(found.area, primaryMonitor());
    const std::vector<std::vector<ScreenElement>> expected{
        {{{10, 11, 12, 13}, button, true, false, false},
         {{20, 21, 22, 23}, static_cast<ControlType>(50026), true, false, true},
         {{30, 31, 32, 33}, hyperlink, false, true, false}},
        {{{50, 51, 52, 53}, button, true, false, false}}};
    EXPECT_EQ(found.roots, expected);
    EXPECT_EQ(leftEdges(search(ElementScope::windowAndTaskbar, windowHandle(front))), Found{{50}});
    const HWND refusing = makeWindow("RotikaRefusing", {700, 600}, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    EXPECT_TRUE(pumpUntil([&] { return GetForegroundWindow() == refusing; }));
    EXPECT_EQ(leftEdges(search()), Found{{50}}) << "only its own elements are missing";
    DestroyWindow(refusing);
}

/// A narrow browser window of a page's class shows no page.
TEST_F(WindowsElements, APageIsTheBrowsersPageWindow) {
    constexpr DWORD style = WS_CHILD | WS_VISIBLE;
    makeWindow("MozillaWindowClass", {200, 400}, style, front);
    EXPECT_EQ(leftEdges(search(ElementScope::page)), (Found{{10, 20, 30}}));
    RECT place{};
    GetWindowRect(makeWindow("MozillaWindowClass", {3000, 201}, style, front), &place);
    const FoundElements found = search(ElementScope::page);
    EXPECT_EQ(found.area, (Rect{place.left, place.top, primaryMonitor().right, place.bottom}));
    EXPECT_EQ(leftEdges(found), Found{{40}});
}

} // namespace
