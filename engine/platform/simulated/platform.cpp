#include "platform/platform.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

bool openPlatform() {
    simulatedDesktop().requireOwner("platform opened on a worker");
    return simulatedDesktop().hasDisplay;
}

} // namespace rotika
