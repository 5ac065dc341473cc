#include "core/engine_state.h"

#include "core/engine_config.h"

#include <new>

EngineConfig engineConfig;
EngineState engineState;

const Wheel& activeWheelRecord() {
    return engineState.wheels[static_cast<std::size_t>(engineState.activeWheel)];
}

namespace {

/// The records hold atomics and so cannot be moved; made anew in their place they can.
template <typename Record>
void makeAnew(Record& record) {
    record.~Record();
    new (&record) Record{};
}

} // namespace

void resetEngineForTest() {
    makeAnew(engineConfig);
    makeAnew(engineState);
}
