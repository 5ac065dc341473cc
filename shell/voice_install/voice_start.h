#pragma once

#include <QString>
#include <filesystem>

/// The engine's status text of speech recognition. Main thread.
QString engineVoiceStatus();

/// Whether voice has started, or has reported why it cannot, since the status was this one. Main thread.
bool isVoiceSettledSince(const QString& statusBefore);

/// Removes an installation's work folder; up to 4 GB may take long. Nobody waits for it: the next start
/// removes what the end of the process leaves. Main thread.
void removeInBackground(const std::filesystem::path& work);

/// Takes back an installation that the end of the process interrupted, and removes its files. What voice has
/// not been started with yet is confirmed when it has. Call once, before the engine starts. Main thread.
void finishVoiceInstallation();
