#pragma once

#include <QString>

/// Name or path of the update library, without suffix. Empty where the platform has none.
QString updateLibraryName();
