#pragma once

#include <QString>

/// dataFolderPath() as Qt writes paths.
QString dataFolder();

/// Makes the icons that came with the program findable from the data folder. Does nothing where they are
/// already. Call once, before the engine starts.
void prepareDataFolder();
