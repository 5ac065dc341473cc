// The voice thread's own cost for each buffer of sound: on the simulated desktop, with a recogniser that does
// nothing, so that only the loop is measured.

#include "model/engine_state.h"
#include "target_reporter.h"
#include "voice/phrase_table.h"
#include "voice/voice_thread.h"
#include "workers/worker_thread.h"

#include "platform/simulated/simulated_desktop.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>

using namespace rotika;

namespace {

std::atomic<long> allocations = 0;
thread_local bool isCounting = false;

constexpr int bufferCount = 10'000;

template <typename Function>
void* exported(Function* function) {
    return reinterpret_cast<void*>(function);
}

std::int32_t acceptSilently(void*, const char*, std::int32_t) {
    isCounting = true; // from the first buffer on, in this thread only
    return 0;
}

SimulatedLibrary emptyRecogniser() {
    static int object = 0;
    return {{{"vosk_model_new", exported(+[](const char*) { return static_cast<void*>(&object); })},
             {"vosk_model_free", exported(+[](void*) {})},
             {"vosk_recognizer_new_grm",
              exported(+[](void*, float, const char*) { return static_cast<void*>(&object); })},
             {"vosk_recognizer_set_grm", exported(+[](void*, const char*) {})},
             {"vosk_recognizer_accept_waveform", exported(acceptSilently)},
             {"vosk_recognizer_result", exported(+[](void*) { return static_cast<const char*>(nullptr); })},
             {"vosk_recognizer_free", exported(+[](void*) {})}}};
}

} // namespace

void* operator new(std::size_t size) {
    if (isCounting)
        ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

int main() {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.libraries[u"simulated-speech"] = emptyRecogniser();
    engineState.mainWindow = desktop.addProgram("main");
    rebuildPhraseTable();
    if (!startWorker(engineState.voiceThread, engineState.voiceStop,
                     [](const std::atomic<bool>& stop) { voiceThreadMain({}, stop); }))
        return 1;
    desktop.advanceBy(1000);
    const auto start = std::chrono::steady_clock::now();
    desktop.advanceBy(bufferCount * 100);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    const long made = allocations;
    stopWorker(engineState.voiceThread, engineState.voiceStop, 1000);
    printFigureHead();
    const double each = took.count() / bufferCount;
    printFigure("voice thread for each buffer, the test's clock included", each, each, 0.1, "ms");
    const double madeEach = static_cast<double>(made) / bufferCount;
    printFigure("allocations for each buffer", madeEach, madeEach, 0.1, "  ");
    return 0;
}
