#include "platform/launcher.h"

#include "platform/windows/com_session.h"

namespace rotika {

void openTarget(const std::u16string& target) {
    // The handler of a target may be started through COM, which each thread must initialise.
    const ComSession session(COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    ShellExecuteW(nullptr, L"open", wideText(target), nullptr, nullptr, SW_SHOWNORMAL);
}

} // namespace rotika
