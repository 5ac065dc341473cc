#pragma once

#include <QWidget>

class QBoxLayout;
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

    /// Adds it to the row, which is in `page`, the layout of its parent. On a screen too narrow for the row
    /// it is below: a page may scroll down, but not sideways as well. Both layouts must outlive it.
    void placeIn(QBoxLayout& row, QBoxLayout& page);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void fitScreen();

    QBoxLayout* beside = nullptr;
    QBoxLayout* below = nullptr;
    bool isBelow = false;
    QLabel* title = nullptr;
    WheelPreview* preview = nullptr;
};
