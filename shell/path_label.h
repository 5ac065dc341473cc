#pragma once

#include <QLabel>

/// A line for a path: its text is whole, what is painted is cut in the middle to the width there is, so that
/// the file's name and what follows it stay in sight. A long path never widens the window.
class PathLabel : public QLabel {
    Q_OBJECT

public:
    explicit PathLabel(const QString& text, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
