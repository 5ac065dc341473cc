// A double of the speech recogniser's library. "speech_script.txt" may contain, besides the words for every
// call, one line for each buffer of sound:
//
//   say TEXT       the recogniser has understood this text
//   answer TEXT    the result is exactly this text; "answer null": a null pointer
//   fault          the buffer causes a fault
//
// All calls are logged with their arguments in "speech_log.txt", except look-ups of single words.

#include "double_script.h"

namespace {

const DoubleScript& script = *new DoubleScript("speech");
// Global, so that a new recogniser continues with the next buffer.
std::size_t chunkCount = 0;
std::string answer = "null";
void* const handle = &answer; // for every object; never dereferenced

} // namespace

extern "C" void* vosk_model_new(const char* path) {
    return script.begins("model_new", path) ? handle : nullptr;
}

extern "C" void vosk_model_free(void* /*model*/) {
    script.begins("model_free");
}

extern "C" void* vosk_recognizer_new_grm(void* /*model*/, float rate, const char* grammar) {
    const std::string details = std::to_string(static_cast<int>(rate)) + " " + grammar;
    return script.begins("recognizer_new_grm", details) ? handle : nullptr;
}

#ifndef WITHOUT_REQUIRED
extern "C" void vosk_recognizer_set_grm(void* /*recognizer*/, const char* grammar) {
    script.begins("set_grm", grammar);
}
#endif

extern "C" int vosk_recognizer_accept_waveform(void* /*recognizer*/, const char* /*sound*/, int size) {
    script.begins("accept_waveform", std::to_string(size));
    const std::vector<DoubleScript::Line> sound = script.lines({"say", "answer", "fault"});
    if (chunkCount >= sound.size())
        return 0;
    const auto& [word, text] = sound[chunkCount++];
    if (word == "fault")
        faultOnPurpose();
    answer = word == "say" ? "{\n  \"text\" : \"" + text + "\"\n}" : text;
    return 1;
}

extern "C" const char* vosk_recognizer_result(void* /*recognizer*/) {
    script.begins("result");
    return answer == "null" ? nullptr : answer.c_str();
}

extern "C" void vosk_recognizer_free(void* /*recognizer*/) {
    script.begins("recognizer_free");
}

#ifndef WITHOUT_OPTIONAL
extern "C" void vosk_set_log_level(int /*level*/) {}

extern "C" int vosk_model_find_word(void* /*model*/, const char* /*word*/) {
    return 1;
}
#endif
