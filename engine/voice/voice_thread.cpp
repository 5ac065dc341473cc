#include "voice/voice_thread.h"

#include "model/engine_state.h"
#include "model/private_messages.h"
#include "model/status_codes.h"
#include "platform/clock.h"
#include "platform/dynamic_library.h"
#include "platform/main_window.h"
#include "platform/microphone.h"
#include "platform/paths.h"
#include "voice/phrase_table.h"
#include "voice/speech_library.h"
#include "voice/voice_dispatch.h"
#include "workers/posted_record.h"

#include <memory>
#include <optional>

namespace rotika {

namespace {

constexpr std::uint32_t soundWaitMs = 250; // also how soon a stop or a new table is noticed in silence
constexpr int microphoneRetryWaits = 30;
constexpr std::uint32_t microphoneRetryWaitMs = 100;

/// One run of the voice thread. Owns model and recogniser.
class Listener {
public:
    Listener(const VoiceSettings& chosenSettings, const std::atomic<bool>& stopRequest)
        : settings(chosenSettings), voiceStop(stopRequest) {}
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener() {
        microphone.reset(); // before the recogniser
        freeRecognizer();
        if (model != nullptr)
            guardedModelFree(library, model);
    }

    bool prepare();
    bool awaitMicrophone();
    void listen();

private:
    void setStatus(VoiceStatusCode code) const;
    std::string currentGrammar();
    bool followPhraseTable();
    void freeRecognizer();
    void recognise(std::string_view sound);

    const VoiceSettings& settings;
    const std::atomic<bool>& voiceStop;
    SpeechLibrary library;
    void* model = nullptr;
    void* recognizer = nullptr;
    bool hasRecognizerFaulted = false;
    MicrophoneHandle microphone;
    std::uint32_t seenGeneration = 0;
};

/// An abandoned worker must not overwrite its successor's status.
void Listener::setStatus(VoiceStatusCode code) const {
    if (voiceStop)
        return;
    engineState.voiceStatus = code;
    repaintMainWindow(engineState.mainWindow);
}

void postSkipped(const std::u16string& phrases) {
    postRecord(engineState.mainWindow, MsgVoiceSkipped, std::make_unique<std::u16string>(phrases));
}

/// The generation is read first, so that a rebuild during the build is noticed later.
std::string Listener::currentGrammar() {
    seenGeneration = engineState.phraseGeneration;
    std::u16string skipped;
    std::string grammar = buildGrammar(model, library.findWord, &skipped);
    if (!skipped.empty())
        postSkipped(skipped);
    return grammar;
}

std::u16string modelPath(const std::u16string& model) {
    return isFullPath(model) ? model : programFilePath(model);
}

bool Listener::prepare() {
    setStatus(voiceStatusLoading);
    const LibraryHandle handle = loadVoskLibrary(settings.libraryPath);
    if (handle == nullptr) {
        setStatus(voiceStatusNoLibrary);
        return false;
    }
    if (!bindSpeechLibrary(handle, library)) {
        setStatus(voiceStatusFailed);
        return false;
    }
    if (library.setLogLevel != nullptr)
        library.setLogLevel(-1);
    model = guardedModelNew(library, pathForLibrary(modelPath(settings.model)));
    if (model == nullptr) {
        setStatus(voiceStatusNoModel);
        return false;
    }
    recognizer = guardedRecognizerNew(library, model, currentGrammar());
    if (recognizer == nullptr)
        setStatus(voiceStatusFailed);
    return recognizer != nullptr;
}

bool Listener::awaitMicrophone() {
    while (!voiceStop) {
        microphone = openMicrophone();
        if (microphone != nullptr)
            return !voiceStop;
        if (engineState.voiceStatus != voiceStatusNoMicrophone)
            setStatus(voiceStatusNoMicrophone);
        for (int i = 0; i < microphoneRetryWaits && !voiceStop; ++i)
            sleepMs(microphoneRetryWaitMs);
    }
    return false;
}

/// A recogniser that has faulted is leaked: the fault may have corrupted its memory or left the allocator's
/// lock held, and freeing it would end the process or block the thread.
void Listener::freeRecognizer() {
    if (recognizer != nullptr && !hasRecognizerFaulted)
        guardedRecognizerFree(library, recognizer);
    recognizer = nullptr;
    hasRecognizerFaulted = false;
}

/// False when no recogniser is left.
bool Listener::followPhraseTable() {
    if (engineState.phraseGeneration == seenGeneration)
        return true;
    const std::string grammar = currentGrammar();
    if (guardedSetGrammar(library, recognizer, grammar))
        return true;
    hasRecognizerFaulted = true;
    freeRecognizer();
    recognizer = guardedRecognizerNew(library, model, grammar);
    return recognizer != nullptr;
}

void Listener::recognise(std::string_view sound) {
    const std::int32_t answer = guardedAcceptWaveform(library, recognizer, sound);
    hasRecognizerFaulted |= answer == -1;
    if (answer != 1 || voiceStop)
        return;
    const std::optional<const char*> result = guardedResult(library, recognizer);
    hasRecognizerFaulted |= !result;
    dispatchRecognisedText(recognisedText(result.value_or(nullptr)));
}

void Listener::listen() {
    startMicrophone(*microphone);
    setStatus(voiceStatusListening);
    while (!voiceStop) {
        const std::string_view sound = nextSound(*microphone, soundWaitMs);
        if (voiceStop)
            return;
        if (!followPhraseTable()) {
            setStatus(voiceStatusFailed);
            return;
        }
        if (!sound.empty())
            recognise(sound);
    }
}

} // namespace

void voiceThreadMain(const VoiceSettings& settings, const std::atomic<bool>& voiceStop) noexcept {
    Listener listener(settings, voiceStop);
    if (listener.prepare() && listener.awaitMicrophone())
        listener.listen();
}

} // namespace rotika
