#include "shell/update_library.h"

QString updateLibraryName() {
    return QStringLiteral("WinSparkle");
}
