#include "platform/linux/held_keys.h"

#include <map>
#include <mutex>

namespace rotika {

namespace {

struct HeldKeys {
    std::mutex mutex;
    std::map<std::uint16_t, HeldKey> byVirtualKey;
};

// Never destroyed: run threads may inject until the process ends.
HeldKeys& heldKeys() {
    static HeldKeys* const instance = new HeldKeys;
    return *instance;
}

} // namespace

bool noteHeld(std::uint16_t virtualKey, const HeldKey& key) {
    const std::lock_guard lock(heldKeys().mutex);
    HeldKey& noted = heldKeys().byVirtualKey[virtualKey];
    const bool isNew = noted.code == 0;
    noted = key;
    return isNew;
}

HeldKey removeHeld(std::uint16_t virtualKey) {
    const std::lock_guard lock(heldKeys().mutex);
    const auto entry = heldKeys().byVirtualKey.extract(virtualKey);
    return entry ? entry.mapped() : HeldKey{};
}

KeyCode heldKeycode(std::uint16_t virtualKey) {
    const std::lock_guard lock(heldKeys().mutex);
    const auto held = heldKeys().byVirtualKey.find(virtualKey);
    return held == heldKeys().byVirtualKey.end() ? KeyCode{0} : held->second.code;
}

std::vector<KeyCode> heldKeycodes() {
    const std::lock_guard lock(heldKeys().mutex);
    std::vector<KeyCode> codes;
    for (const auto& [virtualKey, key] : heldKeys().byVirtualKey)
        codes.push_back(key.code);
    return codes;
}

std::vector<std::pair<std::uint16_t, HeldKey>> keysLeftDown() {
    const std::lock_guard lock(heldKeys().mutex);
    std::vector<std::pair<std::uint16_t, HeldKey>> left;
    for (const auto& entry : heldKeys().byVirtualKey)
        if (entry.second.isLeftDown)
            left.emplace_back(entry);
    return left;
}

} // namespace rotika
