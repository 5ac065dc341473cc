#pragma once

#include <QStringList>

class QWidget;

/// Installs voice from downloaded archives; without files the user chooses them. May show dialogs over
/// `parent`. Main thread.
void installVoice(const QStringList& files, QWidget* parent);
