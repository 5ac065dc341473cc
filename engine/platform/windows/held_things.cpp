#include "platform/windows/held_things.h"

#include <algorithm>

namespace rotika {

namespace {

/// The records of a pin are removed together, and distinguished by `extended`, not by their code.
bool replaces(const GuardRecord& record, const GuardRecord& earlier) {
    if (record.kind != earlier.kind) {
        return false;
    }
    if (record.kind == GuardedThing::pointerPin) {
        return record.down == 0 || record.extended == earlier.extended;
    }
    return record.extended == earlier.extended && record.code == earlier.code;
}

} // namespace

void HeldThings::apply(const GuardRecord& record) {
    std::erase_if(held, [&](const GuardRecord& earlier) { return replaces(record, earlier); });
    if (record.down != 0) {
        held.push_back(record);
    }
}

bool HeldThings::contains(const GuardRecord& record) const {
    return std::ranges::any_of(held, [&](const GuardRecord& other) { return replaces(record, other); });
}

} // namespace rotika
