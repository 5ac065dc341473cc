#include "platform/threads.h"

#include "platform/simulated/simulated_desktop.h"

void startDetachedThread(std::function<void()> body) {
    simulatedDesktop().clock.startWorker(std::move(body));
}
