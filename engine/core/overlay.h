#pragma once

// The engine's public interface. Nothing outside engine/ may include any other header of the engine.
//
// All functions may be called only on the thread that called OverlayEngineStart (the owner thread), except
// where one says "any thread". The engine has no loop of its own: the owner thread's event loop (Windows
// messages, or GLib's default main context on Linux) drives it.

#include <cstdint>

#ifdef _WIN32
#define OVERLAY_EXPORT extern "C" __declspec(dllexport)
using OverlayChar = wchar_t;
#else
#define OVERLAY_EXPORT extern "C" __attribute__((visibility("default")))
using OverlayChar = char16_t;
#endif

/// Reads the files of the program, creates the windows and registers the toggle key. May block in a warning
/// box when the key is taken. True when the engine has started. A second call does nothing and returns true,
/// also after a stop.
OVERLAY_EXPORT bool OverlayEngineStart();

/// Closes the wheel, stops the workers (waiting at most 2 s for each) and unregisters the toggle key. Meant
/// for the end of the process: afterwards the engine cannot be started and no wheel opens.
OVERLAY_EXPORT void OverlayEngineStop();

/// Reloads config.json, default.json and voice.json. Does not change the registered toggle key.
OVERLAY_EXPORT void OverlayReloadConfig();

/// Activates the wheels of another file until the next reload. `path` is zero-terminated UTF-16, used
/// unchanged; null is rejected. False, with the old wheels kept, when the file has no wheel with a field.
OVERLAY_EXPORT bool OverlayActivateWheelFile(const OverlayChar* path);

/// Shows the wheel, or hides it and restores pointer and focus.
OVERLAY_EXPORT void OverlayToggleWheel();

OVERLAY_EXPORT bool OverlayIsWheelVisible();

/// Polish status texts, zero-terminated UTF-16, owned by the engine and never freed. Any thread.
OVERLAY_EXPORT const OverlayChar* OverlayGazeStatus();
OVERLAY_EXPORT const OverlayChar* OverlayVoiceStatus();

/// Number of phrases that the recogniser listens for. Any thread.
OVERLAY_EXPORT std::int32_t OverlayVoicePhraseCount();

OVERLAY_EXPORT std::int32_t OverlayWheelCount();
