// What Windows alone can do to us: deep folders, large images, messages to our windows, and faults in code
// that tells the system nothing.

#include "contract_test.h"
#include "platform/fault_guard.h"
#include "platform/files.h"
#include "platform/main_window.h"
#include "platform/overlay_window.h"
#include "platform/paths.h"
#include "platform/picture.h"
#include "platform/tray.h"
#include "screen.h"

#include "platform/windows/handles.h"

#include <cstring>

// The registers that a callee must put back are spoilt at the time of the fault, and nothing tells the system
// where they or the return address lie: as in hand-written matrix kernels.
extern "C" void faultWithoutUnwindTables(void*);
__asm__(".text\n"
        ".globl faultWithoutUnwindTables\n"
        "faultWithoutUnwindTables:\n"
        "    subq $200, %rsp\n"
        "    xorl %eax, %eax\n"
        "    movq %rax, (%rsp)\n"
        "    xorl %ebx, %ebx\n"
        "    pxor %xmm6, %xmm6\n"
        "    movl %eax, 8\n");

namespace {

using WindowsDesktop = ContractTest;

TEST_F(WindowsDesktop, FaultsInCodeWithoutUnwindTablesLeaveOnlyTheInnermostGuard) {
    const volatile double step = 1.5;
    double kept = step;
    int survived = 0;
    for (int round = 0; round < 1000; ++round) {
        survived +=
            runGuarded([](void*) { EXPECT_FALSE(runGuarded(faultWithoutUnwindTables, nullptr)); }, nullptr);
        kept += step;
    }
    EXPECT_EQ(survived, 1000);
    EXPECT_EQ(kept, 1001 * 1.5);
}

TEST_F(WindowsDesktop, FoldersMayBeAsDeepAsTheyLikeAndAFileThatIsHeldIsWrittenInPlaceIfThatIsShared) {
    const auto unlimited = [](const std::u16string& path) { return u"\\\\?\\" + path; };
    const std::u16string first = temporaryFolder() + u"\\deep";
    std::u16string folder = first;
    for (; folder.size() < 320; folder += u"\\" + std::u16string(9, u'ż')) {
        ASSERT_NE(CreateDirectoryW(wideText(unlimited(folder)), nullptr), 0);
        EXPECT_EQ(foldersIn(folder.substr(0, folder.rfind(u'\\'))).size(), 1U) << folder.size();
        const std::u16string path = joinPath(folder, u"file");
        EXPECT_TRUE(replaceFileBytes(path, "old and longer")) << folder.size();
        for (const DWORD sharing : {FILE_SHARE_READ, FILE_SHARE_READ | FILE_SHARE_WRITE}) {
            const KernelHandle held = fileHandle(CreateFileW(wideText(unlimited(path)), GENERIC_READ, sharing,
                                                             nullptr, OPEN_EXISTING, 0, nullptr));
            const bool isShared = sharing != FILE_SHARE_READ;
            EXPECT_EQ(replaceFileBytes(path, "new"), isShared) << folder.size();
            EXPECT_EQ(readFileBytes(path), isShared ? "new" : "old and longer") << folder.size();
        }
        EXPECT_TRUE(pathExists(path)) << folder.size();
        removeFile(path);
        EXPECT_FALSE(pathExists(path)) << folder.size();
    }
    for (; folder.size() >= first.size(); folder.resize(folder.rfind(u'\\')))
        RemoveDirectoryW(wideText(unlimited(folder)));
}

/// Black, 32 bits a pixel.
std::string bitmapFile(std::int32_t width, std::int32_t height) {
    constexpr std::int32_t headerBytes = 54;
    std::string bytes(static_cast<std::size_t>(headerBytes + 4 * width * height), '\0');
    const std::pair<std::size_t, std::int32_t> fields[] = {
        {0, 0x4D42}, {10, headerBytes}, {14, 40}, {18, width}, {22, height}, {26, 32 << 16 | 1}};
    for (const auto& [offset, value] : fields)
        std::memcpy(&bytes[offset], &value, sizeof(value));
    return bytes;
}

TEST_F(WindowsDesktop, AnImageIsAFileOfBoundedSizeAndIsScaledToWhatIsDrawn) {
    const std::u16string path = joinPath(temporaryFolder(), u"image.bmp");
    const auto load = [&](const std::string& bytes) {
        EXPECT_TRUE(replaceFileBytes(path, bytes));
        return loadPictureImage(path, 40);
    };
    for (const std::string& bytes :
         {std::string("none"), bitmapFile(largestImageSidePx + 4, 2), bitmapFile(2100, 2100)})
        EXPECT_EQ(load(bytes), nullptr) << bytes.size();
    const PictureImage* const image = load(bitmapFile(1600, 1200));
    const auto recorder = openRecorder(recorderPlace);
    placeOverlayWindow(wheelWindow(), {150, 150, 350, 250});
    presentPicture(wheelWindow(), {200, 100, {ImageInBox{image, {10, 10, 40, 40}, 1}}});
    showOverlayWindow(wheelWindow());
    EXPECT_TRUE(pumpUntil([] {
        const std::vector<PictureColor> row = screenPixels({159, 170, 201, 171});
        return row[0].green > 200 && row[1].green < 60 && row[40].green < 60 && row[41].green > 200;
    }));
}

TEST_F(WindowsDesktop, OurWindowsStayWhenAskedToCloseAndTellWhatTheSystemSays) {
    const HWND window = nativeWindow(mainWindow());
    const std::u16string tooLong(900, u'ż');
    addTrayIcon(mainWindow(), tooLong);
    for (const WPARAM command : {SC_CLOSE, SC_MINIMIZE}) {
        PostMessageW(window, WM_APP + 1, 1, WM_LBUTTONDBLCLK); // from the tray
        EXPECT_TRUE(pumpUntil([&] { return IsWindowVisible(window) && heard.statusPages > 0; }));
        PostMessageW(window, WM_SYSCOMMAND, command, 0);
        EXPECT_TRUE(pumpUntil([&] { return !IsWindowVisible(window); })) << command;
    }
    showTrayBalloon(tooLong, tooLong, BalloonIcon::warning);
    removeTrayIcon();
    PostMessageW(window, WM_DISPLAYCHANGE, 32, MAKELPARAM(1280, 800));
    for (const WPARAM change : {WTS_SESSION_LOCK, WTS_SESSION_UNLOCK, WTS_REMOTE_CONNECT})
        PostMessageW(window, WM_WTSSESSION_CHANGE, change, 1);
    for (const WindowHandle layer : {wheelWindow(), gridWindow()})
        PostMessageW(nativeWindow(layer), WM_CLOSE, 0, 0);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges >= 1 && heard.lockChanges.size() >= 2; }));
    EXPECT_EQ(heard.lockChanges, (std::vector<bool>{true, false}));
    EXPECT_TRUE(pumpUntil([] { return heard.closeRequests == 1; }));
    EXPECT_TRUE(IsWindow(nativeWindow(wheelWindow())) && IsWindow(nativeWindow(gridWindow())));

    // The last layer that is made tells of its end, and may have a successor made meanwhile.
    static WindowHandle successor;
    const auto makeSuccessor = []() noexcept {
        successor = createOverlayWindow(OverlayKind::grid, 9, 9, {});
    };
    DestroyWindow(nativeWindow(createOverlayWindow(OverlayKind::grid, 9, 9, {.destroyed = makeSuccessor})));
    EXPECT_NE(DestroyWindow(nativeWindow(successor)), 0);
}

} // namespace
