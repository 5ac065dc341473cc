// What Windows alone asks for: hot keys that take exactly their modifiers, a clip that belongs to everybody,
// a desktop that refuses input, deep folders, and faults in code that tells the system nothing of itself.

#include "contract_test.h"
#include "platform/fault_guard.h"
#include "platform/files.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/paths.h"
#include "platform/picture.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include "platform/windows/handles.h"

#include <cstring>
#include <fstream>
#include <utility>

extern "C" decltype(&SendInput) __imp_SendInput;

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

class WindowsContract : public ContractTest {
protected:
    const std::unique_ptr<Recorder> recorder = openRecorder(recorderPlace);
};

TEST_F(WindowsContract, AHotKeyIsHeardUnderAModifierThatAFunctionHoldsAndNotUnderThePersons) {
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, 'X'));
    injectKey(VK_CONTROL, false, InputMotion::downAndLeft);
    EXPECT_TRUE(recorder->hears("key 17 down"));
    tapRealKey('X');
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys == std::vector<int>{1}; }));
    EXPECT_FALSE(contains(recorder->events(), "key 88 down"));
    tapRealKey(VK_CONTROL); // ends what the function holds
    EXPECT_TRUE(pumpUntil([&] {
        playRealKey(VK_CONTROL, true);
        tapRealKey('X');
        playRealKey(VK_CONTROL, false);
        return contains(recorder->events(), "key 88 down");
    }));
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(WindowsContract, ACaptureThatFallsSilentIsEndedByTheGuardAndGivesTheClipBackThatStoodBefore) {
    constexpr RECT clips[] = {{120, 120, 480, 380}, {200, 200, 400, 300}}; // as games do
    const auto clipIs = [](const RECT& wanted) {
        RECT clip{};
        GetClipCursor(&clip);
        return EqualRect(&clip, &wanted) != 0;
    };
    ClipCursor(&clips[0]);
    beginCapture(overRecorder);
    EXPECT_TRUE(clipIs({300, 250, 301, 251}) && renewPointerCapture());
    stopWindowTimer(wheelWindow());
    EXPECT_TRUE(pumpUntil([&] { return clipIs(clips[0]); }));
    clickRealButton(2);
    PostMessageW(nativeWindow(wheelWindow()), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_TRUE(recorder->hears("button 2 up"));
    EXPECT_FALSE(renewPointerCapture());
    EXPECT_EQ(heard.capturePresses + heard.windowPresses, 0);
    endPointerCapture();
    EXPECT_TRUE(clipIs(clips[0]) && renewPointerCapture()) << "there is nothing to be silent about";

    beginCapture(overRecorder);
    ClipCursor(&clips[1]);
    endPointerCapture();
    EXPECT_TRUE(clipIs(clips[1])) << "it is another program's";
    ClipCursor(nullptr);
}

TEST_F(WindowsContract, AReleaseThatTheSystemRefusesComesLaterAndNotAfterANewPress) {
    injectKey('A', false, InputMotion::downUntilReleased);
    injectKey('B', false, InputMotion::downUntilReleased);
    ASSERT_TRUE(recorder->hears("key 66 down"));
    DWORD protection = 0;
    VirtualProtect(&__imp_SendInput, sizeof(__imp_SendInput), PAGE_READWRITE, &protection);
    const auto system = std::exchange(__imp_SendInput, [](UINT, LPINPUT, int) -> UINT { return 0; });
    injectKey('A', false, InputMotion::up);
    injectKey('A', false, InputMotion::downUntilReleased);
    injectKey('B', false, InputMotion::up);
    tapInjected('B');
    tapInjected('C');
    keybd_event('C', 0, 0, 0); // the person's, who alone has pressed it
    __imp_SendInput = system;
    EXPECT_TRUE(recorder->hears("key 66 up"));
    for (const char* const early : {"key 65 up", "key 67 up"})
        EXPECT_FALSE(contains(recorder->events(), early)) << early;
    keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(recorder->hears("key 65 up"));
}

KBDLLHOOKSTRUCT hooked;

TEST_F(WindowsContract, KeysHaveTheScanCodesOfTheirPlaces) {
    const HookHandle hook(SetWindowsHookExW(
        WH_KEYBOARD_LL,
        [](int code, WPARAM message, LPARAM event) {
            hooked = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(event);
            return CallNextHookEx(nullptr, code, message, event);
        },
        moduleInstance(), 0));
    const std::pair<WORD, DWORD> extendedKeys[] = {{VK_SNAPSHOT, 0x37}, {VK_RMENU, 0x38}, {VK_RIGHT, 0x4D}};
    for (const auto& [key, scanCode] : extendedKeys) {
        tapInjected(key, true);
        EXPECT_TRUE(pumpUntil([] { return (hooked.flags & LLKHF_UP) != 0; }));
        EXPECT_EQ(std::exchange(hooked, {}).scanCode, scanCode) << key;
    }
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

TEST_F(WindowsContract, AFileThatOthersHoldIsWrittenInPlaceIfTheyShareItAndFoldersMayBeDeep) {
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
        EXPECT_TRUE(replaceFileBytes(path, "old and longer") && pathExists(path)) << folder.size();
    }
    for (const DWORD shared : {0, FILE_SHARE_WRITE}) {
        const KernelHandle held =
            fileHandle(CreateFileW(wideText(unlimited(path)), GENERIC_READ, FILE_SHARE_READ | shared, nullptr,
                                   OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(replaceFileBytes(path, "new"), shared != 0);
        EXPECT_EQ(readFileBytes(path), shared != 0 ? "new" : "old and longer");
    }
    removeFile(path);
    while (folder.size() > first.size()) {
        folder.resize(folder.rfind(u'\\'));
        RemoveDirectoryW(wideText(unlimited(folder)));
    }
}

/// Black, 32 bits a pixel.
std::string bitmapFile(std::int32_t width, std::int32_t height) {
    std::string bytes(static_cast<std::size_t>(54 + 4 * width * height), '\0');
    const std::pair<std::size_t, std::int32_t> fields[] = {{0, 0x4D42}, {10, 54},     {14, 40},
                                                           {18, width}, {22, height}, {26, 32 << 16 | 1}};
    for (const auto& [offset, value] : fields)
        std::memcpy(&bytes[offset], &value, sizeof(value));
    return bytes;
}

TEST_F(WindowsContract, AnImageIsAFileOfBoundedSizeAndIsScaledToWhatIsDrawn) {
    const std::u16string path = joinPath(temporaryFolder(), u"image.bmp");
    const auto load = [&](const std::string& bytes) {
        std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
        return loadPictureImage(path, 40);
    };
    for (const std::string& bytes :
         {std::string("none"), bitmapFile(largestImageSidePx + 4, 2), bitmapFile(2100, 2100)})
        EXPECT_EQ(load(bytes), nullptr) << bytes.size();
    showLayer(wheelWindow(), {ImageInBox{load(bitmapFile(1600, 1200)), {10, 10, 40, 40}, 1}});
    EXPECT_TRUE(pumpUntil([] {
        const std::vector<PictureColor> row = screenPixels({159, 170, 201, 171});
        return row[0].green > 200 && row[1].green < 60 && row[40].green < 60 && row[41].green > 200;
    }));
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
