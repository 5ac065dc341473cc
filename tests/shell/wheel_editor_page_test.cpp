#include "dialog_player.h"
#include "fake_overlay.h"
#include "shell/icon_picker_dialog.h"
#include "shell/settings.h"
#include "shell/themes.h"
#include "shell/wheel_document.h"
#include "shell/wheel_editor_page.h"

#include <gtest/gtest.h>

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace {

constexpr char twoWheels[] = R"({"wheels":[
    {"name":"Gra","actions":[{"name":"Skok","key":"space","voice":"skok","delay":5000},
                             {"name":"","key":["a","b","c"]}]},
    {"name":"","actions":[]}]})";

class WheelEditorPageTest : public testing::Test {
protected:
    void SetUp() override {
        fakeOverlay = FakeOverlay();
        uiSettings().clear();
        file = folder.filePath("kola.json");
        write(twoWheels);
    }

    void write(const QByteArray& text) const {
        QFile target(file);
        ASSERT_TRUE(target.open(QIODevice::WriteOnly));
        target.write(text);
    }

    WheelDocument saved() const {
        WheelDocument document;
        document.load(file, nullptr);
        return document;
    }

    void open() {
        page = std::make_unique<WheelEditorPage>();
        page->loadFile(file);
    }

    template <typename Widget>
    Widget* find(const std::function<bool(const Widget&)>& fits) const {
        for (Widget* widget : page->findChildren<Widget*>())
            if (fits(*widget))
                return widget;
        ADD_FAILURE() << "a widget is missing";
        return nullptr;
    }

    void press(const QString& text) const {
        find<QPushButton>([&](const QPushButton& button) { return button.text() == text; })->click();
    }

    template <typename Widget>
    Widget* named(const QString& accessibleName) const {
        return find<Widget>([&](const Widget& widget) { return widget.accessibleName() == accessibleName; });
    }

    /// The field that the label stands over.
    template <typename Widget>
    Widget* labelled(const QString& text) const {
        return qobject_cast<Widget*>(
            find<QLabel>([&](const QLabel& label) { return label.text() == text; })->buddy());
    }

    QTreeWidget* tree() const { return page->findChild<QTreeWidget*>(); }
    QListWidget* steps() const { return labelled<QListWidget>("Czynności (kroki sekwencji)"); }
    bool showsFile(const QString& text) const {
        return find<QLabel>([&](const QLabel& label) { return label.text() == text; }) != nullptr;
    }

    QStringList treeLines() const {
        QStringList lines;
        for (int i = 0; i < tree()->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* wheel = tree()->topLevelItem(i);
            lines.append(wheel->text(0));
            for (int j = 0; j < wheel->childCount(); ++j)
                lines.append("- " + wheel->child(j)->text(0));
        }
        return lines;
    }

    QStringList stepLines() const {
        QStringList lines;
        for (int i = 0; i < steps()->count(); ++i)
            lines.append(steps()->item(i)->text());
        return lines;
    }

    void select(int wheel, int function) const {
        QTreeWidgetItem* item = tree()->topLevelItem(wheel);
        tree()->setCurrentItem(function < 0 ? item : item->child(function));
    }

    void fillStep(const QString& kind, const QString& key, int value) const {
        named<QComboBox>("Rodzaj kroku")->setCurrentText(kind);
        named<QComboBox>("Klawisz lub przycisk myszy")->setCurrentText(key);
        named<QSpinBox>("Liczba kliknięć albo czas w milisekundach")->setValue(value);
    }

    /// Presses a button that brings up a message box, and gives its text.
    QString boxAfter(const QString& button, QMessageBox::StandardButton answer) const {
        QString text;
        onNextDialog<QMessageBox>([&](QMessageBox& box) {
            text = box.windowTitle() + ": " + box.text();
            box.button(answer)->click();
        });
        press(button);
        return text;
    }

    QTemporaryDir folder;
    QString file;
    std::unique_ptr<WheelEditorPage> page;
};

