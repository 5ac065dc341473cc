#include "model/engine_state.h"

#include "model/engine_config.h"

#include <new>

namespace rotika {

EngineState& engineState = *new EngineState;

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

} // namespace rotika
