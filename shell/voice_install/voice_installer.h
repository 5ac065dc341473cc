#pragma once

#include <QStringList>

class QWidget;

/// Installs the speech library, a language model or both from their makers' zip archives, shows the progress
/// and starts voice control. With no files the user is asked for them. Everything is checked before anything
/// is replaced; after a failure or a cancellation the data folder is as before, and so it is after the next
/// start if the process ends before voice has started. Returns while the installation goes on; one at a time.
/// `window` is a top-level window, shown. Main thread.
void installVoice(const QStringList& files, QWidget* window);
