#pragma once

#include <QFrame>
#include <QLabel>
#include <QString>
#include <QVBoxLayout>

class QPushButton;

// What the pages are made of. The style sheets select on the object name "Card" and on the property "role",
// which is set before the widget is first styled and never changes. First thread; the caller's layout takes
// what is returned.

QLabel* makeLabel(const QString& text, const char* role);

/// The label of an input field or a list, which gets the text as its accessible name too.
QLabel* makeFieldLabel(const QString& text, QWidget* field);

QPushButton* addButton(QBoxLayout& row, const QString& text);

/// The layout of a widget without margins, the content of a card. The widget is the layout's parent.
QVBoxLayout* makeColumn(int spacing);

/// Adds a title over a value that may wrap, and gives the value's label.
QLabel* addTitledValue(QLayout& column, const QString& title, const QString& text, const char* role);

/// A frame around `content`.
QFrame* makeCard(QWidget* content);

/// A title over a value; `valueLabel`, if given, receives the value's label.
QFrame* makeStatusCard(const QString& title, const QString& text, const char* role,
                       QLabel** valueLabel = nullptr);
