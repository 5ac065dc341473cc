// Simulated keyboard and mouse input and its delivery.

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>

namespace rotika {

void SimulatedDesktop::moveMouse(std::int32_t dx, std::int32_t dy) {
    if (!isSwallowed() && !pinnedAt)
        cursor = {cursor.x + dx, cursor.y + dy};
    if (capture)
        capture->moved(dx, dy);
}

void SimulatedDesktop::pressMouse(std::uint32_t button) {
    const bool swallowed = isSwallowed();
    if (!swallowed)
        deliverPress(button);
    if (!capture || button != 0)
        return;
    if (swallowed && pressDelivery == PressDelivery::hookAndRaw)
        capture->leftPressed();
    capture->leftPressed();
}

void SimulatedDesktop::deliverPress(std::uint32_t button) {
    const std::lock_guard lock(guard);
    const auto hit = std::find_if(stack.rbegin(), stack.rend(), [this](WindowHandle window) {
        return window->isShown && !window->isClickThrough && window->place.contains(cursor);
    });
    if (button == 0 && hit != stack.rend() && (*hit)->overlayHandlers.leftPressed != nullptr)
        queue.push_back({*hit, (*hit)->overlayHandlers.leftPressed});
}

void SimulatedDesktop::pressKey(std::uint16_t virtualKey) {
    const bool isNew = physicalKeysDown.insert(virtualKey).second;
    for (const auto& [id, hotKey] : hotKeys) {
        if (hotKey.virtualKey != virtualKey)
            continue;
        if (isNew)
            enqueue(windowNamed("main"), [this, pressedId = id] { mainHandlers->hotKeyPressed(pressedId); });
        return;
    }
    deliverKey(virtualKey, isNew ? KeyChange::pressed : KeyChange::repeated);
}

void SimulatedDesktop::releaseKey(std::uint16_t virtualKey) {
    physicalKeysDown.erase(virtualKey);
    deliverKey(virtualKey, KeyChange::released);
}

void SimulatedDesktop::deliverKey(std::uint16_t virtualKey, KeyChange change) {
    if (foreground == nullptr || foreground->overlayHandlers.keyChanged == nullptr)
        return;
    if (change != KeyChange::released)
        overlayKey = virtualKey;
    enqueue(foreground, [handler = foreground->overlayHandlers.keyChanged, virtualKey, change] {
        handler(virtualKey, change);
    });
}

void SimulatedDesktop::focusProgram(WindowHandle window) {
    if (foreground != nullptr && foreground->overlayHandlers.focusLost != nullptr)
        foreground->overlayHandlers.focusLost();
    foreground = window;
}

} // namespace rotika
