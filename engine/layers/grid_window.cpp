#include "layers/grid_window.h"

#include "model/engine_state.h"
#include "platform/overlay_window.h"

namespace rotika {

void paintGridWindow(const Rect& area, const Picture& picture) {
    if (area.width() > 0 && area.height() > 0)
        presentPictureAt(engineState.gridWindow, {area.left, area.top}, picture);
}

void hideGrid() {
    hideOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = false;
}

void hideElementLabels() {
    if (!engineState.elementsVisible)
        return;
    hideOverlayWindow(engineState.gridWindow);
    engineState.elementsVisible = false;
}

void clearGridWindowFlags() {
    engineState.gridVisible = false;
    engineState.elementsVisible = false;
}

} // namespace rotika
