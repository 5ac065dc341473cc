#include "platform/platform.h"

#include "platform/simulated/simulated_desktop.h"

bool openPlatform() {
    simulatedDesktop().requireOwner("platform opened on a worker");
    return simulatedDesktop().hasDisplay;
}