TEST_F(WheelEditorPageTest, DoesNothingWithoutAFileAndOpensOneOnItsFirstFunction) {
    page = std::make_unique<WheelEditorPage>();
    for (const char* button : {"Zapisz", "Zapisz jako…", "Aktywuj", "+ koło", "+ funkcja", "Usuń"})
        press(button);
    EXPECT_TRUE(showsFile("(nie wczytano pliku)"));
    EXPECT_TRUE(treeLines().isEmpty());
    EXPECT_TRUE(fakeOverlay.activated.empty());

    open();
    EXPECT_EQ(treeLines(), QStringList({"Gra", "- Skok", "- (bez nazwy)", "(koło bez nazwy)"}));
    EXPECT_EQ(labelled<QLineEdit>("Nazwa")->text(), "Skok");
    EXPECT_EQ(labelled<QLineEdit>("Fraza głosowa")->text(), "skok");
    EXPECT_EQ(stepLines(), QStringList({"klik:  space"}));
    EXPECT_TRUE(showsFile(file));
    EXPECT_EQ(boxAfter("Aktywuj", QMessageBox::Ok),
              "Edytor kół: Silnik nie przyjął konfiguracji — sprawdź, czy plik zawiera koła z funkcjami.");

    WheelEditorPage second; // the file is remembered
    EXPECT_EQ(second.findChild<QTreeWidget*>()->topLevelItemCount(), 2);
}

TEST_F(WheelEditorPageTest, TypingChangesTheLineAndKeepsTheSelection) {
    open();
    page->show();
    auto* name = labelled<QLineEdit>("Nazwa");
    QTreeWidgetItem* before = tree()->currentItem();
    name->selectAll();
    QTest::keyClicks(name, "Uskok");
    EXPECT_EQ(treeLines()[1], "- Uskok");
    EXPECT_TRUE(showsFile(file + " *"));
    name->selectAll();
    QTest::keyClick(name, Qt::Key_Delete);
    EXPECT_EQ(treeLines()[1], "- (bez nazwy)");
    EXPECT_EQ(tree()->currentItem(), before);
    press("Zapisz");
    EXPECT_TRUE(showsFile(file));
    // The spin box shows 2000 of the file's 5000, and any edit of the function makes it so.
    EXPECT_EQ(saved().wheels[0].actions[0].delay, 2000);
}

TEST_F(WheelEditorPageTest, BuildsASequenceOfSteps) {
    open();
    select(0, 1);
    EXPECT_EQ(stepLines(), QStringList({"klik:  a", "klik:  b", "klik:  c"}));
    fillStep("klik", "  lmb ", 500);
    press("Dodaj krok");
    fillStep("klik", "  ", 1);
    press("Dodaj krok"); // nothing to add
    EXPECT_EQ(steps()->count(), 4);

    for (int i = 0; i < 4; ++i)
        press("▲"); // at last it is the first already
    EXPECT_EQ(stepLines(), QStringList({"klik ×100:  lmb", "klik:  a", "klik:  b", "klik:  c"}));
    EXPECT_EQ(steps()->currentRow(), 0);

    steps()->setCurrentRow(2);
    for (int i = 0; i < 2; ++i)
        press("▼"); // at last it is the last already
    fillStep("przytrzymaj", "shift", 0);
    press("Zamień");
    EXPECT_EQ(stepLines().last(), "przytrzymaj (bez puszczania):  shift");
    fillStep("puść", "shift", 7);
    press("Dodaj krok");
    named<QComboBox>("Rodzaj kroku")->setCurrentText("otwórz");
    named<QLineEdit>("Adres lub program do otwarcia")->setText(" https://a ");
    press("Dodaj krok");
    steps()->setCurrentRow(1);
    press("Usuń krok");
    EXPECT_EQ(stepLines(), QStringList({"klik ×100:  lmb", "klik:  c", "przytrzymaj (bez puszczania):  shift",
                                        "puść:  shift", "otwórz:  https://a"}));
    steps()->setCurrentRow(0); // comes back into the form
    EXPECT_EQ(named<QComboBox>("Klawisz lub przycisk myszy")->currentText(), "lmb");
    EXPECT_EQ(named<QSpinBox>("Liczba kliknięć albo czas w milisekundach")->value(), 100);
    steps()->setCurrentRow(4);
    EXPECT_EQ(named<QLineEdit>("Adres lub program do otwarcia")->text(), "https://a");
    press("Zapisz");
    EXPECT_EQ(saved().wheels[0].actions[1].steps.size(), 5);
    select(0, -1); // a wheel's line turns the form off
    EXPECT_FALSE(labelled<QLineEdit>("Nazwa")->isEnabled());
    EXPECT_EQ(steps()->count(), 0);
}

