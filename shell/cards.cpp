#include "shell/cards.h"

#include <QVBoxLayout>

namespace {

QFrame* makeFrame(const QMargins& margins, int spacing) {
    auto* card = new QFrame;
    card->setObjectName("Card");
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(margins);
    column->setSpacing(spacing);
    return card;
}

} // namespace

QLabel* makeLabel(const QString& text, const char* role) {
    auto* label = new QLabel(text);
    label->setProperty("role", role);
    return label;
}

QFrame* makeCard(QWidget* content) {
    QFrame* card = makeFrame({14, 12, 14, 12}, 8);
    card->layout()->addWidget(content);
    return card;
}

QFrame* makeStatusCard(const QString& title, const QString& text, const char* role, QLabel** valueLabel) {
    QFrame* card = makeFrame({14, 10, 14, 10}, 2);
    card->layout()->addWidget(makeLabel(title, "cardTitle"));
    QLabel* value = makeLabel(text, role);
    // A screen reader would otherwise tell "aktywny" and not of what.
    value->setWordWrap(true);
    value->setAccessibleDescription(title);
    card->layout()->addWidget(value);
    if (valueLabel != nullptr)
        *valueLabel = value;
    return card;
}
