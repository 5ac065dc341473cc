#pragma once

#include "base/geometry.h"
#include "base/picture.h"

namespace rotika {

// The window that the grid and the element labels share: one of them is on show at a time. Owner thread.

/// Makes `picture` the window's content, over `area` of the screen. An empty area leaves the last picture.
void paintGridWindow(const Rect& area, const Picture& picture);

/// Hides the window; the grid is then not on show.
void hideGrid();

/// Hides the element labels if they are on show; their list stays.
void hideElementLabels();

/// The window is hidden or gone: nothing is on show in it.
void clearGridWindowFlags();

} // namespace rotika
