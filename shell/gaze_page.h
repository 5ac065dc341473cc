#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QSlider;

/// Settings and status of gaze control. Each change is written to config.json and loaded by the
/// engine.
class GazePage : public QWidget {
    Q_OBJECT

public:
    explicit GazePage(QWidget* parent = nullptr);

private:
    QWidget* makeStatus();
    QWidget* makeControls();
    void fillFromConfig();
    void saveSettings();
    void refreshStatus();
    void showDwell(int dwellMs);

    QLabel* statusLabel = nullptr;
    QCheckBox* enabledBox = nullptr;
    QSlider* dwellSlider = nullptr;
    QLabel* dwellLabel = nullptr;
    bool loading = false; // controls are being set from the file: ignore their signals
};
