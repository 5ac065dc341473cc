#pragma once

#include <QScrollArea>
#include <QStackedWidget>

/// Pages of which the one in front alone says how much room is needed.
class PageStack : public QStackedWidget {
    Q_OBJECT

public:
    explicit PageStack(QWidget* parent = nullptr);

    int heightForWidth(int width) const override;

    /// To be called when all pages are in, and by itself whenever another one comes to the front.
    void countOnlyThePageInFront();
};

/// Holds the pages. It asks for all the room that the page in front needs, so that the window grows when a
/// larger one comes up, but for no more than the screen has: there it scrolls, so that nothing is out of
/// reach with very large letters.
class PageArea : public QScrollArea {
    Q_OBJECT

public:
    /// Takes `stack`, whose pages are complete. `besidePx` of the window's width is not the area's.
    PageArea(PageStack* stack, int besidePx, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void followFocus(const QWidget* before, QWidget* now);

    PageStack* pages;
    int besidePx;
};
