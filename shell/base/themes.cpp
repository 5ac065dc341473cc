#include "shell/base/themes.h"

#include <QApplication>
#include <QFile>
#include <QFontMetrics>
#include <QRegularExpression>
#include <algorithm>

namespace {

QString& currentId() {
    static QString id = QStringLiteral("fluent");
    return id;
}

QString readSheet(const QString& themeId) {
    QFile file(QCoreApplication::applicationDirPath() + QStringLiteral("/themes/") + themeId +
               QStringLiteral(".qss"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll());
}

/// A minimum height in the sheet replaces Qt's own, which follows the font: in a low window, layouts would
/// make buttons and fields so low that a large font is cut.
QString fitToFont(const QString& sheet) {
    static const QRegularExpression minimum(QStringLiteral("min-height: ([1-9][0-9]*)px"));
    const int fontHeight = QFontMetrics(QApplication::font()).height();
    QString fitted;
    qsizetype end = 0;
    for (const QRegularExpressionMatch& match : minimum.globalMatch(sheet)) {
        fitted += sheet.mid(end, match.capturedStart(1) - end);
        fitted += QString::number(std::max(match.captured(1).toInt(), fontHeight));
        end = match.capturedEnd(1);
    }
    return fitted + sheet.mid(end);
}

} // namespace

const QList<ThemeInfo>& themes() {
    static const QList<ThemeInfo> table{
        {"fluent", "Fluent (jasny)", "#185FA5", "#E6F1FB", "#378ADD", "#F4F6FB", "#0F6E56", "#1B2433"},
        {"neon", "Neon (gaming)", "#39D5C9", "#1B2340", "#2AA39B", "#101423", "#39D5C9", "#E8ECFF"},
        {"pro", "Pro studio (grafit)", "#EFA02F", "#2C2F38", "#BA7517", "#1D1F24", "#9FE1CB", "#E8E6DF"},
    };
    return table;
}

const ThemeInfo& themeInfo(const QString& id) {
    const QList<ThemeInfo>& table = themes();
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&id](const ThemeInfo& theme) { return theme.themeId == id; });
    return row == table.end() ? table.first() : *row;
}

QString currentThemeId() {
    return currentId();
}

void applyTheme(const QString& id) {
    currentId() = themeInfo(id).themeId;
    qApp->setStyleSheet(fitToFont(readSheet(currentId())));
}
