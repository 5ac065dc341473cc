// Stands in for the speech recogniser's library. What "speech_script.txt" beside it may say:
//
//   model null         no model can be loaded
//   model hang         a model takes as long to load as this line stands there
//   recognizer null    no recogniser can be made of any grammar
//   recognizer fault   the attempt to make one faults
//   set_grm fault      every change of grammar faults
//   accept hang        a buffer takes as long as this line stands there
//   unknown WORD       the dictionary lacks it
//
// Events, one for each buffer of sound:
//
//   say TEXT           this has been heard
//   answer TEXT        the answer is exactly this text; "answer null": there is none
//   fault              the buffer faults
//   wait N             N buffers of nothing
//
// Every call is noted in "speech_log.txt" with what it was called with.

#include "double_script.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#define VOSK_NAME extern "C" __declspec(dllexport)
#else
#define VOSK_NAME extern "C" __attribute__((visibility("default")))
#endif

namespace {

DoubleScript& script() {
    static DoubleScript& only = *new DoubleScript("speech", {"say", "answer", "fault", "wait"});
    return only;
}

struct Model {};

struct Recognizer {
    std::string answer;
    bool hasAnswer = false;
};

// The sound goes on where it was when a recogniser is replaced.
std::size_t eventIndex = 0;
int buffersWaited = 0;

void waitWhile(const char* line) {
    while (script().says(line))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

/// Whether the event is over.
bool happens(const DoubleScript::Event& event, Recognizer& recognizer) {
    if (event.word == "wait")
        return ++buffersWaited >= std::stoi(event.rest);
    if (event.word == "say")
        recognizer.answer = "{\n  \"text\" : \"" + event.rest + "\"\n}";
    else
        recognizer.answer = event.rest;
    recognizer.hasAnswer = recognizer.answer != "null";
    return true;
}

} // namespace

VOSK_NAME void* vosk_model_new(const char* path) {
    script().note(std::string("model_new ") + path);
    waitWhile("model hang");
    return script().says("model null") ? nullptr : new Model;
}

VOSK_NAME void vosk_model_free(void* model) {
    script().note("model_free");
    delete static_cast<Model*>(model);
}

VOSK_NAME void* vosk_recognizer_new_grm(void* model, float rate, const char* grammar) {
    script().note("recognizer_new_grm " + std::to_string(static_cast<int>(rate)) + " " + grammar);
    if (model == nullptr || script().says("recognizer fault"))
        faultOnPurpose();
    return script().says("recognizer null") ? nullptr : new Recognizer;
}

#ifndef WITHOUT_REQUIRED_NAME
VOSK_NAME void vosk_recognizer_set_grm(void* /*recognizer*/, const char* grammar) {
    script().note(std::string("set_grm ") + grammar);
    if (script().says("set_grm fault"))
        faultOnPurpose();
}
#endif

VOSK_NAME int vosk_recognizer_accept_waveform(void* recognizer, const char* /*sound*/, int byteCount) {
    script().note("accept_waveform " + std::to_string(byteCount));
    waitWhile("accept hang");
    const DoubleScript::Event event = script().event(eventIndex);
    if (event.word.empty())
        return 0;
    if (event.word == "fault") {
        ++eventIndex;
        faultOnPurpose();
    }
    if (!happens(event, *static_cast<Recognizer*>(recognizer)))
        return 0;
    buffersWaited = 0;
    ++eventIndex;
    return event.word == "wait" ? 0 : 1;
}

VOSK_NAME const char* vosk_recognizer_result(void* recognizer) {
    script().note("result");
    const Recognizer& full = *static_cast<Recognizer*>(recognizer);
    return full.hasAnswer ? full.answer.c_str() : nullptr;
}

VOSK_NAME void vosk_recognizer_free(void* recognizer) {
    script().note("recognizer_free");
    delete static_cast<Recognizer*>(recognizer);
}

#ifndef WITHOUT_OPTIONAL_NAMES
VOSK_NAME void vosk_set_log_level(int level) {
    script().note("set_log_level " + std::to_string(level));
}

VOSK_NAME int vosk_model_find_word(void* /*model*/, const char* word) {
    static const std::vector<std::string>& unknown = *new std::vector<std::string>(script().allOf("unknown"));
    return std::find(unknown.begin(), unknown.end(), word) != unknown.end() ? -1 : 1;
}
#endif
