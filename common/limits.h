#pragma once

// Ranges and defaults that the reader of the files and the editors must agree on.

inline constexpr int maxFieldCount = 24; // of one wheel
inline constexpr int maxClickCount = 100;
inline constexpr int maxHoldMs = 60'000;

// Between one step and the next.
inline constexpr int maxDelayMs = 2000;
inline constexpr int defaultDelayMs = 30;

// How long a gaze rests on a field before it is chosen.
inline constexpr int maxGazeDwellMs = 10'000;
inline constexpr int defaultGazeDwellMs = 900;
