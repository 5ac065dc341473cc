#include "platform/elements.h"

#include "platform/clock.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void prepareElementSearches() {
    simulatedDesktop().areElementSearchesPrepared = true;
}

FoundElements findElements(const ElementSearch& search) {
    SimulatedDesktop& desktop = simulatedDesktop();
    const FoundElements found = desktop.elements;
    desktop.searches.push_back(search.scope);
    sleepMs(desktop.elementSearchMs);
    return found;
}

} // namespace rotika
