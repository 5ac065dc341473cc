#include "shell/process/update_library.h"

// WinSparkle exists for Windows only; here the package manager installs updates.
QString updateLibraryName() {
    return {};
}
