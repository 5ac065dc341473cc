#pragma once

namespace rotika {

// The wheel's window and the window shared by grid and element labels. Owner thread.

/// Creates each window that is missing: at the start, and after another process has destroyed one.
void createMissingOverlays();

} // namespace rotika
