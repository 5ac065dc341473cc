#pragma once

#include "platform/main_window.h"

namespace rotika {

/// What the engine does with what arrives at its main window. `openEditor` may be null. Owner thread.
MainWindowHandlers mainWindowHandlers(void (*openEditor)() noexcept);

} // namespace rotika
