// Stands in for the speech recogniser's library. What "speech_script.txt" beside it may say besides what
// holds for every call: "unknown WORD" for a word that the dictionary lacks. Events, one for each buffer of
// sound:
//
//   say TEXT       this has been heard
//   answer TEXT    the answer is exactly this text; "answer null": there is none
//   fault, abort   the buffer faults, or is too much for the library
//
// Every call is noted in "speech_log.txt" with what it was called with.

#include "double_script.h"

#include <cstdlib>

namespace {

DoubleScript& script = *new DoubleScript("speech", {"say", "answer", "fault", "abort"});
// The sound goes on where it was when a recogniser is replaced.
std::size_t eventIndex = 0;
std::string answer = "null";
void* const handle = &answer; // of everything: nobody looks behind it

} // namespace

DOUBLE_EXPORT void* vosk_model_new(const char* path) {
    return script.begins("model_new", path) ? handle : nullptr;
}

DOUBLE_EXPORT void vosk_model_free(void* /*model*/) {
    script.begins("model_free");
}

DOUBLE_EXPORT void* vosk_recognizer_new_grm(void* /*model*/, float rate, const char* grammar) {
    const std::string details = std::to_string(static_cast<int>(rate)) + " " + grammar;
    return script.begins("recognizer_new_grm", details) ? handle : nullptr;
}

#ifndef WITHOUT_REQUIRED
DOUBLE_EXPORT void vosk_recognizer_set_grm(void* /*recognizer*/, const char* grammar) {
    script.begins("set_grm", grammar);
}
#endif

DOUBLE_EXPORT int vosk_recognizer_accept_waveform(void* /*recognizer*/, const char* /*sound*/, int size) {
    script.begins("accept_waveform", std::to_string(size));
    const DoubleScript::Event event = script.event(eventIndex);
    eventIndex += event.word.empty() ? 0 : 1;
    if (event.word == "fault")
        faultOnPurpose();
    if (event.word == "abort")
        std::abort();
    answer = event.word == "say" ? "{\n  \"text\" : \"" + event.rest + "\"\n}" : event.rest;
    return event.word.empty() ? 0 : 1;
}

DOUBLE_EXPORT const char* vosk_recognizer_result(void* /*recognizer*/) {
    script.begins("result");
    return answer == "null" ? nullptr : answer.c_str();
}

DOUBLE_EXPORT void vosk_recognizer_free(void* /*recognizer*/) {
    script.begins("recognizer_free");
}

#ifndef WITHOUT_OPTIONAL
DOUBLE_EXPORT int vosk_model_find_word(void* /*model*/, const char* word) {
    return script.says("unknown", word) ? -1 : 1;
}
#endif
