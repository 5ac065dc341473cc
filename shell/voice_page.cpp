#include "shell/voice_page.h"

#include "common/file_names.h"
#include "engine/core/overlay.h"
#include "shell/base/cards.h"
#include "shell/base/config_changes.h"
#include "shell/base/data_folder.h"
#include "shell/base/engine_status.h"
#include "shell/base/json_file.h"
#include "shell/voice_switch.h"
#include "shell/wheels/wheel_document.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

namespace {

constexpr int ticksPerPhraseRefresh = 4; // the list reads a file

QString voiceFilePath() {
    return dataFolder() + '/' + QString::fromUtf16(voiceFunctionsFileName);
}

} // namespace

VoicePage::VoicePage(OpenInEditor callback, QWidget* parent)
    : QWidget(parent), openInEditor(std::move(callback)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 18, 18, 18);
    column->setSpacing(10);
    column->addWidget(makeLabel(tr("Komendy głosowe"), "pageTitle"));
    column->addWidget(makeCard(makeStatus()));
    column->addWidget(makeCard(makeSwitches()));
    column->addWidget(makeCard(makePhrases()), 1);
    QLabel* note = makeLabel(
        tr("Wbudowane: \"pokaż/schowaj koło\", \"następne/poprzednie koło\", \"pokaż/schowaj siatkę\", "
           "\"pokaż elementy (strony)\", \"ukryj elementy\", liczby 1–99, \"kliknij\", \"dwuklik\", "
           "\"prawy klik\", \"kliknij dwa razy/prawy na N\"."),
        "cardTitle");
    note->setWordWrap(true);
    column->addWidget(note);
    fillFromConfig();
    connect(&ConfigChanges::instance(), &ConfigChanges::changed, this, &VoicePage::fillFromConfig);
    connect(enabledBox, &QCheckBox::toggled, this, &VoicePage::saveSettings);
    connect(globalBox, &QCheckBox::toggled, this, &VoicePage::saveSettings);
    refreshPhrases();
    refreshStatus();
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &VoicePage::onTick);
    poll->start(statusPollPeriod);
}

QWidget* VoicePage::makeStatus() {
    auto* column = makeColumn(2);
    statusLabel = addTitledValue(*column, tr("Rozpoznawanie mowy (Vosk, offline)"), {}, "ok");
    return column->parentWidget();
}

QWidget* VoicePage::makeSwitches() {
    auto* column = makeColumn(8);
    enabledBox = new QCheckBox(tr("Komendy głosowe włączone"));
    globalBox = new QCheckBox(tr("Frazy pól kół działają zawsze (nie tylko przy otwartym kole)"));
    column->addWidget(enabledBox);
    column->addWidget(globalBox);
    return column->parentWidget();
}

QWidget* VoicePage::makePhrases() {
    auto* column = makeColumn(8);
    phraseList = new QListWidget;
    phraseList->setMinimumHeight(140);
    phraseList->ensurePolished(); // see MainWindow: rows need the style sheet before their layout
    column->addWidget(makeFieldLabel(tr("Globalne komendy (voice.json)"), phraseList));
    auto* edit = new QPushButton(tr("Edytuj w edytorze kół"));
    connect(edit, &QPushButton::clicked, this, [this] {
        if (openInEditor)
            openInEditor(voiceFilePath());
    });
    column->addWidget(phraseList, 1);
    column->addWidget(edit);
    return column->parentWidget();
}

void VoicePage::fillFromConfig() {
    loading = true;
    const QJsonObject config = readConfigObject();
    enabledBox->setChecked(config["voiceEnabled"].toBool(true));
    globalBox->setChecked(config["voiceGlobal"].toBool(true));
    loading = false;
}

void VoicePage::saveSettings() {
    if (loading)
        return;
    QJsonObject config = readConfigObject();
    const bool isSwitchedOff = !enabledBox->isChecked() && config["voiceEnabled"].toBool(true);
    config["voiceEnabled"] = enabledBox->isChecked();
    config["voiceGlobal"] = globalBox->isChecked();
    writeConfigObject(config);
    OverlayReloadConfig();
    if (isSwitchedOff)
        explainVoiceOff();
}

void VoicePage::refreshStatus() {
    statusLabel->setText(voiceStatusLine());
}

void VoicePage::refreshPhrases() {
    WheelDocument voice;
    if (!voice.load(voiceFilePath(), nullptr))
        return;
    phraseList->clear();
    for (const EditorWheel& wheel : voice.wheels)
        for (const EditorFunction& function : wheel.actions)
            if (!function.voice.isEmpty())
                phraseList->addItem(tr("„%1” — %2").arg(function.voice, function.name));
}

void VoicePage::onTick() {
    static int ticks = 0;
    refreshStatus();
    if (++ticks % ticksPerPhraseRefresh == 0)
        refreshPhrases();
}
