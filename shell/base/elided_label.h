#pragma once

#include <QLabel>

/// Plain text, elided to the width of the label. Its size hint has no width, so a long path or name does not
/// widen the window.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode elideMode;
};
