#include "platform/screen_saver.h"

#include "platform/linux/connection.h"
#include "platform/linux/session_lock.h"

namespace rotika {

void wakeScreen() {
    if (ownerDisplay() == nullptr)
        return;
    XForceScreenSaver(ownerDisplay(), ScreenSaverReset);
    XFlush(ownerDisplay());
    reportActivityToLockers();
}

} // namespace rotika
