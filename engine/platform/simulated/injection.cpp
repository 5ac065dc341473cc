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
    const std::string name = (extended ? "extended key " : "key ") + std::to_string(virtualKey);
    simulatedDesktop().note(JournalKind::input, name + motionName(motion));
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.note(JournalKind::input, "button " + std::to_string(button) + motionName(motion));
    if (motion != InputMotion::up)
        desktop.deliverPress(button);
}

} // namespace rotika
