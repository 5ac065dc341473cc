#include "platform/launcher.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void openTarget(const std::u16string& target) {
    if (!VirtualClock::callerIsWorker())
        breakContract("a target opened on the owner thread");
    simulatedDesktop().note(JournalKind::target, "open " + utf8FromUtf16(target));
}

} // namespace rotika
