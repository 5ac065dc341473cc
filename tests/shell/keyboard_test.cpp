// The window and its dialogs by keyboard alone.

#include "shell/base/shortcuts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>

TEST(Keyboard, EnterPressesTheButtonOnceHoweverLongItIsHeldDown) {
    KeyRules rules;
    qApp->installEventFilter(&rules);
    QPushButton button;
    int presses = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++presses; });
    const auto send = [&](QEvent::Type type, bool isRepetition = false) {
        QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, {}, isRepetition);
        event.setTimestamp(700); // programs press a key more than once in a millisecond
        QApplication::sendEvent(&button, &event);
    };
    send(QEvent::KeyPress);
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
    EXPECT_EQ(presses, 1);
    send(QEvent::KeyRelease);
    send(QEvent::KeyPress);
    EXPECT_EQ(presses, 2);
}

TEST(Keyboard, MnemonicsDifferWithinEachDialog) {
    QColorDialog color;
    color.setOption(QColorDialog::ShowAlphaChannel);
    QFileDialog open;
    QFileDialog save;
    save.setAcceptMode(QFileDialog::AcceptSave);
    QInputDialog input;
    QMessageBox box(QMessageBox::Question, {}, {}, QMessageBox::Yes | QMessageBox::No);
    for (QDialog* dialog : std::initializer_list<QDialog*>{&color, &open, &save, &input, &box}) {
        dialog->show();
        QStringList found;
        for (const QWidget* widget : dialog->findChildren<QWidget*>()) // labels and buttons have texts
            if (widget->isVisible())
                found += QKeySequence::mnemonic(widget->property("text").toString()).toString();
        found.removeAll({});
        EXPECT_EQ(found.removeDuplicates(), 0) << qPrintable(found.join(' '));
    }
}
