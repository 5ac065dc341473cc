#pragma once

#include <QScrollArea>
#include <QStackedWidget>

/// A stack of pages whose size hints are those of the current page alone.
class PageStack : public QStackedWidget {
    Q_OBJECT

public:
    explicit PageStack(QWidget* parent = nullptr);

    int heightForWidth(int width) const override;

    /// Called when the current page changes. Call it once after adding the last page.
    void sizeToCurrentPage();
};

/// Scroll area of the pages. Its minimum size is that of the current page, so that the window grows for a
/// larger page, but at most the size of the screen: beyond that it scrolls, so that everything is reachable
/// with very large fonts.
class PageArea : public QScrollArea {
    Q_OBJECT

public:
    /// Takes ownership of `stack`, to which all pages have been added. `above`: a bar that may appear above
    /// the area; `besidePx`: the width of what is beside it.
    PageArea(PageStack* stack, QWidget* above, int besidePx, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void followFocus(const QWidget* before, QWidget* now);
    void showWidget(QWidget& widget);

    PageStack* pages;
    QWidget* bar;
    int besidePx;
};
