#include "platform/message_box.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void showWarningBox(const std::u16string& title, const std::u16string& text) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("box shown by a worker");
    desktop.note(JournalKind::box, "[" + utf8FromUtf16(title) + "] " + utf8FromUtf16(text));
    desktop.pumpMessages();
}

} // namespace rotika
