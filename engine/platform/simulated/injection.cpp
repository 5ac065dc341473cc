#include "platform/injection.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

namespace {
std::string motionName(InputMotion motion) {
    switch (motion) {
    case InputMotion::up:
        return " up";
    case InputMotion::downUntilReleased:
        return " down";
    case InputMotion::downPersistent:
        return " down and stays";
    }
    return " ?";
}
} // namespace

void injectKey(std::uint16_t virtualKey, bool extended, InputMotion motion) {
    SimulatedDesktop& desktop = simulatedDesktop();
    const std::string name = (extended ? "extended key " : "key ") + std::to_string(virtualKey);
    desktop.note(JournalKind::input, name + motionName(motion));
    const std::lock_guard lock(desktop.guard);
    if (motion == InputMotion::up) {
        desktop.keysDown.erase(virtualKey);
    } else {
        desktop.keysDown.insert(virtualKey);
    }
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.note(JournalKind::input, "button " + std::to_string(button) + motionName(motion));
    if (motion == InputMotion::up) {
        desktop.deliverRelease(button, true);
    } else {
        desktop.deliverPress(button, true);
    }
    const std::lock_guard lock(desktop.guard);
    if (motion == InputMotion::up) {
        desktop.buttonsDown.erase(button);
    } else {
        desktop.buttonsDown.insert(button);
    }
}

} // namespace rotika
