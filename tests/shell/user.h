#pragma once

#include <QtWidgets>

/// The first widget of the type that has this accessible name or this text; the test ends without it.
template <typename Widget = QAbstractButton>
Widget* named(const QWidget& within, const QString& name) {
    for (Widget* widget : within.findChildren<Widget*>())
        if (widget->accessibleName() == name || widget->property("text") == name)
            return widget;
    qFatal("no widget %s", qPrintable(name));
}

/// Plays the user on the next modal dialog of type `Dialog`, which a later call opens; `play` must end it.
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

inline void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qPrintable(path));
}

inline QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QJsonObject json(const QByteArray& text) {
    return QJsonDocument::fromJson(text).object();
}
