#include "fake_overlay.h"
#include "shell/main_window.h"
#include "shell/settings.h"
#include "shell/themes.h"
#include "wait_until.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <QSystemTrayIcon>
#include <QTreeWidget>

namespace {

class MainWindowTest : public testing::Test {
protected:
    void SetUp() override {
        fakeOverlay = FakeOverlay();
        uiSettings().clear();
        applyTheme("fluent");
    }

    std::unique_ptr<MainWindow> makeWindow(const QString& accountText = {}) {
        return std::make_unique<MainWindow>(licence, LicenceResult{.go = true, .accountText = accountText});
    }

    static QWidget* pageOf(const MainWindow& window, int row) {
        return window.findChild<QStackedWidget*>()->widget(row);
    }

    /// Those of one page, the dashboard unless told.
    static QStringList labels(const MainWindow& window, const char* role, int row = 0) {
        QStringList texts;
        for (const QLabel* label : pageOf(window, row)->findChildren<QLabel*>())
            if (label->property("role") == role)
                texts.append(label->text());
        return texts;
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

TEST_F(MainWindowTest, ShowsAnAccountOnlyWhenThereIsOneAndLogsOut) {
    EXPECT_FALSE(labels(*makeWindow(), "cardTitle").contains("Konto"));
    EXPECT_FALSE(labels(*makeWindow(), "value", 4).contains("Konto"));
    const auto window = makeWindow("jan@przyklad.pl");
    EXPECT_EQ(labels(*window, "cardTitle").first(), "Konto");
    EXPECT_EQ(labels(*window, "value").first(), "jan@przyklad.pl");
    EXPECT_TRUE(labels(*window, "value", 4).contains("Konto"));
    for (QPushButton* button : pageOf(*window, 4)->findChildren<QPushButton*>())
        if (button->text() == "Wyloguj")
            QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(MainWindowTest, OffersTheSameActionsInTheTrayAndOnThePage) {
    const auto window = makeWindow();
    QStringList entries;
    for (const QAction* action : window->findChild<QSystemTrayIcon*>()->contextMenu()->actions())
        entries.append(action->isSeparator() ? "-" : action->text());
    EXPECT_EQ(entries, QStringList({"Pokaż koło", "Pokaż okno", "-", "Zakończ"}));

    emit window->findChild<QSystemTrayIcon*>()->activated(QSystemTrayIcon::Trigger);
    EXPECT_FALSE(window->isVisible()) << "only a double click brings it back";
    window->findChild<QSystemTrayIcon*>()->contextMenu()->actions().first()->trigger();
    auto* primary = pageOf(*window, 0)->findChild<QPushButton*>("Primary");
    EXPECT_EQ(primary->text(), "Pokaż koło (X)");
    primary->click();
    EXPECT_EQ(fakeOverlay.toggles, 2);
}

TEST_F(MainWindowTest, StartsSmallAndGrowsForTheLargestPageButNotBeyondTheScreen) {
    const QSize room = QGuiApplication::primaryScreen()->availableSize() - QSize(40, 60); // with its frame
    ASSERT_LT(room.width(), 860);
    EXPECT_EQ(makeWindow()->size(), QSize(860, 560).boundedTo(room));
    const QFont before = QApplication::font();
    for (const int timesLarger : {1, 2}) {
        QFont font = before;
        font.setPointSizeF(before.pointSizeF() * timesLarger);
        QApplication::setFont(font);
        const auto window = makeWindow();
        window->show();
        const QRect whole = window->screen()->availableGeometry();
        window->move(whole.bottomRight() - window->frameGeometry().bottomRight() + window->pos());
        auto* sidebar = window->findChild<QListWidget*>("Sidebar");
        EXPECT_GT(sidebar->visualItemRect(sidebar->item(0)).height(), sidebar->fontMetrics().height() + 12);
        const auto* stack = window->findChild<QStackedWidget*>();
        for (int row = 0; row < sidebar->count(); ++row) {
            sidebar->setCurrentRow(row);
            QApplication::processEvents();
            EXPECT_FALSE(sidebar->horizontalScrollBar()->isVisible());
            EXPECT_GE(stack->width(), pageOf(*window, row)->minimumSizeHint().width()) << row;
            EXPECT_GE(stack->height(), pageOf(*window, row)->minimumSizeHint().height()) << row;
            EXPECT_TRUE(whole.contains(window->frameGeometry())) << row;
        }
    }
    QApplication::setFont(before);
}

TEST_F(MainWindowTest, OpensTheVoiceFileInTheEditor) {
    QFile file(QCoreApplication::applicationDirPath() + "/voice.json");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"actions":[{"name":"Okno","voice":"okno"}]})");
    file.close();
    const auto window = makeWindow();
    for (QPushButton* button : pageOf(*window, 2)->findChildren<QPushButton*>())
        button->click();
    EXPECT_EQ(window->findChild<QListWidget*>("Sidebar")->currentRow(), 1);
    EXPECT_EQ(pageOf(*window, 1)->findChild<QTreeWidget*>()->topLevelItem(0)->child(0)->text(0), "Okno");
    EXPECT_TRUE(file.remove());
}

TEST_F(MainWindowTest, TabGoesInReadingOrderThroughControlsThatAllHaveNames) {
    const auto window = makeWindow();
    const auto controlsOf = [&](int row) {
        QStringList names;
        const QWidget* page = pageOf(*window, row);
        // Without a file the form is off, but its place in the order is the same.
        for (QWidget* each = window->nextInFocusChain(); each != window.get();
             each = each->nextInFocusChain()) {
            const bool isReached = (each->focusPolicy() & Qt::TabFocus) != 0 && page->isAncestorOf(each) &&
                                   each->focusProxy() == nullptr;
            if (!isReached)
                continue;
            const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(each);
            const bool isSelector = qobject_cast<QComboBox*>(each) != nullptr;
            names.append(accessible->text(isSelector ? QAccessible::Description : QAccessible::Name));
        }
        return names.join(" | ").toStdString();
    };
    // A selector's name is its choice on some systems, and the description tells what it is.
    EXPECT_EQ(controlsOf(0), "Pokaż koło (X)");
    EXPECT_EQ(controlsOf(1),
              "Otwórz… | Zapisz | Zapisz jako… | Aktywuj | Koła i funkcje | Dodaj koło | "
              "Dodaj funkcję | Usuń koło lub funkcję | Nazwa | Fraza głosowa | Ikona: Wybierz… | "
              "Kolor pola: domyślny | Odstęp między krokami w milisekundach | "
              "Czynności (kroki sekwencji) | Rodzaj kroku | "
              "Klawisz lub przycisk myszy | Liczba kliknięć albo czas w milisekundach | Adres lub program do "
              "otwarcia | "
              "Dodaj krok | Zamień | Usuń krok | Przesuń krok wyżej | Przesuń krok niżej");
    EXPECT_EQ(controlsOf(2),
              "Komendy głosowe włączone | Frazy pól kół działają zawsze (nie tylko przy otwartym "
              "kole) | Globalne komendy (voice.json) | Edytuj w edytorze kół");
    EXPECT_EQ(controlsOf(3), "Steruj wirtualnym kursorem wzrokiem, gdy koło jest otwarte | "
                             "Czas wyboru spojrzeniem (dwell)");
    EXPECT_EQ(controlsOf(4), "Fluent (jasny) | Neon (gaming) | Pro studio (grafit)");
}

} // namespace
