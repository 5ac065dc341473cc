#pragma once

#include <string>
#include <vector>

namespace rotika {

// Names and locations of device libraries. Any thread.

/// File name of the speech recogniser's library on this system.
std::u16string speechLibraryName();

/// File name of the eye tracker's library on this system.
std::u16string gazeLibraryName();

/// Folders below which the eye tracker's vendor installs its library, in search order.
std::vector<std::u16string> gazeLibraryRoots();

} // namespace rotika
