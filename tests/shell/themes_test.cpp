#include "shell/themes.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>

namespace {

QString sheetFile(const QString& id) {
    QFile file(QApplication::applicationDirPath() + "/themes/" + id + ".qss");
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST(Themes, OffersThreeRowsWithTheirColours) {
    QStringList rows;
    for (const ThemeInfo& row : themes()) {
        QStringList words{row.themeId, row.displayName};
        for (const QColor& colour :
             {row.ringColor, row.fieldColor, row.highlightColor, row.hubColor, row.spareColor, row.textColor})
            words.append(colour.name().toUpper());
        rows.append(words.join(' '));
    }
    EXPECT_EQ(rows, QStringList({
                        "fluent Fluent (jasny) #185FA5 #E6F1FB #378ADD #F4F6FB #0F6E56 #1B2433",
                        "neon Neon (gaming) #39D5C9 #1B2340 #2AA39B #101423 #39D5C9 #E8ECFF",
                        "pro Pro studio (grafit) #EFA02F #2C2F38 #BA7517 #1D1F24 #9FE1CB #E8E6DF",
                    }));
}

TEST(Themes, FallsBackToTheFirstRowForAnyOtherId) {
    EXPECT_EQ(themeInfo("pro").themeId, "pro");
    for (const char* id : {"Neon", "NEON", "neon ", "", "classic"})
        EXPECT_EQ(&themeInfo(id), &themes().first()) << id;
}

TEST(Themes, ReplacesTheSheetWithEachSwitch) {
    for (const char* id : {"neon", "pro", "neon", "fluent"}) {
        applyTheme(id);
        EXPECT_EQ(currentThemeId(), id);
        EXPECT_EQ(qApp->styleSheet(), sheetFile(id));
        EXPECT_FALSE(qApp->styleSheet().isEmpty());
    }
    applyTheme("pro");
    applyTheme("unknown");
    EXPECT_EQ(currentThemeId(), "fluent");
    EXPECT_EQ(qApp->styleSheet(), sheetFile("fluent"));
}

} // namespace
