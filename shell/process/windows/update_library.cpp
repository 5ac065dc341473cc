#include "shell/process/update_library.h"

#include <QCoreApplication>

// By its full path: the system's own search would also run a file of that name from folders where others may
// put one.
QString updateLibraryName() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/WinSparkle");
}
