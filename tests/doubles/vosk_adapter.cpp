// The speech recogniser's real library with the one name that its version 0.3.39 lacks: a change of grammar
// makes a new recogniser inside. "adapter_script.txt" beside the adapter names the real one: "library PATH".
// "adapter_log.txt" gets "listening" with the first sound, "grammar" with each change of grammar, and "heard"
// with each answer.

#include "double_script.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>

#ifdef _WIN32
#include <windows.h>
#define VOSK_NAME extern "C" __declspec(dllexport)
#else
#include <dlfcn.h>
#define VOSK_NAME extern "C" __attribute__((visibility("default")))
#endif

namespace {

DoubleScript& script() {
    static DoubleScript& only = *new DoubleScript("adapter", {});
    return only;
}

std::filesystem::path realLibrary() {
    const std::string path = script().allOf("library").at(0);
    return std::filesystem::path(std::u8string(path.begin(), path.end()));
}

void* find(const char* name) {
#ifdef _WIN32
    static HMODULE library = LoadLibraryExW(realLibrary().c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, name));
#else
    static void* library = dlopen(realLibrary().c_str(), RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr : dlsym(library, name);
#endif
}

/// The real function. Without the real library nothing here could go on: calling it then ends the process.
template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(find(name));
}

using NewRecognizer = void* (*)(void* model, float rate, const char* grammar);
using Free = void (*)(void* object);

struct Recognizer {
    void* model = nullptr;
    float rate = 0;
    void* inner = nullptr;
};

void* makeInner(void* model, float rate, const char* grammar) {
    static const auto make = real<NewRecognizer>("vosk_recognizer_new_grm");
    return make(model, rate, grammar);
}

void freeInner(void* inner) {
    static const auto release = real<Free>("vosk_recognizer_free");
    release(inner);
}

} // namespace

VOSK_NAME void vosk_set_log_level(int level) {
    real<void (*)(int)>("vosk_set_log_level")(level);
}

VOSK_NAME void* vosk_model_new(const char* path) {
    return real<void* (*)(const char*)>("vosk_model_new")(path);
}

VOSK_NAME void vosk_model_free(void* model) {
    real<Free>("vosk_model_free")(model);
}

VOSK_NAME int vosk_model_find_word(void* model, const char* word) {
    static const auto findWord = real<int (*)(void*, const char*)>("vosk_model_find_word");
    return findWord(model, word);
}

VOSK_NAME void* vosk_recognizer_new_grm(void* model, float rate, const char* grammar) {
    void* inner = makeInner(model, rate, grammar);
    return inner == nullptr ? nullptr : new Recognizer{model, rate, inner};
}

VOSK_NAME void vosk_recognizer_set_grm(void* recognizer, const char* grammar) {
    Recognizer& full = *static_cast<Recognizer*>(recognizer);
    void* inner = makeInner(full.model, full.rate, grammar);
    if (inner == nullptr)
        return; // the old grammar stays in force
    freeInner(full.inner);
    full.inner = inner;
    script().note("grammar");
}

VOSK_NAME int vosk_recognizer_accept_waveform(void* recognizer, const char* sound, int byteCount) {
    static std::atomic<bool> isFirst = true;
    if (isFirst.exchange(false))
        script().note("listening");
    static const auto accept = real<int (*)(void*, const char*, int)>("vosk_recognizer_accept_waveform");
    return accept(static_cast<Recognizer*>(recognizer)->inner, sound, byteCount);
}

VOSK_NAME const char* vosk_recognizer_result(void* recognizer) {
    static const auto result = real<const char* (*)(void*)>("vosk_recognizer_result");
    const char* answer = result(static_cast<Recognizer*>(recognizer)->inner);
    std::string line = answer == nullptr ? "" : answer; // of several lines
    std::replace(line.begin(), line.end(), '\n', ' ');
    script().note("heard " + line);
    return answer;
}

VOSK_NAME void vosk_recognizer_free(void* recognizer) {
    const std::unique_ptr<Recognizer> full(static_cast<Recognizer*>(recognizer));
    freeInner(full->inner);
}
