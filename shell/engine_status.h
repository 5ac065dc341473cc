#pragma once

#include <QString>
#include <chrono>

// The engine tells nothing by itself: what the pages show of it they ask for at this pace.
inline constexpr std::chrono::milliseconds statusPollPeriod{1500};

/// The engine's words for its eye tracker, as they stand. First thread.
QString gazeStatusLine();

/// The engine's words for its recogniser, and the number of phrases in force.
QString voiceStatusLine();
