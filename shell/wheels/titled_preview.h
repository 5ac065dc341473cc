#pragma once

#include <QWidget>

class QLabel;
class WheelPreview;
struct EditorWheel;

/// A wheel's name above its preview.
class TitledPreview : public QWidget {
    Q_OBJECT

public:
    explicit TitledPreview(QWidget* parent = nullptr);

    /// Shows the wheel with one function highlighted, none if `function` is -1. Null shows an empty circle.
    void showWheel(const EditorWheel* wheel, int function);

private:
    QLabel* title = nullptr;
    WheelPreview* preview = nullptr;
};
