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
    for (const bool releasesAreGenuine : {true, false}) { // as on X11 and elsewhere
        KeyRules rules(releasesAreGenuine);
        qApp->installEventFilter(&rules);
        QPushButton button;
        int presses = 0;
        QObject::connect(&button, &QPushButton::clicked, [&] { ++presses; });
        const auto send = [&](QEvent::Type type, quint64 time, bool isMarked = false) {
            QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, 36, 0, 0, {}, isMarked);
            event.setTimestamp(time);
            QApplication::sendEvent(&button, &event);
        };
        send(QEvent::ShortcutOverride, 1);
        send(QEvent::KeyPress, 1);
        send(QEvent::KeyPress, 700, !releasesAreGenuine);
        EXPECT_EQ(presses, 1);
        for (int press = 0; press < 3; ++press) { // by a program, in the same millisecond
            send(QEvent::KeyRelease, 740, releasesAreGenuine);
            send(QEvent::KeyPress, 740, releasesAreGenuine); // Qt marks these on X11
        }
        EXPECT_EQ(presses, 4);
        QEvent deactivation(QEvent::ApplicationStateChange);
        QApplication::sendEvent(qApp, &deactivation); // the release goes to another program
        send(QEvent::KeyPress, 900);
        EXPECT_EQ(presses, 5);
    }
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
