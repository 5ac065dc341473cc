#include "platform/platform.h"

#include "platform/linux/connection.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/input_guard.h"
#include "platform/linux/picture_drawing.h"

#include <cstdio>

namespace rotika {

bool openPlatform() {
    if (!openConnection()) {
        std::fputs("Rotika: brak serwera X z rozszerzeniami XInput 2, XTest, XFixes, RandR 1.5 i XKB.\n",
                   stderr);
        return false;
    }
    startInputGuard();
    lockInjectionConnection(); // opens it now, so that the first step of a run is not delayed
    warmUpDrawing();
    return true;
}

} // namespace rotika
