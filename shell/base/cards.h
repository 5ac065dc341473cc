#pragma once

#include <QFrame>
#include <QLabel>
#include <QString>
#include <QVBoxLayout>

class QComboBox;
class QPushButton;

// Building blocks of the pages. The style sheets select on the object name "Card" and on the property "role",
// which is set before the widget is first styled and never changes. Main thread; the caller adds what is
// returned to a layout, which takes ownership.

QLabel* makeLabel(const QString& text, const char* role);

/// A label that is the buddy of `field`, which also gets the text as its accessible name.
QLabel* makeFieldLabel(const QString& text, QWidget* field);

/// Names a selector for screen readers. Some platforms report the current item as the accessible name; then
/// only the description says what the selector is for.
void nameSelector(QComboBox* combo, const QString& name);

QPushButton* addButton(QBoxLayout& row, const QString& text);

/// A column without margins on a new widget, which is the layout's parentWidget().
QVBoxLayout* makeColumn(int spacing);

/// Adds a title above a word-wrapped value. Returns the value's label.
QLabel* addTitledValue(QLayout& column, const QString& title, const QString& text, const char* role);

/// A frame around `content`.
QFrame* makeCard(QWidget* content);

/// A card with a title above a value; `valueLabel`, if given, receives the value's label.
QFrame* makeStatusCard(const QString& title, const QString& text, const char* role,
                       QLabel** valueLabel = nullptr);
