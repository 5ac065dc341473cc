#include "fake_overlay.h"
#include "shell/settings.h"
#include "shell/wheel_document.h"
#include "shell/wheel_editor_page.h"
#include "user.h"

#include <gtest/gtest.h>

namespace {

class Editor : public testing::Test {
protected:
    void SetUp() override {
        uiSettings().clear();
        open(
            R"({"wheels":[{"name":"Gra","actions":[{"name":"Skok","key":"space"},{"name":"","key":["a","b"]}]},
                           {"name":"","actions":[]}]})");
    }

    void open(const QByteArray& text) {
        writeFile(file, text);
        page.loadFile(file);
    }

    void press(const QString& name) const { named(page, name)->click(); }

    void addStep(const QString& kind, const QString& key, int value) const {
        named<QComboBox>(page, "Rodzaj kroku")->setCurrentText(kind);
        named<QComboBox>(page, "Klawisz lub przycisk myszy")->setCurrentText(key);
        named<QSpinBox>(page, "Liczba kliknięć albo czas w milisekundach")->setValue(value);
        press("Dodaj krok");
    }

    void answerBox(const QString& button, QMessageBox::StandardButton answer) const {
        onNextDialog<QMessageBox>([&](QMessageBox& box) { box.button(answer)->click(); });
        press(button);
    }

    const QTemporaryDir folder;
    const QString file = folder.filePath("kola.json");
    WheelEditorPage page;
    QTreeWidget* tree = named<QTreeWidget>(page, "Koła i funkcje");
    QListWidget* steps = named<QListWidget>(page, "Czynności (kroki sekwencji)");
};

TEST_F(Editor, MovesStepsAndSavesThemBeforeTheyAreActivated) {
    fakeOverlay.activated.clear();
    tree->setCurrentItem(tree->topLevelItem(0)->child(1));
    addStep("klik", "  lmb ", 500);
    addStep("klik", "  ", 1); // nothing to add
    for (int i = 0; i < 3; ++i)
        press("Przesuń krok wyżej"); // at last it is the first already
    steps->setCurrentRow(1);
    for (int i = 0; i < 2; ++i)
        press("Przesuń krok niżej");       // at last it is the last already
    answerBox("Aktywuj", QMessageBox::Ok); // it was refused
    WheelDocument saved;
    ASSERT_TRUE(saved.load(file, nullptr));
    QString keys;
    for (const EditorStep& step : saved.wheels[0].actions[1].steps)
        keys += step.key + QString::number(step.value) + ' ';
    EXPECT_EQ(keys, "lmb100 b1 a1 ");
    EXPECT_EQ(fakeOverlay.activated, QStringList(file));
}

TEST_F(Editor, AsksBeforeAWheelGoesAndKeepsTheLast) {
    tree->setCurrentItem(tree->topLevelItem(0));
    answerBox("Usuń", QMessageBox::No);
    EXPECT_EQ(tree->topLevelItemCount(), 2);
    answerBox("Usuń", QMessageBox::Yes);
    answerBox("Usuń", QMessageBox::Ok);
    EXPECT_EQ(tree->topLevelItemCount(), 1);
    press("+ funkcja");
    EXPECT_EQ(page.focusWidget(), named<QLineEdit>(page, "Nazwa")); // to be typed over
}

TEST_F(Editor, SavesUnderANameThatGetsItsSuffixAndOverwritesOnlyWhenTold) {
    const QString other = folder.filePath("inne 2.0.json");
    for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        writeFile(other, "other");
        onNextDialog<QFileDialog>([&](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText("inne 2.0");
            onNextDialog<QMessageBox>([&](QMessageBox& box) {
                // After a "no" another name can be given.
                if (answer == QMessageBox::No)
                    onNextDialog<QFileDialog>([](QFileDialog& again) { again.reject(); });
                box.button(answer)->click();
            });
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        press("Zapisz jako…");
        EXPECT_EQ(bytesOf(other) == "other", answer == QMessageBox::No);
    }
    EXPECT_FALSE(QFile::exists(folder.filePath("inne 2.0")));
}

TEST_F(Editor, ShowsOddFilesSanely) {
    page.show();
    const int usualWidth = page.minimumSizeHint().width();
    const QByteArray longName(10000, 'x');
    open(R"({"wheels":[{"name":"<h1>)" + longName + R"(","actions":[{"name":")" + longName + R"("}]},{}]})");
    EXPECT_EQ(page.minimumSizeHint().width(), usualWidth);
    tree->setCurrentItem(tree->topLevelItem(0));
    onNextDialog<QMessageBox>([](QMessageBox& box) {
        EXPECT_LT(box.width(), 900);
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        box.button(QMessageBox::Yes)->click();
    });
    press("Usuń");
}

} // namespace
