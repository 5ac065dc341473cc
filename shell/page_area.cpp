#include "shell/page_area.h"

#include "shell/base/window_size.h"

#include <QApplication>
#include <QLayout>
#include <QResizeEvent>
#include <QScreen>
#include <QScrollBar>
#include <QWindow>
#include <algorithm>

namespace {

/// Applies on very small screens: the area does not shrink below this.
constexpr QSize minimumAreaSize{240, 200};

} // namespace

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent) {
    connect(this, &QStackedWidget::currentChanged, this, &PageStack::sizeToCurrentPage);
}

void PageStack::sizeToCurrentPage() {
    for (int i = 0; i < count(); ++i) {
        const auto policy = i == currentIndex() ? QSizePolicy::Preferred : QSizePolicy::Ignored;
        widget(i)->setSizePolicy(policy, policy);
    }
    updateGeometry();
}

// QStackedLayout considers all pages and their preferred size. Here only the current page counts, with its
// minimum size: lists shrink before the page scrolls.
int PageStack::heightForWidth(int width) const {
    const QWidget* page = currentWidget();
    if (page == nullptr)
        return -1;
    const int wrapped = page->layout() == nullptr ? 0 : page->layout()->totalMinimumHeightForWidth(width);
    return std::max(wrapped, page->minimumSizeHint().height());
}

PageArea::PageArea(PageStack* stack, QWidget* above, int beside, QWidget* parent)
    : QScrollArea(parent), pages(stack), bar(above), besidePx(beside) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(pages);
    // Otherwise both paint the system's background over the window's.
    viewport()->setAutoFillBackground(false);
    pages->setAutoFillBackground(false);
    pages->installEventFilter(this);
    bar->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, &PageArea::followFocus);
    pages->sizeToCurrentPage();
}

// QScrollArea scrolls only when the focus comes from another widget of the page. No scrolling while a mouse
// button is down, or the release would miss the pressed widget.
void PageArea::followFocus(const QWidget* /*before*/, QWidget* now) {
    if (now != nullptr && pages->isAncestorOf(now) && QGuiApplication::mouseButtons() == Qt::NoButton)
        showWidget(*now);
}

// No further to the right than needed: texts begin at the left.
void PageArea::showWidget(QWidget& widget) {
    ensureWidgetVisible(&widget, 0);
    if (widget.width() > viewport()->width())
        horizontalScrollBar()->setValue(widget.mapTo(pages, QPoint(0, 0)).x());
}

// QScrollArea's would scroll again, with a margin.
bool PageArea::focusNextPrevChild(bool next) {
    return QWidget::focusNextPrevChild(next);
}

QSize PageArea::minimumSizeHint() const {
    QSize available = maximumWindowSize(*this) - QSize(besidePx, 0);
    if (!bar->isHidden())
        available.rheight() -= bar->heightForWidth(available.width());
    available = available.expandedTo(minimumAreaSize);
    QSize minimum = pages->minimumSizeHint();
    // minimumSizeHint() does not include the height of wrapped texts.
    minimum.setHeight(
        std::max(minimum.height(), pages->heightForWidth(std::min(minimum.width(), available.width()))));
    if (minimum.height() > available.height())
        minimum.rwidth() += verticalScrollBar()->sizeHint().width();
    if (minimum.width() > available.width())
        minimum.rheight() += horizontalScrollBar()->sizeHint().height();
    return minimum.boundedTo(available);
}

bool PageArea::eventFilter(QObject* watched, QEvent* event) {
    // QScrollArea does not pass a change of its content's size hint on to the window.
    if ((watched == pages && event->type() == QEvent::LayoutRequest) ||
        (watched == bar && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)))
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

// The minimum size depends on the screen: recompute it when the window moves to another one.
void PageArea::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    connect(window()->windowHandle(), &QWindow::screenChanged, this, &PageArea::updateGeometry,
            Qt::UniqueConnection);
}

// A window that has just grown to its minimum size did so for a page, and may extend beyond the screen now.
void PageArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    QWidget* top = window();
    const QSize growth = event->size() - event->oldSize();
    const bool hasGrown = (growth.width() > 0 && top->width() == top->minimumWidth()) ||
                          (growth.height() > 0 && top->height() == top->minimumHeight());
    if (!hasGrown || !top->isVisible())
        return;
    const QRect frame = top->frameGeometry();
    const QRect available = screen()->availableGeometry();
    QPoint place = frame.topLeft();
    if (frame.right() > available.right())
        place.setX(std::max(available.right() + 1 - frame.width(), available.left()));
    if (frame.bottom() > available.bottom())
        place.setY(std::max(available.bottom() + 1 - frame.height(), available.top()));
    if (place != frame.topLeft())
        top->move(place);
}
