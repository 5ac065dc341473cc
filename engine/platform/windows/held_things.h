#pragma once

#include "platform/input_guard_protocol.h"

#include <vector>

namespace rotika {

/// The state described by the records of the guard's pipe: what is held down or pinned. The program keeps it
/// too, for the successor of a guard that died. Not thread-safe.
class HeldThings {
public:
    void apply(const GuardRecord& record);
    bool contains(const GuardRecord& record) const;
    /// In the order of the records.
    const std::vector<GuardRecord>& all() const { return held; }

private:
    std::vector<GuardRecord> held;
};

} // namespace rotika
