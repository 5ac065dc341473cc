#include "core/engine_state.h"

#include "core/engine_config.h"

#include <new>

EngineConfig engineConfig;
EngineState engineState;

const Wheel& activeWheelRecord() {
    return engineState.wheels[static_cast<std::size_t>(engineState.activeWheel)];
}

void resetEngineForTest() {
    engineConfig = EngineConfig{};
    // The state holds atomics and so cannot be assigned; made anew in its place it can.
    engineState.~EngineState();
    new (&engineState) EngineState{};
}
