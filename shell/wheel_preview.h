#pragma once

#include <QStringList>
#include <QWidget>

/// A wheel in the colours of the current theme, scaled to the widget. It does not watch the theme: whoever
/// changes it calls update().
class WheelPreview : public QWidget {
    Q_OBJECT

public:
    explicit WheelPreview(QWidget* parent = nullptr);

    /// One field for each label, at least 1 and at most maxFieldCount.
    void setLabels(const QStringList& labels);
    /// Any index; one that no field has lights nothing.
    void setHighlight(int index);
    /// The number of fields alone, held to 1 through maxFieldCount; the labels stay.
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
