#pragma once

#include <QSettings>

inline constexpr char themeKey[] = "theme";
inline constexpr char lastWheelFileKey[] = "lastWheelFile";

/// The shell's own settings, separate from the engine's config.json. Main thread.
inline QSettings uiSettings() {
    return QSettings(QStringLiteral("Rotika"), QStringLiteral("UI"));
}
