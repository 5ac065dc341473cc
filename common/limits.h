#pragma once

// Ranges and defaults shared by the file reader and the editors.

inline constexpr int maxFieldCount = 24; // per wheel
inline constexpr int maxClickCount = 100;
inline constexpr int maxHoldMs = 60'000;

// Pause between steps.
inline constexpr int maxDelayMs = 2000;
inline constexpr int defaultDelayMs = 30;

// How long the gaze must stay on a field to select it.
inline constexpr int maxGazeDwellMs = 10'000;
inline constexpr int defaultGazeDwellMs = 900;
