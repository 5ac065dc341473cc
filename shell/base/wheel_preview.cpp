#include "shell/base/wheel_preview.h"

#include "common/limits.h"
#include "shell/base/themes.h"

#include <QFontMetrics>
#include <QPainter>
#include <QtMath>
#include <algorithm>

namespace {

constexpr int sixteenthsPerDegree = 16; // unit of QPainter::drawPie()
constexpr int decorativeField = 1;      // highlighted when there are no labels
constexpr qreal marginPx = 6;
constexpr qreal hubShare = 0.22;  // of the widget's side, as a diameter
constexpr qreal labelRing = 0.68; // of the wheel's radius

} // namespace

WheelPreview::WheelPreview(QWidget* parent) : QWidget(parent) {
    setMinimumSize(160, 160);
    setAccessibleName(tr("Podgląd koła"));
}

void WheelPreview::setLabels(const QStringList& labels) {
    fieldLabels = labels;
    setSegments(static_cast<int>(labels.size()));
}

void WheelPreview::setHighlight(int index) {
    highlight = index;
    update();
}

void WheelPreview::setSegments(int count) {
    fieldCount = std::clamp(count, 1, maxFieldCount);
    update();
}

void WheelPreview::paintEvent(QPaintEvent*) {
    const qreal side = std::min(width(), height());
    const QRectF box((width() - side) / 2 + marginPx, (height() - side) / 2 + marginPx, side - 2 * marginPx,
                     side - 2 * marginPx);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFields(painter, box);
    painter.setPen(Qt::NoPen);
    painter.setBrush(themeInfo(currentThemeId()).hubColor);
    const qreal hubRadius = side * hubShare * 0.5;
    painter.drawEllipse(box.center(), hubRadius, hubRadius);
    if (!fieldLabels.isEmpty())
        paintLabels(painter, box, side);
}

void WheelPreview::paintFields(QPainter& painter, const QRectF& box) const {
    const ThemeInfo& colors = themeInfo(currentThemeId());
    const qreal span = 360.0 / fieldCount;
    const int highlighted = fieldLabels.isEmpty() ? decorativeField : highlight;
    painter.setPen(QPen(colors.ringColor, 1.4));
    for (int i = 0; i < fieldCount; ++i) {
        painter.setBrush(i == highlighted ? colors.highlightColor : colors.fieldColor);
        painter.drawPie(box, static_cast<int>((90 - i * span) * sixteenthsPerDegree),
                        static_cast<int>(-span * sixteenthsPerDegree));
    }
}

void WheelPreview::paintLabels(QPainter& painter, const QRectF& box, qreal side) const {
    QFont labelFont = font();
    labelFont.setPointSize(std::max(static_cast<int>(side) / 30, 7));
    painter.setFont(labelFont);
    painter.setPen(themeInfo(currentThemeId()).textColor);
    const QFontMetrics metrics(labelFont);
    const qreal span = 360.0 / fieldCount;
    const qreal radius = box.width() * 0.5 * labelRing;
    for (int i = 0; i < fieldCount && i < fieldLabels.size(); ++i) {
        const qreal angle = qDegreesToRadians((i + 0.5) * span - 90);
        const QPointF middle = box.center() + QPointF(qCos(angle), qSin(angle)) * radius;
        const QString text = metrics.elidedText(fieldLabels[i], Qt::ElideRight, static_cast<int>(side / 3.2));
        painter.drawText(QRectF(middle.x() - side / 6, middle.y() - 12, side / 3, 24), Qt::AlignCenter, text);
    }
}
