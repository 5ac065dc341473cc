#pragma once

#include <QString>

/// Where config.json and the wheel files are: beside the program, as the engine has it, or where the person's
/// own data are kept when the program stands in a folder that may not be written. Decided
/// at the first call.
QString dataFolder();

/// Makes the icons that came with the program findable from the data folder. Does nothing where they are
/// already. Call once, before the engine starts.
void prepareDataFolder();
