#include "shell/base/cards.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

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

QLabel* makeFieldLabel(const QString& text, QWidget* field) {
    QLabel* label = makeLabel(text, "cardTitle");
    label->setBuddy(field);
    field->setAccessibleName(text); // lists do not take it from their label
    return label;
}

void nameSelector(QComboBox* combo, const QString& name) {
    combo->setAccessibleName(name);
    combo->setAccessibleDescription(name);
    combo->view()->setAccessibleName(name);
    if (combo->lineEdit() != nullptr) // has the focus in place of the combo box
        combo->lineEdit()->setAccessibleName(name);
}

QPushButton* addButton(QBoxLayout& row, const QString& text) {
    auto* button = new QPushButton(text);
    row.addWidget(button);
    return button;
}

QVBoxLayout* makeColumn(int spacing) {
    auto* column = new QVBoxLayout(new QWidget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing);
    return column;
}

QLabel* addTitledValue(QLayout& column, const QString& title, const QString& text, const char* role) {
    column.addWidget(makeLabel(title, "cardTitle"));
    QLabel* value = makeLabel(text, role);
    value->setWordWrap(true);
    // Without it a screen reader would say "aktywny" but not what is active.
    value->setAccessibleDescription(title);
    column.addWidget(value);
    return value;
}

QFrame* makeCard(QWidget* content) {
    QFrame* card = makeFrame({14, 12, 14, 12}, 8);
    card->layout()->addWidget(content);
    return card;
}

QFrame* makeStatusCard(const QString& title, const QString& text, const char* role, QLabel** valueLabel) {
    QFrame* card = makeFrame({14, 10, 14, 10}, 2);
    QLabel* value = addTitledValue(*card->layout(), title, text, role);
    if (valueLabel != nullptr)
        *valueLabel = value;
    return card;
}
