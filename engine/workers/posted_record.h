#pragma once

#include "platform/messages.h"

#include <cstdint>
#include <memory>

namespace rotika {

// Records that workers pass to the owner thread as the lParam of a posted message. Any process of the desktop
// can post a message with any lParam, so only registered records are accepted, and each of them once.

/// The registry behind the two templates. Any thread.
void registerPostedRecord(std::uint32_t message, const void* record);
/// False when no such record is registered.
bool unregisterPostedRecord(std::uint32_t message, const void* record);

/// Posts `record` to `window`; destroys it when it cannot be posted. Any thread.
template <typename Record>
bool postRecord(WindowHandle window, std::uint32_t message, std::unique_ptr<Record> record) {
    registerPostedRecord(message, record.get());
    if (!postWindowMessage(window, message, 0, reinterpret_cast<std::intptr_t>(record.get()))) {
        unregisterPostedRecord(message, record.get());
        return false;
    }
    static_cast<void>(record.release()); // owned by the receiver
    return true;
}

/// The record of a received `message`; null when `lParam` is null or not registered. `Record` is the type
/// that the message is posted with. Owner thread.
template <typename Record>
std::unique_ptr<Record> takeRecord(std::uint32_t message, std::intptr_t lParam) {
    auto* const record = reinterpret_cast<Record*>(lParam);
    return std::unique_ptr<Record>(unregisterPostedRecord(message, record) ? record : nullptr);
}

} // namespace rotika
