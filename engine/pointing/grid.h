#pragma once

#include "base/picture.h"

#include <cstdint>

namespace rotika {

// Numbered cells over the screen; each spoken number narrows the grid to one cell. Owner thread.

/// Shows the grid on the cursor's monitor, at the first level, and moves the cursor to its centre. Hides the
/// element labels.
void showGrid();

/// Narrows the grid to cell `number`, counted row by row from 1, and moves the cursor to its centre. No
/// effect for a number out of range.
void narrowGrid(std::int32_t number);

/// The picture of engineState's grid, of the size of gridRect.
Picture gridPicture();

} // namespace rotika
