// What Windows alone asks for: a clip that belongs to everybody, a desktop that refuses input, deep folders,
// and faults in code that tells the system nothing of itself.

#include "contract_test.h"
#include "platform/fault_guard.h"
#include "platform/files.h"
#include "platform/injection.h"
#include "platform/paths.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include "platform/windows/handles.h"

#include <type_traits>
#include <utility>

extern "C" decltype(&SendInput) __imp_SendInput;
extern "C" decltype(&MapVirtualKeyW) __imp_MapVirtualKeyW;

// The registers that a callee must put back are spoilt at the time of the fault, and nothing tells the system
// where they or the return address lie: as in hand-written matrix kernels.
extern "C" void faultWithoutUnwindTables(void*);
__asm__(".text\n"
        "faultWithoutUnwindTables:\n"
        "    subq $200, %rsp\n"
        "    xorl %eax, %eax\n"
        "    movq %rax, (%rsp)\n"
        "    xorl %ebx, %ebx\n"
        "    pxor %xmm6, %xmm6\n"
        "    movl %eax, 8\n");

namespace {

/// Another function in place of one of the system's, for as long as this lives.
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

TEST_F(WindowsContract, ACaptureThatFallsSilentIsEndedByTheGuardAndGivesTheClipBackThatStoodBefore) {
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
    EXPECT_TRUE(recorder->hears("button 2 up"));
    EXPECT_FALSE(renewPointerCapture());
    EXPECT_EQ(heard.capturePresses + heard.windowPresses, 0);
    endPointerCapture();
    EXPECT_TRUE(clipIs(before) && renewPointerCapture()) << "there is nothing to be silent about";
    ClipCursor(nullptr);
}

TEST_F(WindowsContract, AReleaseThatTheSystemRefusesComesLaterAndNotAfterANewPress) {
    injectKey('A', false, InputMotion::downUntilReleased);
    injectKey('B', false, InputMotion::downUntilReleased);
    ASSERT_TRUE(recorder->hears("key 66 down"));
    {
        const StandIn refusal(__imp_SendInput, [](UINT, LPINPUT, int) -> UINT { return 0; });
        injectKey('A', false, InputMotion::up);
        injectKey('A', false, InputMotion::downUntilReleased);
        injectKey('B', false, InputMotion::up);
        tapInjected('B');
        tapInjected('C');
        keybd_event('C', 0, 0, 0); // the person's, who alone has pressed it
    }
    EXPECT_TRUE(recorder->hears("key 66 up"));
    for (const char* const early : {"key 65 up", "key 67 up"})
        EXPECT_FALSE(contains(recorder->events(), early)) << early;
    keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(recorder->hears("key 65 up"));
}

WORD sentScanCode = 0;

TEST_F(WindowsContract, PrintScreenHasItsOwnScanCodeWhateverTheSystemSays) {
    // Windows answers with the code of the key under Alt, and Wine knows better.
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

TEST_F(WindowsContract, FaultsInCodeWithoutUnwindTablesLeaveOnlyTheInnermostGuard) {
    const volatile double step = 1.5;
    double kept = step;
    int survived = 0;
    const auto faultInside = [](void* count) {
        *static_cast<int*>(count) += runGuarded(faultWithoutUnwindTables, nullptr) ? 0 : 1;
    };
    for (int round = 0; round < 1000; ++round) {
        EXPECT_TRUE(runGuarded(faultInside, &survived));
        kept += step;
    }
    EXPECT_EQ(survived, 1000);
    EXPECT_EQ(kept, 1001 * 1.5);
}

TEST_F(WindowsContract, FoldersMayBeDeep) {
    const auto unlimited = [](const std::u16string& path) { return u"\\\\?\\" + path; };
    const std::u16string first = temporaryFolder() + u"\\deep";
    std::u16string folder = first;
    std::u16string path;
    for (; folder.size() < 320; folder += u"\\" + std::u16string(9, u'ż')) {
        ASSERT_NE(CreateDirectoryW(wideText(unlimited(folder)), nullptr), 0);
        EXPECT_EQ(foldersIn(folder.substr(0, folder.rfind(u'\\'))).size(), 1U) << folder.size();
        removeFile(path);
        EXPECT_FALSE(pathExists(path)) << folder.size();
        path = joinPath(folder, u"file");
        EXPECT_TRUE(replaceFileBytes(path, "kept") && pathExists(path)) << folder.size();
    }
    removeFile(path);
    while (folder.size() > first.size()) {
        folder.resize(folder.rfind(u'\\'));
        RemoveDirectoryW(wideText(unlimited(folder)));
    }
}

TEST_F(WindowsContract, OurWindowsStayWhenAskedToCloseAndTellWhatTheSystemSays) {
    for (const WindowHandle window : {mainWindow(), wheelWindow(), gridWindow()}) {
        PostMessageW(nativeWindow(window), WM_CLOSE, 0, 0);
        PostMessageW(nativeWindow(window), WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 800));
    }
    for (const WPARAM change : {WTS_SESSION_LOCK, WTS_SESSION_UNLOCK, WTS_REMOTE_CONNECT})
        PostMessageW(nativeWindow(mainWindow()), WM_WTSSESSION_CHANGE, change, 1);
    EXPECT_TRUE(pumpUntil([] {
        return heard.closeRequests == 1 && heard.monitorChanges >= 1 && heard.lockChanges.size() >= 2;
    }));
    EXPECT_EQ(heard.lockChanges, (std::vector<bool>{true, false}));
    for (const WindowHandle window : {mainWindow(), wheelWindow(), gridWindow()})
        EXPECT_TRUE(IsWindow(nativeWindow(window)));
}

} // namespace
