#include "shell/page_area.h"

#include "shell/screen_room.h"

#include <QApplication>
#include <QLayout>
#include <QResizeEvent>
#include <QScreen>
#include <QScrollBar>
#include <QWindow>
#include <algorithm>

namespace {

/// A screen so small that a page makes no sense below this.
constexpr QSize smallestArea{240, 200};

} // namespace

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent) {
    connect(this, &QStackedWidget::currentChanged, this, &PageStack::countOnlyThePageInFront);
}

void PageStack::countOnlyThePageInFront() {
    for (int i = 0; i < count(); ++i) {
        const auto policy = i == currentIndex() ? QSizePolicy::Preferred : QSizePolicy::Ignored;
        widget(i)->setSizePolicy(policy, policy);
    }
    updateGeometry();
}

// Its layout would ask the pages behind as well, and for the room that they like best: a list is to shrink
// before the page scrolls.
int PageStack::heightForWidth(int width) const {
    const QWidget* page = currentWidget();
    if (page == nullptr)
        return -1;
    const int wrapped = page->layout() == nullptr ? 0 : page->layout()->totalMinimumHeightForWidth(width);
    return std::max(wrapped, page->minimumSizeHint().height());
}

PageArea::PageArea(PageStack* stack, int beside, QWidget* parent)
    : QScrollArea(parent), pages(stack), besidePx(beside) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(pages);
    // Both would paint the system's colour over the window's.
    viewport()->setAutoFillBackground(false);
    pages->setAutoFillBackground(false);
    pages->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, &PageArea::followFocus);
    pages->countOnlyThePageInFront();
}

// Qt does so only for a focus that comes from another widget of the page. Under a pressed button nothing
// moves, or its release would miss what it pressed.
void PageArea::followFocus(const QWidget* /*before*/, QWidget* now) {
    if (now != nullptr && pages->isAncestorOf(now) && QGuiApplication::mouseButtons() == Qt::NoButton)
        ensureWidgetVisible(now);
}

QSize PageArea::minimumSizeHint() const {
    const QSize room = (screenRoom(*this) - QSize(besidePx, 0)).expandedTo(smallestArea);
    QSize wanted = pages->minimumSizeHint();
    // Texts that wrap are higher than the least size tells.
    wanted.setHeight(
        std::max(wanted.height(), pages->heightForWidth(std::min(wanted.width(), room.width()))));
    if (wanted.width() > room.width())
        wanted.rheight() += horizontalScrollBar()->sizeHint().height();
    return wanted.boundedTo(room);
}

bool PageArea::eventFilter(QObject* watched, QEvent* event) {
    // The window learns of the pages' size through this alone.
    if (watched == pages && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

// Moved to a smaller screen the window could not be made to fit there.
void PageArea::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    connect(window()->windowHandle(), &QWindow::screenChanged, this, &PageArea::updateGeometry,
            Qt::UniqueConnection);
}

// A window that has just grown to its least size did so for a page, and may now reach beyond the screen.
void PageArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    QWidget* top = window();
    const QSize growth = event->size() - event->oldSize();
    const bool hasGrown = (growth.width() > 0 && top->width() == top->minimumWidth()) ||
                          (growth.height() > 0 && top->height() == top->minimumHeight());
    if (!hasGrown || !top->isVisible())
        return;
    const QRect taken = top->frameGeometry();
    const QRect room = screen()->availableGeometry();
    QPoint place = taken.topLeft();
    if (taken.right() > room.right())
        place.setX(std::max(room.right() + 1 - taken.width(), room.left()));
    if (taken.bottom() > room.bottom())
        place.setY(std::max(room.bottom() + 1 - taken.height(), room.top()));
    if (place != taken.topLeft())
        top->move(place);
}
