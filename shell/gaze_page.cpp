#include "shell/gaze_page.h"

#include "common/limits.h"
#include "engine/core/overlay.h"
#include "shell/base/cards.h"
#include "shell/base/config_changes.h"
#include "shell/base/engine_status.h"
#include "shell/base/json_file.h"

#include <QCheckBox>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int maxDwellMs = 3000; // of the slider; a file may have up to maxGazeDwellMs

} // namespace

GazePage::GazePage(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 18, 18, 18);
    column->setSpacing(10);
    column->addWidget(makeLabel(tr("Sterowanie wzrokiem"), "pageTitle"));
    column->addWidget(makeCard(makeStatus()));
    column->addWidget(makeCard(makeControls()));
    column->addStretch();
    fillFromConfig();
    connect(&ConfigChanges::instance(), &ConfigChanges::changed, this, &GazePage::fillFromConfig);
    showDwell(dwellSlider->value());
    connect(dwellSlider, &QSlider::valueChanged, this, &GazePage::showDwell);
    connect(dwellSlider, &QSlider::sliderReleased, this, &GazePage::saveSettings);
    connect(enabledBox, &QCheckBox::toggled, this, &GazePage::saveSettings);
    refreshStatus();
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &GazePage::refreshStatus);
    poll->start(statusPollPeriod);
}

QWidget* GazePage::makeStatus() {
    auto* column = makeColumn(2);
    statusLabel = addTitledValue(*column, tr("Tobii Eye Tracker"), {}, "ok");
    return column->parentWidget();
}

QWidget* GazePage::makeControls() {
    auto* column = makeColumn(10);
    enabledBox = new QCheckBox(tr("Steruj wirtualnym kursorem wzrokiem, gdy koło jest otwarte"));
    dwellSlider = new QSlider(Qt::Horizontal);
    dwellSlider->setRange(0, maxDwellMs);
    dwellSlider->setSingleStep(50);
    dwellSlider->setPageStep(100);
    const QString hint = tr("Zmiana klawiszami zapisuje się po przełączeniu pola wyboru tam i z powrotem");
    dwellSlider->setToolTip(hint);
    dwellSlider->setAccessibleDescription(hint);
    dwellLabel = makeLabel({}, "value");
    dwellLabel->setMinimumWidth(140);
    QLabel* title = makeLabel(tr("Czas wyboru spojrzeniem (dwell)"), "cardTitle");
    title->setBuddy(dwellSlider);
    auto* row = new QHBoxLayout;
    row->addWidget(dwellSlider, 1);
    row->addWidget(dwellLabel);
    QLabel* note =
        makeLabel(tr("Zatrzymanie wzroku na polu przez ten czas wybiera funkcję. Wartość 0 wyłącza wybór "
                     "spojrzeniem — wtedy potwierdzasz kliknięciem albo komendą \"kliknij\"."),
                  "cardTitle");
    note->setWordWrap(true);
    column->addWidget(enabledBox);
    column->addWidget(title);
    column->addLayout(row);
    column->addWidget(note);
    return column->parentWidget();
}

void GazePage::fillFromConfig() {
    loading = true;
    const QJsonObject config = readConfigObject();
    enabledBox->setChecked(config["gazeEnabled"].toBool(true));
    // Converted as in the engine: truncated, and no overflow for large numbers.
    const double dwellMs =
        std::clamp<double>(config["gazeDwell"].toDouble(defaultGazeDwellMs), 0, maxDwellMs);
    dwellSlider->setValue(static_cast<int>(dwellMs));
    loading = false;
}

void GazePage::saveSettings() {
    if (loading)
        return;
    QJsonObject config = readConfigObject();
    config["gazeEnabled"] = enabledBox->isChecked();
    config["gazeDwell"] = dwellSlider->value();
    writeConfigObject(config);
    OverlayReloadConfig();
}

void GazePage::refreshStatus() {
    statusLabel->setText(gazeStatusLine());
}

void GazePage::showDwell(int dwellMs) {
    dwellLabel->setText(dwellMs < 1 ? tr("tylko kliknięcie") : tr("%1 ms").arg(dwellMs));
}
