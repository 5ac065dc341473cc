#pragma once

#include "base/geometry.h"
#include "base/picture.h"

namespace rotika {

// The window that the grid and the element labels share: one of them is visible at a time. Owner thread.

/// Makes `picture` the window's content, over `area` of the screen. An empty area keeps the last picture.
void paintGridWindow(const Rect& area, const Picture& picture);

/// Hides the window and clears gridVisible.
void hideGrid();

/// Hides the element labels if they are visible; elementRects is kept.
void hideElementLabels();

/// Clears gridVisible and elementsVisible, after the window was hidden or destroyed.
void clearGridWindowFlags();

} // namespace rotika
