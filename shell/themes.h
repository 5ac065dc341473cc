#pragma once

#include <QColor>
#include <QList>
#include <QString>

// A theme is a style sheet beside the program, which styles every widget, and a row of colours for what a
// style sheet cannot reach. All functions: first thread.

struct ThemeInfo {
    /// Key in the settings and base name of the sheet.
    QString themeId;
    QString displayName;
    QColor ringColor;
    QColor fieldColor;
    QColor highlightColor;
    QColor hubColor;
    /// Held for themes to come; nothing reads it.
    QColor spareColor;
    QColor textColor;
};

/// Never empty; the first row is the fallback. Lives until the process ends.
const QList<ThemeInfo>& themes();

/// The row with exactly this id, the first row for any other.
const ThemeInfo& themeInfo(const QString& id);

/// Id of the theme in force.
QString currentThemeId();

/// Puts the theme in force for the whole application. Stores nothing. A sheet that cannot be read leaves the
/// application in Qt's default look.
void applyTheme(const QString& id);
