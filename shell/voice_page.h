#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QListWidget;

/// Settings and status of voice control. Each change is written to config.json and loaded by the
/// engine.
class VoicePage : public QWidget {
    Q_OBJECT

public:
    using OpenInEditor = std::function<void(const QString& path)>;

    /// `callback` may be empty.
    explicit VoicePage(OpenInEditor callback, QWidget* parent = nullptr);

private:
    void fillFromConfig();
    QWidget* makeStatus();
    QWidget* makeSwitches();
    QWidget* makePhrases();
    void saveSettings();
    void refreshStatus();
    void refreshPhrases();
    void onTick();

    QLabel* statusLabel = nullptr;
    QCheckBox* enabledBox = nullptr;
    QCheckBox* globalBox = nullptr;
    QListWidget* phraseList = nullptr;
    OpenInEditor openInEditor;
    bool loading = false; // controls are being set from the file: ignore their signals
};
