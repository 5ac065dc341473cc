#include "platform/screen_saver.h"

#include "platform/simulated/simulated_desktop.h"

void wakeScreen() {
    ++simulatedDesktop().screenWakeUps;
}
