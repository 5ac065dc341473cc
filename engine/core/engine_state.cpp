#include "core/engine_state.h"

#include "core/engine_config.h"

#include <new>

namespace {

/// Holds a record that is never destroyed.
template <typename Record>
union Immortal {
    Immortal() : record() {}
    ~Immortal() {}
    Record record;
};

Immortal<EngineConfig> configStorage;
Immortal<EngineState> stateStorage;

} // namespace

EngineConfig& engineConfig = configStorage.record;
EngineState& engineState = stateStorage.record;

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
