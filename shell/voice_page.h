#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QListWidget;

/// Settings and status of voice control. A change is written to config.json and the engine reads it again at
/// once.
class VoicePage : public QWidget {
    Q_OBJECT

public:
    using OpenInEditor = std::function<void(const QString& path)>;

    /// `openInEditor` may be empty.
    explicit VoicePage(OpenInEditor openInEditor, QWidget* parent = nullptr);

private:
    QWidget* makeStatus();
    QWidget* makeSwitches();
    QWidget* makePhrases();
    void fillFromConfig();
    void saveSettings();
    void refreshStatus();
    void refreshPhrases();
    void onTick();

    QLabel* statusLabel = nullptr;
    QCheckBox* enabledBox = nullptr;
    QCheckBox* globalBox = nullptr;
    QListWidget* phraseList = nullptr;
    OpenInEditor openInEditor;
    bool loading = false; // the controls are being filled from the file
};
