#include "workers/posted_record.h"

#include <mutex>
#include <set>
#include <utility>

namespace rotika {

namespace {

struct HandedOver {
    std::mutex mutex;
    std::set<std::pair<std::uint32_t, const void*>> records;
};

/// Never destroyed: an abandoned worker may post to the very end of the process.
HandedOver& handedOver() {
    static HandedOver* const instance = new HandedOver;
    return *instance;
}

} // namespace

void noteHandedOver(std::uint32_t message, const void* record) {
    const std::lock_guard lock(handedOver().mutex);
    handedOver().records.insert({message, record});
}

bool forgetHandedOver(std::uint32_t message, const void* record) {
    const std::lock_guard lock(handedOver().mutex);
    return handedOver().records.erase({message, record}) > 0;
}

} // namespace rotika