TEST_F(WheelEditorPageTest, AddsAndRemovesWheelsAndFunctions) {
    write(R"({"actions":[]})");
    open();
    press("+ funkcja");
    EXPECT_EQ(treeLines(), QStringList({"(koło bez nazwy)", "- Nowa funkcja"}));
    EXPECT_EQ(page->focusWidget(), labelled<QLineEdit>("Nazwa")); // to be typed over
    EXPECT_EQ(labelled<QLineEdit>("Nazwa")->selectedText(), "Nowa funkcja");
    onNextDialog<QInputDialog>([](QInputDialog& dialog) {
        EXPECT_EQ(dialog.textValue(), "Koło 2");
        dialog.setTextValue("Drugie");
        dialog.accept();
    });
    press("+ koło");
    press("+ funkcja");
    EXPECT_EQ(treeLines(), QStringList({"(koło bez nazwy)", "- Nowa funkcja", "Drugie", "- Nowa funkcja"}));
    press("Zapisz");
    EXPECT_TRUE(saved().multiWheel);

    press("Usuń"); // the function, without a question
    EXPECT_EQ(treeLines().size(), 3);
    EXPECT_EQ(boxAfter("Usuń", QMessageBox::No), "Edytor kół: Usunąć koło \"Drugie\" wraz z funkcjami?");
    EXPECT_EQ(treeLines().size(), 3);
    boxAfter("Usuń", QMessageBox::Yes);
    EXPECT_EQ(treeLines(), QStringList({"(koło bez nazwy)", "- Nowa funkcja"}));
    EXPECT_EQ(boxAfter("Usuń", QMessageBox::Ok), "Edytor kół: Musi zostać przynajmniej jedno koło.");
}

TEST_F(WheelEditorPageTest, ChoosesColoursAndGoesBackToTheDefault) {
    open();
    page->resize(page->minimumSizeHint());
    page->show();
    const QRect nameBefore = labelled<QLineEdit>("Nazwa")->geometry();
    onNextDialog<QColorDialog>([](QColorDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Kolor pola");
        const auto* buttons = dialog.findChild<QDialogButtonBox*>();
        EXPECT_EQ(buttons->button(QDialogButtonBox::Cancel)->text(), "Anuluj"); // Qt's own texts as well
        EXPECT_EQ(dialog.currentColor(), themeInfo(currentThemeId()).ringColor);
        dialog.setCurrentColor("#DDDDDD");
        dialog.accept();
    });
    press("domyślny");
    QApplication::processEvents();
    EXPECT_EQ(labelled<QLineEdit>("Nazwa")->geometry(), nameBefore); // nothing moves
    onNextDialog<QColorDialog>([](QColorDialog& dialog) { dialog.reject(); });
    press("#DDDDDD");
    EXPECT_TRUE(showsFile(file + " *"));
    press("Zapisz");
    EXPECT_FALSE(saved().wheels[0].actions[0].color.isValid());
}

TEST_F(WheelEditorPageTest, SavesUnderANameThatGetsItsSuffixAndOverwritesOnlyWhenTold) {
    open();
    const QByteArray other = R"({"actions":[]})";
    const QString target = folder.filePath("inne 2.0.json");
    for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        file = target;
        write(other);
        onNextDialog<QFileDialog>([&](QFileDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), "Zapisz jako");
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText("inne 2.0");
            onNextDialog<QMessageBox>([&](QMessageBox& box) {
                EXPECT_EQ(box.text(), "Plik inne 2.0.json już istnieje. Zastąpić go?");
                // After a "no" another name can be given.
                if (answer == QMessageBox::No)
                    onNextDialog<QFileDialog>([](QFileDialog& again) { again.reject(); });
                box.button(answer)->click();
            });
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        press("Zapisz jako…");
        EXPECT_EQ(saved().wheels.size(), answer == QMessageBox::Yes ? 2 : 1);
    }
    EXPECT_TRUE(showsFile(target));
    EXPECT_FALSE(QFile::exists(folder.filePath("inne 2.0")));
}

