#pragma once

#include "platform/input_guard_protocol.h"

#include <vector>

namespace rotika {

/// What the records of the guard's pipe say to be down. The program keeps it too, for the guard that follows
/// on one that died. Not locked.
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
