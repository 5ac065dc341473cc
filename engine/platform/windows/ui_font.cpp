#include "platform/windows/ui_font.h"

namespace rotika {

HFONT createInterfaceFont(int height) {
    return CreateFontW(height, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                       CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, DEFAULT_PITCH, L"Segoe UI");
}

HFONT interfaceFont() {
    static const HFONT uiFont = createInterfaceFont(-15);
    return uiFont;
}

} // namespace rotika
