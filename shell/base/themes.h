#pragma once

#include <QColor>
#include <QList>
#include <QString>

// A theme is a style sheet in the program's folder, made from themes/<id>.palette, and a row of colours for
// widgets that paint themselves. All functions: main thread.

struct ThemeInfo {
    /// Value in the settings and base name of the style sheet.
    QString themeId;
    QString displayName;
    QColor ringColor;
    QColor fieldColor;
    QColor highlightColor;
    QColor hubColor;
    /// Reserved, not read.
    QColor spareColor;
    QColor textColor;
};

/// Never empty; the first theme is the default. Valid until the process ends.
const QList<ThemeInfo>& themes();

/// The theme with this id, or the first theme.
const ThemeInfo& themeInfo(const QString& id);

/// Id of the current theme.
QString currentThemeId();

/// Applies the theme to the whole application; does not store it in the settings. Without a readable style
/// sheet the application has Qt's default style.
void applyTheme(const QString& id);
