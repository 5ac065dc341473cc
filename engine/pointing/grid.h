#pragma once

#include "base/picture.h"

#include <cstdint>

namespace rotika {

// Numbered cells over the screen, narrowed by numbers down to any point. All on the owner thread.

/// Lays the grid over the monitor of the cursor, from the first level, and puts the cursor at its centre.
/// Takes the place of element labels on show.
void showGrid();

/// Goes on within cell `number`, counted along the rows from 1, with the cursor at its centre. A number that
/// no cell has does nothing.
void narrowGrid(std::int32_t number);

/// The picture of engineState's grid, as large as gridRect.
Picture gridPicture();

} // namespace rotika
