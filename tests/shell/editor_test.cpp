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
        writeFile(
            file,
            R"({"wheels":[{"name":"Gra","actions":[{"name":"Skok","key":"space"},{"name":"","key":["a","b"]}]},
                           {"name":"","actions":[]}]})");
        page.loadFile(file);
    }

    void press(const QString& name) const { named(page, name)->click(); }

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
    for (const char* key : {"  lmb ", "  "}) { // nothing to add the second time
        named<QComboBox>(page, "Klawisz lub przycisk myszy")->setCurrentText(key);
        named<QSpinBox>(page, "Liczba kliknięć albo czas w milisekundach")->setValue(500);
        press("Dodaj krok");
    }
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

} // namespace
