#include "shell/page_area.h"

#include <QResizeEvent>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <algorithm>

namespace {

/// The window's frame, and a border around it.
constexpr QSize frame{40, 60};
/// A screen so small that a page makes no sense below this.
constexpr QSize smallestArea{240, 200};

} // namespace

PageArea::PageArea(QStackedWidget* stack, int beside, QWidget* parent)
    : QScrollArea(parent), pages(stack), besidePx(beside) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // it follows the focus of what is in it
    setWidgetResizable(true);
    setWidget(pages);
    // Both would paint the system's colour over the window's.
    viewport()->setAutoFillBackground(false);
    pages->setAutoFillBackground(false);
    pages->installEventFilter(this);
    connect(pages, &QStackedWidget::currentChanged, this, &PageArea::countOnlyThePageInFront);
    countOnlyThePageInFront();
}

void PageArea::countOnlyThePageInFront() {
    for (int i = 0; i < pages->count(); ++i) {
        const auto policy = i == pages->currentIndex() ? QSizePolicy::Preferred : QSizePolicy::Ignored;
        pages->widget(i)->setSizePolicy(policy, policy);
    }
    pages->updateGeometry();
}

QSize PageArea::minimumSizeHint() const {
    const QSize room =
        (screen()->availableGeometry().size() - frame - QSize(besidePx, 0)).expandedTo(smallestArea);
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

// A window that has just grown to its least size did so for a page, and may now reach beyond the screen.
void PageArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    QWidget* top = window();
    const bool hasGrown =
        event->size().width() > event->oldSize().width() && top->width() == top->minimumWidth();
    if (!hasGrown || !top->isVisible())
        return;
    const QRect taken = top->frameGeometry();
    const QRect room = screen()->availableGeometry();
    if (taken.right() > room.right())
        top->move(std::max(room.right() + 1 - taken.width(), room.left()), taken.top());
}
