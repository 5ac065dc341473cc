#include "shell/wheels/titled_preview.h"

#include "shell/base/elided_label.h"
#include "shell/base/wheel_preview.h"
#include "shell/wheels/wheel_document.h"

#include <QBoxLayout>

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
