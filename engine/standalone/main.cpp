// rotika-engine.exe: the engine without the shell. Runs until it is ended from its tray icon.

#include "common/data_folder.h"
#include "common/single_instance.h"
#include "core/lifecycle.h"
#include "editor/editor.h"
#include "model/engine_state.h"
#include "platform/paths.h"

#include "platform/windows/windows_api.h"

using namespace rotika;

namespace {

/// Destroying the main window posts no quit message, and may happen in the message loop of a modal box, so
/// the loop tests the window itself.
int pumpUntilDestroyed(HWND mainWindow) {
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
    SetCurrentDirectoryW(dataFolderPath().c_str()); // base of relative open targets
    engineState.engineStarted = startEngine(true, []() noexcept { openEditor(); });
    const int status = pumpUntilDestroyed(nativeWindow(engineState.mainWindow));
    stopEngine();
    DestroyWindow(nativeWindow(engineState.mainWindow)); // if the loop ended by WM_QUIT
    return status;
}
