#include "model/engine_state.h"

#include "model/engine_config.h"

#include <new>

namespace rotika {

EngineState& engineState = *new EngineState;

const Wheel& activeWheelRecord() {
    return engineState.wheels[static_cast<std::size_t>(engineState.activeWheel)];
}

namespace {

/// The records hold atomics and cannot be assigned, so they are destroyed and constructed in place.
template <typename Record>
void recreate(Record& record) {
    record.~Record();
    new (&record) Record{};
}

} // namespace

void resetEngineForTest() {
    recreate(engineConfig);
    recreate(engineState);
}

} // namespace rotika
