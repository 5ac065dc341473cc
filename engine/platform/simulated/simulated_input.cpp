// The person at the simulated machine: keyboard and mouse, and where their events end up.

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>
#include <array>

namespace rotika {

namespace {
std::string buttonName(std::uint32_t button) {
    static constexpr std::array<const char*, 5> names{"left", "right", "middle", "side 1", "side 2"};
    return button < names.size() ? names[button] : "button " + std::to_string(button);
}
} // namespace

void SimulatedDesktop::moveMouse(std::int32_t dx, std::int32_t dy) {
    if (!isSwallowed()) {
        seenByPrograms.push_back("motion");
        if (!pinnedAt) {
            cursor = {cursor.x + dx, cursor.y + dy};
        }
    }
    if (capture)
        capture->moved(dx, dy);
}

void SimulatedDesktop::pressMouse(std::uint32_t button) {
    const bool swallowed = isSwallowed();
    if (!swallowed) {
        buttonsProgramsSaw.insert(button);
        deliverPress(button, false);
    }
    if (!capture || button != 0)
        return;
    if (swallowed && pressDelivery == PressDelivery::hookAndRaw)
        capture->leftPressed();
    capture->leftPressed();
}

void SimulatedDesktop::releaseMouse(std::uint32_t button) {
    if (!isSwallowed()) {
        buttonsProgramsSaw.erase(button);
        deliverRelease(button, false);
    } else if (buttonsProgramsSaw.contains(button)) {
        releasedWhileCaptured.insert(button);
    }
}

void SimulatedDesktop::turnMouseWheel() {
    if (!isSwallowed())
        seenByPrograms.push_back("wheel");
}

void SimulatedDesktop::deliverPress(std::uint32_t button, bool isInjected) {
    const std::lock_guard lock(guard);
    const auto hit = std::find_if(stack.rbegin(), stack.rend(), [this](WindowHandle window) {
        return window->isShown && !window->letsPointerThrough && window->place.contains(cursor);
    });
    if (hit != stack.rend() && (*hit)->overlayHandlers.leftPressed != nullptr) {
        if (button == 0) {
            queue.push_back({*hit, (*hit)->overlayHandlers.leftPressed});
        }
        return;
    }
    seenByPrograms.push_back((isInjected ? "injected " : "") + buttonName(button) + " down");
}

void SimulatedDesktop::deliverRelease(std::uint32_t button, bool isInjected) {
    const std::lock_guard lock(guard);
    seenByPrograms.push_back((isInjected ? "injected " : "") + buttonName(button) + " up");
}

void SimulatedDesktop::endCapture() {
    capture.reset();
    pinnedAt.reset();
    for (const std::uint32_t button : releasedWhileCaptured) {
        buttonsProgramsSaw.erase(button);
        deliverRelease(button, false);
    }
    releasedWhileCaptured.clear();
}

void SimulatedDesktop::pressKey(std::uint16_t virtualKey) {
    if (!physicalKeysDown.insert(virtualKey).second)
        return;
    for (const auto& [id, hotKey] : hotKeys) {
        if (hotKey.virtualKey == virtualKey) {
            enqueue(windowNamed("main"), [this, pressedId = id] { mainHandlers->hotKeyPressed(pressedId); });
        }
    }
}

void SimulatedDesktop::releaseKey(std::uint16_t virtualKey) {
    physicalKeysDown.erase(virtualKey);
}

} // namespace rotika
