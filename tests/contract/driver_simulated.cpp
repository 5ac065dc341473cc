#include "driver.h"

#include "platform/simulated/simulated_desktop.h"

#include <array>
#include <cstddef>
#include <set>

namespace {

/// The desktop speaks of named buttons, tells motion, and knows which presses were injected.
std::string plainEvent(std::string event) {
    const std::string injected = "injected ";
    if (event.starts_with(injected))
        event.erase(0, injected.size());
    constexpr std::array<const char*, 5> names{"left", "right", "middle", "side 1", "side 2"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string name = names[i];
        if (event.starts_with(name + " "))
            return "button " + std::to_string(i) + event.substr(name.size());
    }
    return event == "wheel" ? "scroll" : event;
}

class SimulatedRecorder : public Recorder {
public:
    explicit SimulatedRecorder(const Rect& place) {
        SimulatedDesktop& desktop = simulatedDesktop();
        program = desktop.addProgram("recorder");
        program->place = place;
        desktop.focusProgram(program);
        firstMouseEvent = desktop.seenByPrograms.size();
        firstKeyEvent = keyEvents().size();
    }
    ~SimulatedRecorder() override { simulatedDesktop().closeProgram(program); }

    WindowHandle window() const override { return program; }

    std::vector<std::string> events() const override {
        std::vector<std::string> all;
        const std::vector<std::string>& mouse = simulatedDesktop().seenByPrograms;
        for (std::size_t i = firstMouseEvent; i < mouse.size(); ++i)
            if (mouse[i] != "motion")
                all.push_back(plainEvent(mouse[i]));
        const std::vector<std::string> keys = keyEvents();
        all.insert(all.end(), keys.begin() + static_cast<std::ptrdiff_t>(firstKeyEvent), keys.end());
        return all;
    }

private:
    static std::vector<std::string> keyEvents() {
        std::vector<std::string> keys;
        for (std::string entry : simulatedDesktop().journalOf({JournalKind::input})) {
            for (const std::string& detail : {std::string("extended "), std::string(" and left")}) {
                if (const std::size_t at = entry.find(detail); at != std::string::npos)
                    entry.erase(at, detail.size());
            }
            if (entry.starts_with("key "))
                keys.push_back(entry);
        }
        return keys;
    }

    WindowHandle program;
    std::size_t firstMouseEvent = 0;
    std::size_t firstKeyEvent = 0;
};

} // namespace

bool pumpUntil(const std::function<bool()>& condition) {
    constexpr int limitMs = 10'000;
    for (int i = 0; i < limitMs; ++i) {
        simulatedDesktop().settle();
        if (condition())
            return true;
        simulatedDesktop().advanceBy(1);
    }
    return condition();
}

std::uint64_t watchMs() {
    return simulatedDesktop().clock.now();
}

std::unique_ptr<Recorder> openRecorder(const Rect& place) {
    return std::make_unique<SimulatedRecorder>(place);
}

std::shared_ptr<void> takeHotKeyElsewhere(std::uint16_t virtualKey) {
    std::set<std::uint16_t>& taken = simulatedDesktop().keysTakenByOthers;
    taken.insert(virtualKey);
    return {&taken, [&taken, virtualKey](void*) { taken.erase(virtualKey); }};
}

void moveRealMouse(std::int32_t dx, std::int32_t dy) {
    simulatedDesktop().moveMouse(dx, dy);
}

void pressRealButton(std::uint32_t button) {
    simulatedDesktop().pressMouse(button);
}

void releaseRealButton(std::uint32_t button) {
    simulatedDesktop().releaseMouse(button);
}

void scrollRealWheel() {
    simulatedDesktop().turnMouseWheel();
}

void pressRealKey(std::uint16_t virtualKey) {
    simulatedDesktop().pressKey(virtualKey);
}

void releaseRealKey(std::uint16_t virtualKey) {
    simulatedDesktop().releaseKey(virtualKey);
}
