// Cost of voice and gaze in the engine, without the recogniser and the tracker themselves.

#include "core/dispatch.h"
#include "gaze/gaze_thread.h"
#include "model/engine_state.h"
#include "target_reporter.h"
#include "voice/phrase_table.h"
#include "voice/voice_dispatch.h"

#include <string>

using namespace rotika;

namespace {

/// `wheelCount` wheels of 24 fields, each with a phrase of its own.
void fillTable(std::size_t wheelCount) {
    engineState.wheels.assign(wheelCount, Wheel{u"Próba", std::vector<WheelAction>(24)});
    std::size_t number = 0;
    for (Wheel& wheel : engineState.wheels) {
        for (WheelAction& action : wheel.actions) {
            const std::string digits = std::to_string(++number);
            action.voice = u"Włącz światło " + std::u16string(digits.begin(), digits.end());
        }
    }
    rebuildPhraseTable();
}

void finalTextToPostedMessage(benchmark::State& state) {
    fillTable(29); // 311 fixed phrases and 696 of fields: a thousand rows
    if (engineState.mainWindow == nullptr)
        engineState.mainWindow = createMainWindow(mainWindowHandlers(nullptr));
    const std::string last = engineState.phraseTable.back().phrase;
    for (auto _ : state)
        dispatchRecognisedText(last);
    state.counters["target_ms"] = 0.02;
}

void rebuildTableOf24Wheels(benchmark::State& state) {
    fillTable(24);
    for (auto _ : state)
        rebuildPhraseTable();
    state.counters["target_ms"] = 1;
}

void grammarOf24WheelsUnchecked(benchmark::State& state) {
    fillTable(24);
    for (auto _ : state) {
        const std::string grammar = buildGrammar(nullptr, nullptr, nullptr);
        benchmark::DoNotOptimize(grammar.data());
    }
    state.counters["target_ms"] = 1;
}

void gazeSampleToSharedMembers(benchmark::State& state) {
    const GazePoint point{0, 1, 0.4F, 0.6F};
    for (auto _ : state)
        onGazePoint(&point, nullptr);
    state.counters["target_ms"] = 0.005;
}

BENCHMARK(finalTextToPostedMessage)->Apply(asSingleRuns);
BENCHMARK(rebuildTableOf24Wheels)->Apply(asSingleRuns);
BENCHMARK(grammarOf24WheelsUnchecked)->Apply(asSingleRuns);
BENCHMARK(gazeSampleToSharedMembers)->Apply(asSingleRuns);

} // namespace
