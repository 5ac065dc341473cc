#include "contract_test.h"

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>
#include <array>

namespace {

class SimulatedRecorder : public Recorder {
public:
    explicit SimulatedRecorder(const Rect& place) : program(desktop.addProgram("recorder")) {
        program->place = place;
        desktop.focusProgram(program);
        buttonsRead = desktop.seenByPrograms.size();
        keysRead = keysIn(desktop).size();
        hasHeardZ = true; // the desktop's keys are heard from the start
    }
    ~SimulatedRecorder() override { desktop.closeProgram(program); }
    WindowHandle window() const override { return program; }

protected:
    void poll() override {
        constexpr std::array names{"left", "right", "middle", "wheel"};
        for (; buttonsRead < desktop.seenByPrograms.size(); ++buttonsRead) {
            const std::string& event = desktop.seenByPrograms[buttonsRead];
            for (std::size_t i = 0; i < names.size(); ++i)
                if (event.find(names[i]) != std::string::npos)
                    tell("button " + std::to_string(i), !event.ends_with(" up"));
        }
        for (const auto keys = keysIn(desktop); keysRead < keys.size(); ++keysRead) {
            const std::string& event = keys[keysRead];
            const std::size_t name = event.find("key ");
            tell(event.substr(name, event.find(' ', name + 4) - name), !event.ends_with(" up"));
        }
    }

private:
    static std::vector<std::string> keysIn(const SimulatedDesktop& desktop) {
        std::vector<std::string> keys = desktop.journalOf({JournalKind::input});
        std::erase_if(keys, [](const std::string& event) { return event.find("key ") == std::string::npos; });
        return keys;
    }

    SimulatedDesktop& desktop = simulatedDesktop();
    WindowHandle program;
    std::size_t buttonsRead = 0;
    std::size_t keysRead = 0;
};

} // namespace

void pumpOnce() {
    simulatedDesktop().settle();
    simulatedDesktop().advanceBy(1);
}

std::uint64_t watchMs() {
    return simulatedDesktop().clock.now();
}

std::unique_ptr<Recorder> makeRecorder(const Rect& place) {
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

void playRealButton(std::uint32_t button, bool isDown) {
    if (button == 3 && isDown)
        simulatedDesktop().turnMouseWheel();
    else if (button != 3)
        isDown ? simulatedDesktop().pressMouse(button) : simulatedDesktop().releaseMouse(button);
}

void playRealKey(std::uint16_t virtualKey, bool isDown) {
    isDown ? simulatedDesktop().pressKey(virtualKey) : simulatedDesktop().releaseKey(virtualKey);
}
