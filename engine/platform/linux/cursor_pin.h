#pragma once

#include "base/geometry.h"

namespace rotika {

// X11 cannot confine the cursor to a pixel without a pointer grab, which would also block injected input. So
// the program's own moves are skipped while the cursor is pinned, and it is put back when another program has
// moved it. Owner thread.

void pinCursor(Point position);
void unpinCursor();
bool isCursorPinned();

/// Call on each tick of a capture; checks the cursor ten times a second.
void keepCursorPinned();

} // namespace rotika
