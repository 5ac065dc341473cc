#include "shell/page_area.h"

#include <QEvent>
#include <QScreen>
#include <QScrollBar>
#include <algorithm>

namespace {

/// The window's frame, and a border around it.
constexpr QSize frame{40, 60};
/// A screen so small that a page makes no sense below this.
constexpr QSize smallestArea{240, 200};

} // namespace

PageArea::PageArea(QWidget* pages, int beside, QWidget* parent) : QScrollArea(parent), besidePx(beside) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // it follows the focus of what is in it
    setWidgetResizable(true);
    setWidget(pages);
    // Both would paint the system's colour over the window's.
    viewport()->setAutoFillBackground(false);
    pages->setAutoFillBackground(false);
    pages->installEventFilter(this);
}

QSize PageArea::minimumSizeHint() const {
    const QSize room =
        (screen()->availableGeometry().size() - frame - QSize(besidePx, 0)).expandedTo(smallestArea);
    QSize wanted = widget()->minimumSizeHint();
    // Texts that wrap are higher than the least size tells.
    wanted.setHeight(
        std::max(wanted.height(), widget()->heightForWidth(std::min(wanted.width(), room.width()))));
    if (wanted.width() > room.width())
        wanted.rheight() += horizontalScrollBar()->sizeHint().height();
    return wanted.boundedTo(room);
}

bool PageArea::eventFilter(QObject* watched, QEvent* event) {
    // The window learns of the pages' size through this alone.
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}
