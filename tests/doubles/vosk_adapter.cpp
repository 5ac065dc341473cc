// Wraps the speech recogniser's real library and adds the one function that its version 0.3.39 lacks: a
// change of grammar creates a new recogniser inside. "adapter_script.txt" names the real library: "library
// PATH". "adapter_log.txt" gets "listening" at the first sound, and "result" with each result.

#include "double_script.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

const DoubleScript& script = *new DoubleScript("adapter");

void* find(const char* name) {
    static const std::string path = script.lines({"library"}).at(0).rest;
#ifdef _WIN32
    static HMODULE library = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return reinterpret_cast<void*>(GetProcAddress(library, name));
#else
    static void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return dlsym(library, name);
#endif
}

/// Calls the real function. Crashes without the real library, since no test could continue.
template <typename Result, typename... Arguments>
Result real(const char* name, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(find(name))(arguments...);
}

// The program uses one model and one recogniser at a time.
void* modelInUse = nullptr;
float rateInUse = 0;
void* inner = nullptr;

} // namespace

extern "C" void* vosk_model_new(const char* path) {
    return modelInUse = real<void*>("vosk_model_new", path);
}

extern "C" void vosk_model_free(void* model) {
    real<void>("vosk_model_free", model);
}

extern "C" int vosk_model_find_word(void* model, const char* word) {
    return real<int>("vosk_model_find_word", model, word);
}

extern "C" void* vosk_recognizer_new_grm(void* model, float rate, const char* grammar) {
    rateInUse = rate;
    return inner = real<void*>("vosk_recognizer_new_grm", model, rate, grammar);
}

extern "C" void vosk_recognizer_set_grm(void* /*recognizer*/, const char* grammar) {
    real<void>("vosk_recognizer_free", inner);
    inner = real<void*>("vosk_recognizer_new_grm", modelInUse, rateInUse, grammar);
}

extern "C" int vosk_recognizer_accept_waveform(void* /*recognizer*/, const char* sound, int size) {
    [[maybe_unused]] static const bool isNoted = script.begins("listening");
    return real<int>("vosk_recognizer_accept_waveform", inner, sound, size);
}

extern "C" const char* vosk_recognizer_result(void* /*recognizer*/) {
    const char* answer = real<const char*>("vosk_recognizer_result", inner);
    std::string line = answer == nullptr ? "" : answer; // of several lines
    std::ranges::replace(line, '\n', ' ');
    script.note("result " + line);
    return answer;
}

extern "C" void vosk_recognizer_free(void* /*recognizer*/) {
    real<void>("vosk_recognizer_free", inner);
}
