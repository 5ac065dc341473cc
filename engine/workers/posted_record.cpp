#include "workers/posted_record.h"

#include <mutex>
#include <set>
#include <utility>

namespace rotika {

namespace {

struct PostedRecords {
    std::mutex mutex;
    std::set<std::pair<std::uint32_t, const void*>> records;
};

/// Never destroyed: an abandoned worker may post until the process ends.
PostedRecords& postedRecords() {
    static PostedRecords* const instance = new PostedRecords;
    return *instance;
}

} // namespace

void registerPostedRecord(std::uint32_t message, const void* record) {
    const std::lock_guard lock(postedRecords().mutex);
    postedRecords().records.insert({message, record});
}

bool unregisterPostedRecord(std::uint32_t message, const void* record) {
    const std::lock_guard lock(postedRecords().mutex);
    return postedRecords().records.erase({message, record}) > 0;
}

} // namespace rotika
