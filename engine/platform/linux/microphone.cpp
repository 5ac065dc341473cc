#include "platform/microphone.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

namespace rotika {

// Uses the server's asynchronous interface; the listening thread itself runs the main loop while it waits, so
// there is no other thread and no lock. A lost device is also replaced inside these waits.
//
// Without a microphone the server offers the monitor of the speakers, and it moves streams of an unplugged
// microphone there. Monitors are not used: the stream stays paused until its source is known, and nothing is
// read from it between a move and the server's answer.

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto openingLimit = std::chrono::milliseconds(1500);
constexpr auto retryPause = std::chrono::seconds(3); // also the limit of one attempt

struct LoopCloser {
    void operator()(pa_mainloop* loop) const noexcept { pa_mainloop_free(loop); }
};
struct ContextCloser {
    void operator()(pa_context* context) const noexcept {
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
struct StreamCloser {
    void operator()(pa_stream* stream) const noexcept {
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
};

constexpr std::size_t soundLimitBytes = maxSoundChunks * soundChunkBytes;

enum class Source { unknown, requested, microphone, unwanted };

} // namespace

struct Microphone {
    std::unique_ptr<pa_mainloop, LoopCloser> loop{pa_mainloop_new()};
    std::unique_ptr<pa_context, ContextCloser> context;
    std::unique_ptr<pa_stream, StreamCloser> stream;
    Source source = Source::unknown; // of the stream
    bool isDefaultRequested = false; // by name
    std::string sound;               // soundLimitBytes at most, the oldest first
    bool isOldestChunkReturned = false;
    bool isStarted = false;
    Clock::time_point nextTry{}; // when a connection without a microphone is started over
};

namespace {

bool isContextGood(const Microphone& microphone) {
    return microphone.context && PA_CONTEXT_IS_GOOD(pa_context_get_state(microphone.context.get()));
}

bool isContextReady(const Microphone& microphone) {
    return microphone.context && pa_context_get_state(microphone.context.get()) == PA_CONTEXT_READY;
}

bool isStreamReady(const Microphone& microphone) {
    return microphone.stream && pa_stream_get_state(microphone.stream.get()) == PA_STREAM_READY;
}

bool isConnected(const Microphone& microphone) {
    return isStreamReady(microphone) && microphone.source == Source::microphone;
}

/// From the library's own environment variable; empty if it is not set.
std::string_view sourceNamedByUser() {
    const char* const name = std::getenv("PULSE_SOURCE");
    return name != nullptr ? name : "";
}

bool isNamedByUser(const pa_source_info& source) {
    const std::string_view name = sourceNamedByUser();
    return name == source.name || name == std::to_string(source.index);
}

/// Whether the default source can still be requested by name. The server may remember another one for this
/// program, for example a monitor that the user once chose.
bool canRequestDefault(const Microphone& microphone) {
    return isContextReady(microphone) && microphone.source == Source::unwanted &&
           !microphone.isDefaultRequested && sourceNamedByUser().empty();
}

/// Whether this connection can no longer lead to a microphone.
bool hasFailed(const Microphone& microphone) {
    const bool isStreamBad =
        microphone.stream && !PA_STREAM_IS_GOOD(pa_stream_get_state(microphone.stream.get()));
    const bool isUnwanted = microphone.source == Source::unwanted && !canRequestDefault(microphone);
    return !isContextGood(microphone) || isStreamBad || isUnwanted;
}

void releaseOperation(pa_operation* operation) {
    if (operation != nullptr) {
        pa_operation_unref(operation);
    }
}

void resumeStream(Microphone& microphone) {
    releaseOperation(pa_stream_cork(microphone.stream.get(), 0, nullptr, nullptr));
}

/// In both callbacks `info` is null at the end of a list. An answer that arrives after a move, or for an
/// earlier stream, is ignored because `source` is no longer requested.
void onSourceInfo(pa_context*, const pa_source_info* info, int endOfList, void* context) {
    Microphone& microphone = *static_cast<Microphone*>(context);
    if (microphone.source != Source::requested || endOfList > 0) {
        return;
    }
    const bool isWanted =
        info != nullptr && (info->monitor_of_sink == PA_INVALID_INDEX || isNamedByUser(*info));
    microphone.source = isWanted ? Source::microphone : Source::unwanted;
    if (isConnected(microphone) && microphone.isStarted) {
        resumeStream(microphone);
    }
}

void onStreamInfo(pa_context* server, const pa_source_output_info* info, int endOfList, void* context) {
    Microphone& microphone = *static_cast<Microphone*>(context);
    if (microphone.source != Source::requested || endOfList > 0) {
        return;
    }
    if (info == nullptr) {
        microphone.source = Source::unwanted;
    } else {
        releaseOperation(pa_context_get_source_info_by_index(server, info->source, onSourceInfo, context));
    }
}

/// The server may deliver the former source's last sound after the move. A stream that was connected to an
/// unknown source or to a monitor is therefore replaced by a new one.
void onStreamMoved(pa_stream*, void* context) {
    Microphone& microphone = *static_cast<Microphone*>(context);
    const bool wasMicrophone = microphone.source == Source::microphone;
    microphone.source = wasMicrophone ? Source::unknown : Source::unwanted;
    microphone.isDefaultRequested = false;
    microphone.nextTry = Clock::now() + retryPause;
}

void connectToServer(Microphone& microphone) {
    microphone.stream.reset();
    microphone.source = Source::unknown;
    microphone.isDefaultRequested = false;
    microphone.context.reset(pa_context_new(pa_mainloop_get_api(microphone.loop.get()), "Rotika"));
    if (microphone.context) {
        // Starting a server would block this thread without a limit.
        pa_context_connect(microphone.context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    }
}

void connectToDevice(Microphone& microphone) {
    microphone.source = Source::unknown;
    std::string& sound = microphone.sound;
    // The rest of the newest chunk was lost with the former stream.
    sound.erase(sound.size() / soundChunkBytes * soundChunkBytes);
    const pa_sample_spec format{.format = PA_SAMPLE_S16LE, .rate = soundSampleRate, .channels = 1};
    microphone.stream.reset(pa_stream_new(microphone.context.get(), "Sterowanie głosem", &format, nullptr));
    if (!microphone.stream) {
        return;
    }
    pa_stream_set_moved_callback(microphone.stream.get(), onStreamMoved, &microphone);
    constexpr auto byServer = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr sizes{.maxlength = soundLimitBytes,
                               .tlength = byServer,
                               .prebuf = byServer,
                               .minreq = byServer,
                               .fragsize = soundChunkBytes};
    pa_stream_connect_record(
        microphone.stream.get(), microphone.isDefaultRequested ? "@DEFAULT_SOURCE@" : nullptr, &sizes,
        static_cast<pa_stream_flags_t>(PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY));
}

/// Queries the server and not the stream for the index of the source: PipeWire may report the stream ready
/// before it is connected to a source.
void requestSource(Microphone& microphone) {
    microphone.source = Source::requested;
    releaseOperation(pa_context_get_source_output_info(
        microphone.context.get(), pa_stream_get_index(microphone.stream.get()), onStreamInfo, &microphone));
}

/// The device was unplugged, the server was restarted, or it accepts connections and never replies.
void startOver(Microphone& microphone) {
    microphone.nextTry = Clock::now() + retryPause;
    if (isContextReady(microphone) && hasFailed(microphone)) {
        microphone.isDefaultRequested = false;
        connectToDevice(microphone);
    } else {
        connectToServer(microphone);
    }
}

/// The next step towards a connected microphone; the callbacks do the rest.
void connectIfLost(Microphone& microphone) {
    if (isConnected(microphone)) {
        return;
    }
    if (Clock::now() >= microphone.nextTry) {
        startOver(microphone);
    } else if (isContextReady(microphone) && !microphone.stream) {
        connectToDevice(microphone);
    } else if (isStreamReady(microphone) && microphone.source == Source::unknown) {
        requestSource(microphone);
    } else if (canRequestDefault(microphone)) {
        microphone.isDefaultRequested = true;
        connectToDevice(microphone);
    }
}

/// Reads the sound that has arrived; what exceeds the limit is discarded.
void takeSound(Microphone& microphone) {
    while (isConnected(microphone)) {
        const void* fragment = nullptr;
        std::size_t byteCount = 0;
        if (pa_stream_peek(microphone.stream.get(), &fragment, &byteCount) != 0 || byteCount == 0) {
            break;
        }
        if (fragment != nullptr) { // a hole in the recording has a length but no bytes
            const std::size_t space = soundLimitBytes - microphone.sound.size();
            microphone.sound.append(static_cast<const char*>(fragment), std::min(byteCount, space));
        }
        pa_stream_drop(microphone.stream.get());
    }
}

/// Handles the server's messages, waiting for one until `deadline` at most. True if there was any.
bool handleMessages(Microphone& microphone, Clock::time_point deadline) {
    if (!isConnected(microphone)) {
        deadline = std::min(deadline, microphone.nextTry);
    }
    const auto left =
        std::chrono::ceil<std::chrono::microseconds>(std::max(deadline - Clock::now(), Clock::duration(0)));
    pa_mainloop* const loop = microphone.loop.get();
    int handledCount = -1;
    if (pa_mainloop_prepare(loop, static_cast<int>(left.count())) >= 0 && pa_mainloop_poll(loop) >= 0) {
        handledCount = pa_mainloop_dispatch(loop);
    }
    if (handledCount < 0) {
        std::this_thread::sleep_until(deadline);
    }
    takeSound(microphone);
    return handledCount > 0;
}

} // namespace

void MicrophoneCloser::operator()(Microphone* microphone) const noexcept {
    delete microphone;
}

MicrophoneHandle openMicrophone() {
    MicrophoneHandle microphone(new Microphone);
    if (!microphone->loop) {
        return nullptr;
    }
    microphone->sound.reserve(soundLimitBytes);
    const Clock::time_point deadline = Clock::now() + openingLimit;
    microphone->nextTry = deadline;
    connectToServer(*microphone);
    while (!hasFailed(*microphone) && Clock::now() < deadline) {
        connectIfLost(*microphone);
        handleMessages(*microphone, deadline);
        if (isConnected(*microphone)) {
            return microphone;
        }
    }
    return nullptr;
}

void startMicrophone(Microphone& microphone) {
    microphone.isStarted = true;
    if (isConnected(microphone)) {
        resumeStream(microphone);
    }
}

std::string_view nextSound(Microphone& microphone, std::uint32_t limitMs) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(limitMs);
    // Read everything that arrived while the caller was busy: what exceeds the limit must be discarded now,
    // not returned late.
    while (handleMessages(microphone, Clock::now()) && Clock::now() < deadline) {
    }
    if (std::exchange(microphone.isOldestChunkReturned, false)) {
        microphone.sound.erase(0, soundChunkBytes);
    }
    while (microphone.sound.size() < soundChunkBytes && Clock::now() < deadline) {
        connectIfLost(microphone);
        handleMessages(microphone, deadline);
    }
    if (microphone.sound.size() < soundChunkBytes) {
        return {};
    }
    microphone.isOldestChunkReturned = true;
    return std::string_view(microphone.sound).substr(0, soundChunkBytes);
}

} // namespace rotika
