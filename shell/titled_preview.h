#pragma once

#include <QWidget>

class QLabel;
class WheelPreview;
struct EditorWheel;

/// A picture of one wheel of a document below the wheel's name.
class TitledPreview : public QWidget {
    Q_OBJECT

public:
    explicit TitledPreview(QWidget* parent = nullptr);

    /// Shows the wheel with one of its functions highlighted, none if `function` is -1. Without a wheel, an
    /// empty circle.
    void showWheel(const EditorWheel* wheel, int function);

private:
    QLabel* title = nullptr;
    WheelPreview* preview = nullptr;
};
