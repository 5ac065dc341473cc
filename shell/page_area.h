#pragma once

#include <QScrollArea>

/// Holds the pages. It asks for all the room that they need, as the pages alone would, but for no more than
/// the screen has: there it scrolls, so that nothing is out of reach with very large letters.
class PageArea : public QScrollArea {
    Q_OBJECT

public:
    /// Takes `pages`. `besidePx` of the window's width is not the area's.
    PageArea(QWidget* pages, int besidePx, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int besidePx;
};
