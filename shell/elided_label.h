#pragma once

#include <QLabel>

/// Shows its plain text elided where it does not fit. So it asks for no width of its own, which a long path
/// or name would make wider than the screen.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode elideMode;
};
