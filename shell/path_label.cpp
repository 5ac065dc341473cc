#include "shell/path_label.h"

#include <QPainter>
#include <QStyle>

PathLabel::PathLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void PathLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect box = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, box.width());
    style()->drawItemText(&painter, box, Qt::AlignVCenter, palette(), isEnabled(), shown, foregroundRole());
}
