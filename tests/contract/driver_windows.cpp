// The user's events come from xdotool on Wine's X server; Wine treats them as hardware events. Another
// program's window runs on a thread of its own.

#include "contract_test.h"

#include "platform/windows/handles.h"

#include <atomic>
#include <map>
#include <thread>

using namespace rotika;

namespace {

/// Wine cannot wait for programs of the host, so each creates a file when it has ended.
void playOnHost(const std::string& xdotoolCommand) {
    static int serial = 0;
    const std::string done = "/tmp/rotika-input-" + std::to_string(GetCurrentProcessId()) + "-" +
                             std::to_string(GetTickCount64()) + "-" + std::to_string(++serial);
    std::string line = "sh -c \"xdotool " + xdotoolCommand + " && : > " + done + "\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    ASSERT_NE(CreateProcessA("Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &started),
              0);
    const std::string file = "Z:" + done;
    EXPECT_TRUE(pumpUntil([&] { return DeleteFileA(file.c_str()) != 0; })) << xdotoolCommand;
}

class WindowsRecorder : public Recorder {
public:
    explicit WindowsRecorder(const Rect& place) : thread([this, place] { run(place); }) {
        pumpUntil([this] { return own != nullptr; });
    }
    ~WindowsRecorder() override {
        PostMessageW(own, WM_CLOSE, 0, 0);
        pumpUntil([this] { return own == nullptr; }); // its end sends messages to our windows
        thread.join();
    }
    WindowHandle window() const override { return windowHandle(own); }

protected:
    void poll() override {}

private:
    void run(const Rect& place) {
        WNDCLASSW description{};
        description.lpszClassName = L"ContractRecorder";
        description.lpfnWndProc = DefWindowProcW;
        description.hInstance = moduleInstance();
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        RegisterClassW(&description); // fails harmlessly if registered already
        // Without the extended style Wine would not have the window manager manage the popup, which then
        // could not get the keyboard.
        own = CreateWindowExW(WS_EX_APPWINDOW, description.lpszClassName, L"recorder", WS_POPUP | WS_VISIBLE,
                              place.left, place.top, place.width(), place.height(), nullptr, nullptr,
                              moduleInstance(), nullptr);
        SetForegroundWindow(own);
        MSG message{};
        while (IsWindow(own) && GetMessageW(&message, nullptr, 0, 0) > 0) {
            recordMessage(message);
            DispatchMessageW(&message);
        }
        own = nullptr;
    }

    void recordMessage(const MSG& message) {
        static const std::map<UINT, std::pair<const char*, bool>> buttons{
            {WM_LBUTTONDOWN, {"button 0", true}}, {WM_LBUTTONUP, {"button 0", false}},
            {WM_RBUTTONDOWN, {"button 1", true}}, {WM_RBUTTONUP, {"button 1", false}},
            {WM_MBUTTONDOWN, {"button 2", true}}, {WM_MBUTTONUP, {"button 2", false}},
            {WM_MOUSEWHEEL, {"button 3", true}},
        };
        if (const auto button = buttons.find(message.message); button != buttons.end())
            record(button->second.first, button->second.second);
        if (message.message >= WM_KEYFIRST && message.message <= WM_SYSKEYUP)
            record("key " + std::to_string(message.wParam),
                   message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN);
    }

    std::atomic<HWND> own = nullptr;
    std::thread thread; // last: it uses the members above
};

} // namespace

void pumpOnce() {
    MSG message{};
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

std::unique_ptr<Recorder> makeRecorder(const Rect& place) {
    return std::make_unique<WindowsRecorder>(place);
}

void moveRealMouse(std::int32_t dx, std::int32_t dy) {
    playOnHost("mousemove_relative -- " + std::to_string(dx) + " " + std::to_string(dy));
}

void playRealButton(std::uint32_t button, bool isDown) {
    constexpr const char* names[] = {"1", "3", "2", "4"};
    playOnHost(std::string(isDown ? "mousedown " : "mouseup ") + names[button]);
}

void playRealKey(std::uint16_t virtualKey, bool isDown) {
    const std::string letter(1, static_cast<char>(virtualKey - 'A' + 'a'));
    const std::string name = virtualKey == VK_CAPITAL   ? "Caps_Lock"
                             : virtualKey == VK_CONTROL ? "Control_L"
                             : virtualKey == VK_RETURN  ? "Return"
                                                        : letter;
    playOnHost((isDown ? "keydown " : "keyup ") + name);
}
