#pragma once

#include "platform/dynamic_library.h"
#include "voice/phrase_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rotika {

/// The speech library's functions, bound by name. Models and recognisers are opaque pointers.
struct SpeechLibrary {
    void (*setLogLevel)(std::int32_t level) = nullptr; // optional
    void* (*modelNew)(const char* path) = nullptr;     // null if it cannot be loaded
    void (*modelFree)(void* model) = nullptr;
    void* (*recognizerNewGrm)(void* model, float sampleRate, const char* grammar) = nullptr;
    void (*recognizerSetGrm)(void* recognizer, const char* grammar) = nullptr;
    std::int32_t (*acceptWaveform)(void* recognizer, const char* sound, std::int32_t byteCount) = nullptr;
    const char* (*result)(void* recognizer) = nullptr; // the recogniser owns the text
    void (*recognizerFree)(void* recognizer) = nullptr;
    FindWordFunction findWord = nullptr; // optional; without it phrases are not checked
};

/// From the configured path, else from the program's folder, else from the system's search path; null if not
/// found.
LibraryHandle loadVoskLibrary(const std::u16string& configuredPath);

/// False when a required function is missing.
bool bindSpeechLibrary(LibraryHandle library, SpeechLibrary& functions);

// Calls that survive a fault inside the library.

/// Null when the model cannot be loaded, or after a fault.
void* guardedModelNew(const SpeechLibrary& functions, const std::string& path);
void guardedModelFree(const SpeechLibrary& functions, void* model);
/// 1 when a final result is ready; -1 after a fault.
std::int32_t guardedAcceptWaveform(const SpeechLibrary& functions, void* recognizer, std::string_view sound);
/// Null when the library refuses the grammar, or after a fault.
void* guardedRecognizerNew(const SpeechLibrary& functions, void* model, const std::string& grammar);
/// False after a fault.
bool guardedSetGrammar(const SpeechLibrary& functions, void* recognizer, const std::string& grammar);
/// The recogniser's answer, valid until its next call, or null if it has none; nullopt after a fault.
std::optional<const char*> guardedResult(const SpeechLibrary& functions, void* recognizer);
void guardedRecognizerFree(const SpeechLibrary& functions, void* recognizer);

/// The text in the recogniser's answer, {"text" : "..."}: a view into it, empty when the answer is null or of
/// any other form.
std::string_view recognisedText(const char* answer);

} // namespace rotika
