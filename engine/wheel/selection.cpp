#include "wheel/selection.h"

#include "model/engine_config.h"
#include "model/engine_state.h"
#include "wheel/capture.h"
#include "wheel/focus_hold.h"
#include "wheel/painter.h"
#include "wheel/wheel_layout.h"

namespace rotika {

void turnPage(std::int32_t arrow) {
    const auto wheelCount = static_cast<std::int32_t>(engineState.wheels.size());
    const std::int32_t stride = arrow == 0 ? wheelCount - 1 : 1;
    engineState.activeWheel = (engineState.activeWheel + stride) % wheelCount;
    // The new wheel may have another number of fields under the unmoved cursor.
    engineState.hoveredField = hitTestField(engineState.cursorX, engineState.cursorY);
    paintWheel();
}

void selectUnderCursor() {
    if (!engineState.wheelVisible)
        return;
    const std::int32_t arrow = hitTestArrow(engineState.cursorX, engineState.cursorY);
    if (arrow >= 0) {
        turnPage(arrow);
        return;
    }
    const std::int32_t field = hitTestField(engineState.cursorX, engineState.cursorY);
    if (field < 0)
        return;
    // A copy: restoring the focus may dispatch another program's message, which may replace the wheels.
    const WheelAction action = activeWheelRecord().actions[static_cast<std::size_t>(field)];
    closeWheel();
    if (!action.steps.empty())
        runWithFocusBack(action, static_cast<std::uint32_t>(engineConfig.sendDelay.load()));
}

} // namespace rotika
