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
    lockInjectionConnection(); // opened now, so that the first step of the first run need not
    warmUpDrawing();
    return true;
}

} // namespace rotika
