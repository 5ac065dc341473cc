#pragma once

#include <QStringList>
#include <QWidget>

/// A wheel in the colours of the current theme, scaled to the widget. Call update() after a change of theme.
class WheelPreview : public QWidget {
    Q_OBJECT

public:
    explicit WheelPreview(QWidget* parent = nullptr);

    /// One field per label, at least 1 and at most maxFieldCount.
    void setLabels(const QStringList& labels);
    /// An index out of range highlights nothing.
    void setHighlight(int index);
    /// Sets the number of fields, clamped to 1 to maxFieldCount, and keeps the labels.
    void setSegments(int count);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintFields(QPainter& painter, const QRectF& box) const;
    void paintLabels(QPainter& painter, const QRectF& box, qreal side) const;

    int fieldCount = 8;
    int highlight = -1;
    QStringList fieldLabels;
};
