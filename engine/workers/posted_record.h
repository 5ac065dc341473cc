#pragma once

#include "platform/messages.h"

#include <cstdint>
#include <memory>

namespace rotika {

// Records that workers hand to the owner thread as the lParam of a posted message. Any process of the desktop
// may post a message with any number in it, so only what was posted here is taken, and each record once.

/// The registry behind the two templates. Any thread.
void noteHandedOver(std::uint32_t message, const void* record);
/// False when no such record is on its way.
bool forgetHandedOver(std::uint32_t message, const void* record);

/// Posts `record` to `window`; it is destroyed here when it cannot be posted. Any thread.
template <typename Record>
bool postRecord(WindowHandle window, std::uint32_t message, std::unique_ptr<Record> record) {
    noteHandedOver(message, record.get());
    if (!postWindowMessage(window, message, 0, reinterpret_cast<std::intptr_t>(record.get()))) {
        forgetHandedOver(message, record.get());
        return false;
    }
    static_cast<void>(record.release()); // the receiver's now
    return true;
}

/// The record that `message` brought; null when `lParam` is null or none of ours. `Record` is the type that
/// the message is posted with. Owner thread.
template <typename Record>
std::unique_ptr<Record> takeRecord(std::uint32_t message, std::intptr_t lParam) {
    auto* const record = reinterpret_cast<Record*>(lParam);
    return std::unique_ptr<Record>(forgetHandedOver(message, record) ? record : nullptr);
}

} // namespace rotika
