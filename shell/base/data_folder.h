#pragma once

#include <QString>

/// dataFolderPath() as Qt writes paths.
QString dataFolder();
