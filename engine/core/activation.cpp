#include "core/activation.h"

#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "model/engine_state.h"
#include "voice/phrase_table.h"
#include "wheel/icons.h"
#include "wheel/painter.h"

#include <utility>

namespace rotika {

void reloadFiles(std::u16string& problems) {
    loadConfiguration(problems);
    loadNewIcons();
    rebuildPhraseTable();
}

bool activateWheels(std::vector<Wheel> wheels) {
    std::erase_if(wheels, [](const Wheel& wheel) { return wheel.actions.empty(); });
    if (wheels.empty())
        return false;
    engineState.wheels = std::move(wheels);
    engineState.activeWheel = 0;
    engineState.hoveredField = -1;
    loadNewIcons();
    rebuildPhraseTable();
    repaintOpenWheel();
    return true;
}

bool activateWheelFile(const std::u16string& path) {
    std::vector<Wheel> loaded;
    std::u16string problems;
    loadWheelFile(path, loaded, problems);
    return activateWheels(std::move(loaded));
}

} // namespace rotika
