#pragma once

#include <string>
#include <vector>

namespace rotika {

// Names and places of the libraries that drive devices. Any thread.

/// File name of the speech recogniser's library on this system.
std::u16string speechLibraryName();

/// File name of the eye tracker's library on this system.
std::u16string gazeLibraryName();

/// Folders below which the eye tracker's maker installs its library, in the order of the search.
std::vector<std::u16string> gazeLibraryRoots();

} // namespace rotika
