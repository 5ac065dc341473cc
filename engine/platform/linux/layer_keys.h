#pragma once

#include "platform/overlay_window.h"

#include "platform/linux/x11.h"

namespace rotika {

// The keyboard of a layer that has the focus, by core events: one layer at most gets them. Owner thread.

/// Selected on the layer's window.
inline constexpr long layerKeyEvents = KeyPressMask | KeyReleaseMask | FocusChangeMask | KeymapStateMask;

/// Call once before the layer gets the focus.
void prepareLayerKeys();

/// For every event of the layer's window, and for KeymapNotify, which has no window. True if it is one of
/// those above.
bool handleLayerKeyEvent(XEvent& event, const OverlayWindowHandlers& handlers);

} // namespace rotika
