#pragma once

#include <QObject>

/// Makes a quit of the application an order. Qt asks every open window first and gives way when one refuses
/// to close; the main window always does, since closing it only hides it. First thread.
class QuitOrder : public QObject {
    Q_OBJECT

public:
    /// In force from here on until it goes.
    explicit QuitOrder(QObject* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
