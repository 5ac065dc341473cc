#pragma once

#include "base/geometry.h"

namespace rotika {

/// The real cursor. Owner thread.
Point cursorPosition();
/// No effect while a capture pins the cursor elsewhere.
void setCursorPosition(Point position);

/// Full rectangle, panels included, of the monitor that holds `point`, or of the primary one. Owner thread.
Rect monitorAt(Point point);
Rect primaryMonitor();

/// Whether the user has swapped the left and right buttons. Any thread.
bool mouseButtonsAreSwapped();

} // namespace rotika
