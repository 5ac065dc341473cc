#pragma once

namespace rotika {

// The wheel's window and the one that grid and element labels share. Owner thread.

/// Makes each of them that is missing: at the start, and after somebody else has destroyed one.
void createMissingOverlays();

} // namespace rotika
