#include "shell/update_library.h"

// WinSparkle exists for Windows only, and here the package manager brings new versions.
QString updateLibraryName() {
    return {};
}
