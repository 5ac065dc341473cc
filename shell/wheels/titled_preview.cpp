#include "shell/wheels/titled_preview.h"

#include "shell/base/elided_label.h"
#include "shell/base/wheel_preview.h"
#include "shell/base/window_size.h"
#include "shell/wheels/wheel_document.h"

#include <QBoxLayout>
#include <QScreen>
#include <QScrollArea>
#include <QWindow>

TitledPreview::TitledPreview(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    title = new ElidedLabel({}, Qt::ElideRight);
    title->setProperty("role", "value");
    title->setAlignment(Qt::AlignCenter);
    preview = new WheelPreview;
    preview->setFixedSize(240, 240);
    column->addWidget(title);
    column->addWidget(preview);
    column->addStretch();
}

void TitledPreview::showWheel(const EditorWheel* wheel, int function) {
    QStringList labels;
    for (qsizetype i = 0; wheel != nullptr && i < wheel->actions.size(); ++i) {
        const QString& name = wheel->actions[i].name;
        labels.append(name.isEmpty() ? QString::number(i + 1) : name);
    }
    preview->setLabels(labels);
    preview->setHighlight(function);
    title->setText(wheel == nullptr ? QString() : wheel->name);
}

void TitledPreview::placeIn(QBoxLayout& row, QBoxLayout& page) {
    beside = &row;
    below = &page;
    beside->addWidget(this);
}

void TitledPreview::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    connect(window()->windowHandle(), &QWindow::screenChanged, this, &TitledPreview::fitScreen,
            Qt::UniqueConnection);
    fitScreen();
}

void TitledPreview::fitScreen() {
    const QWidget* area = this;
    while (!area->isWindow() && qobject_cast<const QScrollArea*>(area) == nullptr)
        area = area->parentWidget();
    const QMargins margins = below->contentsMargins();
    const int available = maximumWindowSize(*this).width() - area->mapTo(window(), QPoint()).x() -
                          margins.left() - margins.right();
    const int others =
        beside->minimumSize().width() - (isBelow ? 0 : beside->spacing() + minimumSizeHint().width());
    const bool fits = others + beside->spacing() + minimumSizeHint().width() <= available;
    if (fits != isBelow)
        return;
    isBelow = !fits;
    (isBelow ? below : beside)->addWidget(this, 0, isBelow ? Qt::AlignHCenter : Qt::Alignment());
}
