#include "shell/base/elided_label.h"

#include <QPainter>
#include <QStyle>

ElidedLabel::ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent)
    : QLabel(text, parent), elideMode(mode) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect box = contentsRect();
    const QString line = QString(text()).replace('\n', ' ');
    const QString shown = fontMetrics().elidedText(line, elideMode, box.width());
    style()->drawItemText(&painter, box, static_cast<int>(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}
