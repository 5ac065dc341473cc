#include "shell/themes.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>

namespace {

QString sheetFile(const QString& id) {
    QFile file(QApplication::applicationDirPath() + "/themes/" + id + ".qss");
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll()) : QString();
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
