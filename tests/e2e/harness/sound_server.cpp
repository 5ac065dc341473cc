#include "harness/sound_server.h"

#include "harness/waiting.h"

#include <pulse/simple.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <vector>

namespace e2e {

namespace {

constexpr const char* microphoneName = "room";

/// What espeak-ng writes: one channel of signed 16-bit samples behind a header of fixed length.
struct Speech {
    std::uint32_t sampleRate = 0;
    std::vector<std::int16_t> samples;
};

Speech readSpeech(const std::filesystem::path& file) {
    constexpr std::size_t headerBytes = 44;
    constexpr std::size_t rateOffset = 24;
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), {});
    if (bytes.size() <= headerBytes)
        throw ScenarioError("espeak-ng said nothing");
    Speech speech;
    std::memcpy(&speech.sampleRate, bytes.data() + rateOffset, sizeof speech.sampleRate);
    speech.samples.resize((bytes.size() - headerBytes) / sizeof(std::int16_t));
    std::memcpy(speech.samples.data(), bytes.data() + headerBytes,
                speech.samples.size() * sizeof(std::int16_t));
    return speech;
}

/// Without the silence at its end.
std::span<const std::int16_t> audiblePart(const Speech& speech) {
    constexpr int audible = 200;
    const auto last = std::find_if(speech.samples.rbegin(), speech.samples.rend(),
                                   [](std::int16_t sample) { return std::abs(sample) > audible; });
    return {speech.samples.begin(), last.base()};
}

struct StreamCloser {
    void operator()(pa_simple* stream) const noexcept { pa_simple_free(stream); }
};

/// Returns when the last sample has been played.
void play(const std::string& server, std::uint32_t sampleRate, std::span<const std::int16_t> samples) {
    const pa_sample_spec format{PA_SAMPLE_S16LE, sampleRate, 1};
    // The whole of it lies with the server before it begins: a busy machine must not tear holes into it.
    const auto standard = static_cast<std::uint32_t>(-1);
    const auto all = static_cast<std::uint32_t>(samples.size_bytes());
    const pa_buffer_attr buffering{standard, all, standard, standard, standard};
    const std::unique_ptr<pa_simple, StreamCloser> stream(
        pa_simple_new(server.c_str(), "somebody", PA_STREAM_PLAYBACK, microphoneName, "speech", &format,
                      nullptr, &buffering, nullptr));
    if (stream == nullptr ||
        pa_simple_write(stream.get(), samples.data(), samples.size_bytes(), nullptr) < 0 ||
        pa_simple_drain(stream.get(), nullptr) < 0)
        throw ScenarioError("nobody could speak");
}

} // namespace

SoundServer::SoundServer(const std::filesystem::path& ownFolder, const Environment& variables)
    : folder(ownFolder), surroundings(variables) {
    const std::filesystem::path socket = folder / "sound";
    server = Process({{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                       "module-native-protocol-unix auth-anonymous=1 socket=" + socket.string()},
                      variables,
                      folder,
                      folder / "sound-server.log"});
    surroundings["PULSE_SERVER"] = "unix:" + socket.string();
    // Its socket stands a moment before it listens.
    waitFor("the sound server", [&] {
        return runToEnd({{"pactl", "info"}, surroundings, folder, folder / "sound-control.log"}) == 0;
    });
}

void SoundServer::control(const std::vector<std::string>& words) const {
    std::vector<std::string> all{"pactl"};
    all.insert(all.end(), words.begin(), words.end());
    if (runToEnd({all, surroundings, folder, folder / "sound-control.log"}) != 0)
        throw ScenarioError("the sound server did not obey " + words.front());
}

void SoundServer::plugMicrophoneIn() {
    control({"load-module", "module-null-sink", std::string("sink_name=") + microphoneName, "rate=16000",
             "channels=1"});
    // What a sink plays is nobody's microphone by itself.
    control({"load-module", "module-remap-source", std::string("master=") + microphoneName + ".monitor"});
    silence = Process({{"pacat", "--latency-msec=30", "--raw", "--rate=16000", "--channels=1", "/dev/zero"},
                       surroundings,
                       folder,
                       folder / "silence.log"});
}

void SoundServer::unplugMicrophone() {
    silence.end();
    control({"unload-module", "module-null-sink"}); // the microphone goes with it
}

std::chrono::steady_clock::time_point SoundServer::say(const std::string& text, const std::string& voice) {
    const std::filesystem::path file = folder / "said.wav";
    if (runToEnd({{"espeak-ng", "-v", voice, "-w", file, text}, surroundings, folder, {}}) != 0)
        throw ScenarioError("espeak-ng could not say " + text);
    const Speech speech = readSpeech(file);
    play(surroundings.at("PULSE_SERVER"), speech.sampleRate, audiblePart(speech));
    return std::chrono::steady_clock::now();
}

void SoundServer::kill() {
    server.send(SIGKILL);
    server.statusWithin(generousLimit);
}

} // namespace e2e
