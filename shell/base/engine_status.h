#pragma once

#include <QString>
#include <chrono>

// The engine emits no notifications, so the pages poll it.
inline constexpr std::chrono::milliseconds statusPollPeriod{1500};

/// The engine's status text of the eye tracker. Main thread.
QString gazeStatusLine();

/// The engine's status text of speech recognition, and the number of active phrases. Main thread.
QString voiceStatusLine();
