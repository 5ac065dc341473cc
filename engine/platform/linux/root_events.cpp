#include "platform/linux/root_events.h"

#include "platform/linux/connection.h"

namespace rotika {

namespace {
long selected = NoEventMask;
}

void selectRootEvents(long events) {
    selected |= events;
    XSelectInput(ownerDisplay(), rootWindow(), selected);
}

void unselectRootEvents(long events) {
    selected &= ~events;
    XSelectInput(ownerDisplay(), rootWindow(), selected);
}

} // namespace rotika
