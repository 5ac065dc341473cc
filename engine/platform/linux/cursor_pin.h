#pragma once

#include "base/geometry.h"

namespace rotika {

// X11 cannot confine the cursor to a pixel without taking the pointer from everybody, what is injected
// included. So our own moves are left out while the cursor is pinned, and where another program has moved it,
// it is put back. Owner thread.

void pinCursor(Point position);
void unpinCursor();
bool isCursorPinned();

/// Called by each tick of a capture; looks at the cursor ten times a second.
void keepCursorPinned();

} // namespace rotika
