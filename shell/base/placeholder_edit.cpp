#include "shell/base/placeholder_edit.h"

#include <QInputMethodEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <algorithm>

// QLineEdit paints the placeholder at half the opacity of the text, which is too pale, and style sheets
// cannot change that before Qt 6.5. Painted once more at the same place it has three quarters.
void PlaceholderEdit::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (!text().isEmpty() || isComposing)
        return;
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QRect box = style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
    const QFontMetrics metrics = fontMetrics();
    const int height = std::max(metrics.boundingRect(placeholderText()).height(), metrics.height());
    constexpr int margin = 2; // as in QLineEdit
    const QRect line(box.x() + margin, box.y() + (box.height() - height + 1) / 2, box.width() - 2 * margin,
                     height);
    QPainter painter(this);
    painter.setPen(palette().placeholderText().color());
    painter.drawText(line, static_cast<int>(alignment()),
                     metrics.elidedText(placeholderText(), Qt::ElideRight, line.width()));
}

void PlaceholderEdit::inputMethodEvent(QInputMethodEvent* event) {
    isComposing = !event->preeditString().isEmpty();
    QLineEdit::inputMethodEvent(event);
}
