#pragma once

#include "platform/main_window.h"

namespace rotika {

/// The engine's handlers of its main window's events. `openEditor` may be null. Owner thread.
MainWindowHandlers mainWindowHandlers(void (*openEditor)() noexcept);

} // namespace rotika
