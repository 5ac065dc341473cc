#include "fake_overlay.h"
#include "shell/main_window.h"
#include "shell/themes.h"
#include "wait_until.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSystemTrayIcon>

namespace {

class MainWindowTest : public testing::Test {
protected:
    void SetUp() override {
        fakeOverlay = FakeOverlay();
        applyTheme("fluent");
    }

    std::unique_ptr<MainWindow> makeWindow(const QString& accountText = {}) {
        return std::make_unique<MainWindow>(licence, LicenceResult{.go = true, .accountText = accountText});
    }

    static QStringList labels(const MainWindow& window, const char* role) {
        QStringList texts;
        for (const QLabel* label : window.findChildren<QLabel*>())
            if (label->property("role") == role)
                texts.append(label->text());
        return texts;
    }

    static QAction* trayAction(const MainWindow& window, const QString& text) {
        for (QAction* action : window.findChild<QSystemTrayIcon*>()->contextMenu()->actions())
            if (action->text() == text)
                return action;
        return nullptr;
    }

    LicenceCheck licence;
};

TEST_F(MainWindowTest, ShowsWhatTheEngineSaysAndFollowsIt) {
    const auto window = makeWindow();
    EXPECT_EQ(labels(*window, "ok"), QStringList({"aktywny", "ładowanie modelu… · 7 fraz"}));
    EXPECT_EQ(labels(*window, "value"), QStringList({"1 koło(a)"}));

    fakeOverlay.gazeStatus = L"nie wykryto urządzenia";
    fakeOverlay.voiceStatus = L"brak mikrofonu";
    fakeOverlay.phraseCount = 0;
    fakeOverlay.wheelCount = 12;
    EXPECT_TRUE(waitUntil([&] {
        return labels(*window, "ok") == QStringList({"nie wykryto urządzenia", "brak mikrofonu · 0 fraz"}) &&
               labels(*window, "value") == QStringList({"12 koło(a)"});
    }));
}

TEST_F(MainWindowTest, ShowsAnAccountOnlyWhenThereIsOne) {
    EXPECT_FALSE(labels(*makeWindow(), "cardTitle").contains("Konto"));
    const auto window = makeWindow("jan@przyklad.pl");
    EXPECT_EQ(labels(*window, "cardTitle").first(), "Konto");
    EXPECT_EQ(labels(*window, "value").first(), "jan@przyklad.pl");
}

TEST_F(MainWindowTest, ClosesToTheTrayAndComesBackByADoubleClickAlone) {
    const auto window = makeWindow();
    auto* tray = window->findChild<QSystemTrayIcon*>();
    window->show();
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->isVisible());

    emit tray->activated(QSystemTrayIcon::Trigger);
    emit tray->activated(QSystemTrayIcon::MiddleClick);
    EXPECT_FALSE(window->isVisible());
    emit tray->activated(QSystemTrayIcon::DoubleClick);
    EXPECT_TRUE(window->isVisible());

    window->close();
    trayAction(*window, "Pokaż okno")->trigger();
    EXPECT_TRUE(window->isVisible());

    tray->hide();
    EXPECT_TRUE(window->close());
}

TEST_F(MainWindowTest, OffersTheSameActionsInTheTrayAndOnThePage) {
    const auto window = makeWindow();
    QStringList entries;
    for (const QAction* action : window->findChild<QSystemTrayIcon*>()->contextMenu()->actions())
        entries.append(action->isSeparator() ? "-" : action->text());
    EXPECT_EQ(entries, QStringList({"Pokaż koło", "Pokaż okno", "-", "Zakończ"}));

    trayAction(*window, "Pokaż koło")->trigger();
    auto* primary = window->findChild<QPushButton*>("Primary");
    EXPECT_EQ(primary->text(), "Pokaż koło (X)");
    primary->click();
    EXPECT_EQ(fakeOverlay.toggles, 2);
}

TEST_F(MainWindowTest, QuitsFromTheTray) {
    const auto window = makeWindow();
    QMetaObject::invokeMethod(trayAction(*window, "Zakończ"), "trigger", Qt::QueuedConnection);
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(MainWindowTest, GivesTheRowsOfThePageListTheHeightOfTheSheet) {
    const auto window = makeWindow();
    window->show();
    const auto* sidebar = window->findChild<QListWidget*>("Sidebar");
    EXPECT_GT(sidebar->visualItemRect(sidebar->item(0)).height(), sidebar->fontMetrics().height() + 12);
}

} // namespace
