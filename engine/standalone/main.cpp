// rotika-engine.exe: the engine alone, without the shell. It lives in its tray icon until that ends it.

#include "common/data_folder.h"
#include "common/single_instance.h"
#include "core/lifecycle.h"
#include "editor/editor.h"
#include "model/engine_state.h"
#include "platform/paths.h"

#include "platform/windows/windows_api.h"

using namespace rotika;

namespace {

/// The end of the main window posts no message of its own to end the loop by. It may also come within a box
/// of the engine, which pumps messages itself.
int pumpUntilGone(HWND mainWindow) {
    MSG message{};
    while (IsWindow(mainWindow) != 0 && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return message.message == WM_QUIT ? static_cast<int>(message.wParam) : 0;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    if (!claimSingleInstance()) {
        MessageBoxW(nullptr, L"Rotika już działa — sprawdź ikonę w zasobniku systemowym.", L"Rotika",
                    MB_ICONINFORMATION);
        return 0;
    }
    SetCurrentDirectoryW(dataFolderPath().c_str()); // relative targets of functions begin here
    engineState.engineStarted = startEngine(true, []() noexcept { openEditor(); });
    const int status = pumpUntilGone(nativeWindow(engineState.mainWindow));
    stopEngine();
    DestroyWindow(nativeWindow(engineState.mainWindow)); // if the loop was ended from outside
    return status;
}
