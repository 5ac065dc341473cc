#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// "Segoe UI" of the given height (negative: of the characters, in pixels). The caller deletes it.
HFONT createInterfaceFont(int height);

/// uiFont, the font of the engine's controls; kept to the end of the process. Owner thread.
HFONT interfaceFont();

} // namespace rotika
