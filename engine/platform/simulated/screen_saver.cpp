#include "platform/screen_saver.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void wakeScreen() {
    ++simulatedDesktop().screenWakeUps;
}

} // namespace rotika
