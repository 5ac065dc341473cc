#pragma once

#include <QLineEdit>

/// A text field with a readable placeholder. Main thread.
class PlaceholderEdit : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

protected:
    void paintEvent(QPaintEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private:
    bool isComposing = false;
};
