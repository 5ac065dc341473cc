#pragma once

#include <QObject>

/// Makes QCoreApplication::quit() unconditional. By default Qt first closes all windows and cancels the quit
/// if one refuses; the main window always does, because it only hides. Main thread.
class QuitEventFilter : public QObject {
    Q_OBJECT

public:
    /// Active until it is destroyed.
    explicit QuitEventFilter(QObject* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
