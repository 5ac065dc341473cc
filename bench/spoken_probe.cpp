// The whole program on a private screen, spoken to: how much of it is acted on rightly, and how soon. The
// recogniser is the real one; the speakers are espeak-ng's.

#include "device_double.h"
#include "harness/waiting.h"
#include "probe.h"
#include "target_reporter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace e2e;
using Clock = std::chrono::steady_clock;

// None of them has taught the model.
constexpr std::array<const char*, 5> voices{"pl", "pl+m5", "pl+m8", "pl+f4", "pl+Alex"};

// The phrases of functions; each presses a letter of its own.
constexpr std::array<const char*, 20> phrases{"leczenie",
                                              "mapa",
                                              "tarcza",
                                              "zapisz",
                                              "przełącz okno",
                                              "mapa jeden",
                                              "mapa dwa",
                                              "mapa trzy",
                                              "tarcza pięć",
                                              "tarcza sześć",
                                              "tarcza dziewięć",
                                              "tarcza dziesięć",
                                              "okno czternaście",
                                              "okno dziewiętnaście",
                                              "zapisz dwadzieścia jeden",
                                              "zapisz trzydzieści dwa",
                                              "zapisz pięćdziesiąt sześć",
                                              "leczenie sześćdziesiąt pięć",
                                              "leczenie dziewięćdziesiąt osiem",
                                              "następne okno"};

constexpr std::array<const char*, 20> foreignWords{"dzień dobry",     "dziękuję bardzo", "gdzie jest dworzec",
                                                   "kolorowy zeszyt", "poproszę kawę",   "która godzina",
                                                   "samochód",        "zielone drzewo",  "wieczorem pada",
                                                   "stary rower",     "kolega śpi",      "jutro pojadę",
                                                   "pokój",           "kilka",           "trzeba",
                                                   "siatkówka",       "element",         "klinika",
                                                   "okolica",         "praca domowa"};

constexpr int shownTimes = 20;
// What the recogniser itself takes, fed with the same sound from a file: from 720 ms to this, by where the
// end of the speech falls in the blocks of frames that it works in.
constexpr double answerTargetMs = 910;
constexpr double wheelTargetMs = 20;

double msBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

void report(const char* what, std::vector<double> values, double target) {
    std::sort(values.begin(), values.end());
    printFigure(what, values[values.size() / 2], values.back(), target, "ms");
}

class Probe {
public:
    Probe()
        : stage({.sound = Sound::microphone}), recogniser(stage, "libvosk_adapter", "adapter", "adapter") {
        const std::filesystem::path speech = testArguments().speech;
        recogniser.write("library " +
                         stage.target->pathText(speech / "runtime" / stage.target->runtimeFolder() /
                                                stage.target->libraryFile("libvosk")));
        std::string functions;
        for (std::size_t i = 0; i < phrases.size(); ++i) {
            functions += std::string(i == 0 ? "" : ", ") +
                         "{ \"name\": \"F\", \"voice\": " + jsonText(phrases[i]) + ", \"key\": \"" +
                         keyOf(i) + "\" }";
        }
        stage.writeFile("voice.json", "{ \"actions\": [" + functions + "] }");
        stage.writeFile("config.json",
                        deviceSettings(true, false,
                                       recogniser.setting("voiceDllPath") + ", \"voiceModel\": " +
                                           jsonText(stage.target->pathText(speech / "model"))));
        stage.startAll();
        recogniser.waitForCall("listening");
        stage.recording.mark();
    }

    void countPhrases() {
        int failures = 0;
        for (const char* voice : voices) {
            for (std::size_t i = 0; i < phrases.size(); ++i) {
                speak(phrases[i], voice);
                const std::vector<std::string> wanted{"key-down " + keyOf(i), "key-up " + keyOf(i)};
                const bool isRight =
                    holdsWithin(actLimit, [&] { return stage.recording.pressTexts() == wanted; });
                if (!isRight)
                    std::printf("  %s, %s: %s\n", phrases[i], voice, recogniser.log().back().c_str());
                failures += isRight ? 0 : 1;
                stage.recording.mark();
            }
        }
        printFigure("phrases of 100 that were not acted on rightly", failures, failures, 3, "  ");
    }

    void countForeignWords() {
        int acted = 0;
        for (const char* voice : {voices[0], voices[3]}) {
            for (const char* text : foreignWords) {
                speak(text, voice);
                const bool didSomething = holdsWithin(
                    actLimit, [&] { return !stage.recording.pressTexts().empty() || stage.wheelIsOpen(); });
                if (didSomething)
                    std::printf("  %s, %s: %s\n", text, voice, recogniser.log().back().c_str());
                acted += didSomething ? 1 : 0;
                stage.recording.mark();
            }
        }
        printFigure("foreign utterances of 40 that were acted on", acted, acted, 0, "  ");
        if (acted > 0)
            std::printf("  MISSED: nothing should have come of them\n");
    }

    void measureWheel() {
        std::vector<double> answers;
        std::vector<double> wheels;
        std::vector<double> wholes;
        for (int i = 0; i < shownTimes; ++i) {
            const Clock::time_point ended = stage.screen.sound().say("pokaż koło");
            const std::size_t before = recogniser.count("heard"); // it answers to a long silence too
            waitFor("the recogniser", [&] { return recogniser.count("heard") > before; });
            const Clock::time_point answered = Clock::now();
            waitFor("the wheel", [&] { return stage.wheelIsOpen(); });
            answers.push_back(msBetween(ended, answered));
            wheels.push_back(msBetween(answered, Clock::now()));
            wholes.push_back(msBetween(ended, Clock::now()));
            stage.toggle();
            stage.waitUntilWheelIsClosed();
        }
        report("end of \"pokaż koło\" to the recogniser's answer", answers, answerTargetMs);
        report("the recogniser's answer to the wheel", wheels, wheelTargetMs);
        report("end of \"pokaż koło\" to the wheel", wholes, answerTargetMs + wheelTargetMs);
    }

private:
    /// An act follows the recogniser's answer within 0.1 s.
    static constexpr std::chrono::milliseconds actLimit{500};

    static std::string keyOf(std::size_t phrase) { return std::string(1, static_cast<char>('a' + phrase)); }

    void speak(const char* text, const char* voice) {
        stage.screen.sound().say(text, voice);
        recogniser.waitForCall("heard", recogniser.count("heard") + 1);
    }

    Stage stage;
    DeviceDouble recogniser;
};

} // namespace

int main(int argc, char** argv) {
    return runProbe(argc, argv, [] {
        Probe probe;
        probe.measureWheel();
        probe.countPhrases();
        probe.countForeignWords();
    });
}
