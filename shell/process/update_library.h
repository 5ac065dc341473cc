#pragma once

#include <QString>

/// Name or path of the update library, without suffix. Empty on platforms without one.
QString updateLibraryName();
