#pragma once

#include "shell/base/placeholder_edit.h"

/// Takes the next key that is pressed while it has the keyboard. Tab, Escape, Enter and everything with Ctrl,
/// Alt or the Windows key keep their meaning, so that nobody is caught in it. Main thread.
class KeyCaptureField : public PlaceholderEdit {
    Q_OBJECT

public:
    explicit KeyCaptureField(QWidget* parent = nullptr);

signals:
    void captured(const QString& name);
    void unnamedKeyPressed();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