TEST_F(WheelEditorPageTest, OffersTheIconsBesideTheFile) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("icons"));
    QPixmap picture(8, 8);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(folder.filePath("icons/dzwiek.png")));
    ASSERT_TRUE(picture.save(folder.filePath("icons/atak.png")));
    open();
    onNextDialog<IconPickerDialog>([](IconPickerDialog& dialog) {
        auto* list = dialog.findChild<QListWidget*>();
        ASSERT_EQ(list->count(), 3);
        EXPECT_EQ(list->item(0)->text(), "(bez ikony)");
        EXPECT_EQ(list->item(1)->text(), "atak");
        EXPECT_EQ(list->item(2)->text(), "dźwięk"); // the file's name is ASCII
        list->setCurrentRow(2);
        dialog.accept();
    });
    press("Wybierz…");
    press("Zapisz");
    EXPECT_EQ(saved().wheels[0].actions[0].icon, "icons/dzwiek.png");
    ASSERT_TRUE(QFile::remove(folder.filePath("icons/dzwiek.png")));
    onNextDialog<IconPickerDialog>([](IconPickerDialog& dialog) { dialog.accept(); });
    press("dźwięk"); // accepted without a choice
    press("Zapisz");
    EXPECT_EQ(saved().wheels[0].actions[0].icon, "icons/dzwiek.png");
    onNextDialog<IconPickerDialog>([](IconPickerDialog& dialog) {
        dialog.findChild<QListWidget*>()->setCurrentItem(nullptr);
        dialog.accept();
    });
    press("dźwięk");
    press("Zapisz");
    EXPECT_EQ(saved().wheels[0].actions[0].icon, "");
}

TEST_F(WheelEditorPageTest, TellsWhereTheVersionOfAnotherProgramIsKept) {
    open();
    press("+ funkcja");
    write(R"({"actions":[{"name":"obca"}]})");
    press("Zapisz"); // saves, and the box waits for nobody
    EXPECT_EQ(saved().wheels[0].actions.size(), 3);
    EXPECT_TRUE(showsFile(file));
    const auto* box = page->findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(),
              QString("Inny program zmienił w międzyczasie plik %1. Tamta wersja jest zachowana jako %2.")
                  .arg(file, folder.filePath("kola-kopia-1.json")));
}

TEST_F(WheelEditorPageTest, ShowsOddFilesSanely) {
    open();
    page->show();
    const int usualWidth = page->minimumSizeHint().width();
    QByteArray many = R"({"actions":[)";
    for (int i = 0; i < 10000; ++i)
        many += R"({"name":"f","key":"a"},)";
    const QByteArray longName(10000, 'x');
    write(R"({"wheels":[)" + many + R"({"name":")" + longName +
          R"("},{"name":"שלום 🎮 مرحبا"}]},{"name":"<h1>)" + longName + R"("}]})");
    open();
    page->show();
    EXPECT_EQ(tree()->topLevelItem(0)->childCount(), 10002);
    EXPECT_EQ(page->minimumSizeHint().width(), usualWidth);
    select(0, 10001);
    EXPECT_EQ(labelled<QLineEdit>("Nazwa")->text(), "שלום 🎮 مرحبا");
    EXPECT_EQ(page->minimumSizeHint().width(), usualWidth);
    select(1, -1);
    onNextDialog<QMessageBox>([](QMessageBox& box) {
        EXPECT_LT(box.width(), 900);
        EXPECT_LT(box.height(), 300);
        EXPECT_TRUE(box.text().startsWith("Usunąć koło \"<h1>xxx")) << box.text().toStdString();
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        box.button(QMessageBox::Yes)->click();
    });
    press("Usuń");
    EXPECT_EQ(tree()->topLevelItemCount(), 1);
}

} // namespace
