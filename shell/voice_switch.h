#pragma once

#include <QString>

/// Sets "voiceEnabled" in config.json, and nothing else. False if the file cannot be written. `backup` as of
/// writeConfigObject(). Main thread.
bool writeVoiceEnabled(bool isEnabled, QString* backup);

/// As the check box of the voice page does. Switches voice that has given up, for example without a
/// microphone, off and on again. Main thread, after the engine has started.
void switchVoice(bool isEnabled);

/// Tells a user who may have no other means than voice how to switch it on again. Main thread.
void explainVoiceOff();
