#include "voice/speech_library.h"

#include "platform/device_libraries.h"
#include "platform/fault_guard.h"
#include "platform/microphone.h"
#include "workers/library_binding.h"

namespace rotika {

namespace {

/// Runs any callable under the guard, which takes plain functions only.
template <typename Call>
bool survives(Call call) {
    return runGuarded([](void* context) { (*static_cast<Call*>(context))(); }, &call);
}

} // namespace

LibraryHandle loadVoskLibrary(const std::u16string& configuredPath) {
    return loadOptionalLibrary(configuredPath, speechLibraryName(), LibrarySearch::ownFolderFirst);
}

bool bindSpeechLibrary(LibraryHandle library, SpeechLibrary& functions) {
    bindFunction(library, "vosk_set_log_level", functions.setLogLevel);
    bindFunction(library, "vosk_model_find_word", functions.findWord);
    return bindFunction(library, "vosk_model_new", functions.modelNew) &&
           bindFunction(library, "vosk_model_free", functions.modelFree) &&
           bindFunction(library, "vosk_recognizer_new_grm", functions.recognizerNewGrm) &&
           bindFunction(library, "vosk_recognizer_set_grm", functions.recognizerSetGrm) &&
           bindFunction(library, "vosk_recognizer_accept_waveform", functions.acceptWaveform) &&
           bindFunction(library, "vosk_recognizer_result", functions.result) &&
           bindFunction(library, "vosk_recognizer_free", functions.recognizerFree);
}

void* guardedModelNew(const SpeechLibrary& functions, const std::string& path) {
    void* model = nullptr;
    return survives([&] { model = functions.modelNew(path.c_str()); }) ? model : nullptr;
}

void guardedModelFree(const SpeechLibrary& functions, void* model) {
    survives([&] { functions.modelFree(model); });
}

std::int32_t guardedAcceptWaveform(const SpeechLibrary& functions, void* recognizer, std::string_view sound) {
    std::int32_t answer = -1;
    const bool survived = survives([&] {
        answer = functions.acceptWaveform(recognizer, sound.data(), static_cast<std::int32_t>(sound.size()));
    });
    return survived ? answer : -1;
}

void* guardedRecognizerNew(const SpeechLibrary& functions, void* model, const std::string& grammar) {
    void* recognizer = nullptr;
    const bool survived = survives([&] {
        recognizer = functions.recognizerNewGrm(model, static_cast<float>(soundSampleRate), grammar.c_str());
    });
    return survived ? recognizer : nullptr;
}

bool guardedSetGrammar(const SpeechLibrary& functions, void* recognizer, const std::string& grammar) {
    return survives([&] { functions.recognizerSetGrm(recognizer, grammar.c_str()); });
}

std::optional<const char*> guardedResult(const SpeechLibrary& functions, void* recognizer) {
    const char* answer = nullptr;
    const bool survived = survives([&] { answer = functions.result(recognizer); });
    return survived ? std::optional(answer) : std::nullopt;
}

void guardedRecognizerFree(const SpeechLibrary& functions, void* recognizer) {
    survives([&] { functions.recognizerFree(recognizer); });
}

std::string_view recognisedText(const char* answer) {
    if (answer == nullptr)
        return {};
    const std::string_view json = answer;
    constexpr std::string_view key = "\"text\"";
    std::size_t at = json.find(key);
    if (at == std::string_view::npos)
        return {};
    at = json.find(':', at + key.size());
    if (at == std::string_view::npos)
        return {};
    const std::size_t opening = json.find('"', at);
    if (opening == std::string_view::npos)
        return {};
    const std::size_t closing = json.find('"', opening + 1);
    if (closing == std::string_view::npos)
        return {};
    return json.substr(opening + 1, closing - opening - 1);
}

} // namespace rotika
