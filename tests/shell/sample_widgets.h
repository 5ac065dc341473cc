#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

// One of each kind of widget that the shell shows, for looking at the sheets and for measuring them.

enum class WidgetState { normal, hover, pressed, focus, disabled };

struct SampleWidget {
    std::string name;
    /// A widget without parent that shows the text wherever it shows any.
    std::function<QWidget*(const QString& text)> make;
    /// False for what is never pressed or focused, such as a label.
    bool interactive = true;
};

const std::vector<SampleWidget>& sampleWidgets();

/// Puts a widget of a visible, active window in the state, as the pointer or the keyboard would.
void putInState(QWidget& widget, WidgetState state);
