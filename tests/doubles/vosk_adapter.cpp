// The speech recogniser's real library with the one name that its version 0.3.39 lacks: a change of grammar
// makes a new recogniser inside. "vosk_library.txt" beside the adapter holds the real library's path.

#include <cstdint>
#include <filesystem>
#include <fstream>
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

int ownAddress = 0;

#ifdef _WIN32
std::filesystem::path ownFolder() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ownAddress), &self);
    wchar_t path[1024] = {};
    GetModuleFileNameW(self, path, 1023);
    return std::filesystem::path(path).parent_path();
}

void* find(const char* name, const std::filesystem::path& path) {
    static HMODULE real = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return real == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(real, name));
}
#else
std::filesystem::path ownFolder() {
    Dl_info self{};
    dladdr(&ownAddress, &self);
    return std::filesystem::absolute(self.dli_fname).parent_path();
}

void* find(const char* name, const std::filesystem::path& path) {
    static void* real = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return real == nullptr ? nullptr : dlsym(real, name);
}
#endif

std::filesystem::path realLibrary() {
    std::ifstream stream(ownFolder() / "vosk_library.txt", std::ios::binary);
    std::string line;
    std::getline(stream, line);
    return std::filesystem::path(std::u8string(line.begin(), line.end()));
}

/// The real function. Without the real library nothing here could go on: calling it then ends the process.
template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(find(name, realLibrary()));
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
}

VOSK_NAME int vosk_recognizer_accept_waveform(void* recognizer, const char* sound, int byteCount) {
    static const auto accept = real<int (*)(void*, const char*, int)>("vosk_recognizer_accept_waveform");
    return accept(static_cast<Recognizer*>(recognizer)->inner, sound, byteCount);
}

VOSK_NAME const char* vosk_recognizer_result(void* recognizer) {
    static const auto result = real<const char* (*)(void*)>("vosk_recognizer_result");
    return result(static_cast<Recognizer*>(recognizer)->inner);
}

VOSK_NAME void vosk_recognizer_free(void* recognizer) {
    const std::unique_ptr<Recognizer> full(static_cast<Recognizer*>(recognizer));
    freeInner(full->inner);
}
