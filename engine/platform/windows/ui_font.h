#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// "Segoe UI" of the given height (negative: character height in pixels). The caller deletes it.
HFONT createInterfaceFont(int height);

/// uiFont, the font of the engine's controls; never deleted. Owner thread.
HFONT interfaceFont();

} // namespace rotika
