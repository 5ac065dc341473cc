#pragma once

namespace rotika {

/// Opens what the other topics stand on: the display and its extensions, drawing and fonts (warmed up, so
/// that the first toggle is as fast as the hundredth), the guard that lets go of keys should the process be
/// killed. Owner thread, once, before any other function of the seam but those of clock, files, paths and
/// threads. False when there is no display to work on; the other topics then do nothing and answer empty.
bool openPlatform();

} // namespace rotika
