#include "platform/launcher.h"

#include "core/text.h"

#include "platform/simulated/simulated_desktop.h"

void openTarget(const std::u16string& target) {
    if (!VirtualClock::callerIsWorker())
        breakContract("a target opened on the owner thread");
    simulatedDesktop().note(JournalKind::target, "open " + utf8FromUtf16(target));
}
