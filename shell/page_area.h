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
    /// Takes ownership of `stack`, to which all pages have been added. `besidePx`: the width of the window's
    /// other content.
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
