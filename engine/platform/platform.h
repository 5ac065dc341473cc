#pragma once

namespace rotika {

/// Initialises the platform: the display and its extensions, drawing and fonts (cached in advance, so that
/// the first toggle is as fast as later ones), the guard that releases keys if the process is killed. Owner
/// thread, once, before any other function of engine/platform except clock, files, paths and threads. False
/// when there is no display; the other functions then have no effect and return empty values.
bool openPlatform();

} // namespace rotika
