#pragma once

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <functional>

/// Plays the user on the next modal dialog of type `Dialog`: `play` is called once it is up, and must end it.
/// The call that opens the dialog comes after this one.
template <typename Dialog>
void onNextDialog(std::function<void(Dialog&)> play) {
    auto* look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, look, [look, play] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return;
        look->stop();
        look->deleteLater();
        play(*dialog);
    });
    look->start(1);
}
