#include "platform/message_box.h"

#include "platform/windows/windows_api.h"

namespace rotika {

void showWarningBox(const std::u16string& title, const std::u16string& text) {
    MessageBoxW(nullptr, wideText(text), wideText(title), MB_ICONWARNING);
}

} // namespace rotika
