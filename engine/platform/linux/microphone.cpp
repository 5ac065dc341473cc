#include "platform/microphone.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <thread>

// The server's asynchronous interface, turned by the listening thread itself while it waits: no thread and no
// lock of ours. Losing and finding the device again goes on inside these waits.

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto openingLimit = std::chrono::milliseconds(1500);
constexpr auto retryPause = std::chrono::seconds(3);

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

struct SoundBuffer {
    std::array<char, soundBufferBytes> bytes;
    std::size_t filled = 0;
    bool hasComeBack = false;
};

/// Which buffers the device has, in the order in which they were handed out.
class BufferQueue {
public:
    bool isEmpty() const { return count == 0; }
    std::size_t front() const { return indices[first]; }
    void push(std::size_t index) {
        indices[(first + count) % indices.size()] = index;
        ++count;
    }
    void pop() {
        first = (first + 1) % indices.size();
        --count;
    }
    void clear() { count = 0; }

private:
    std::array<std::size_t, soundBufferCount> indices{};
    std::size_t first = 0;
    std::size_t count = 0;
};

} // namespace

struct Microphone {
    std::unique_ptr<pa_mainloop, LoopCloser> loop{pa_mainloop_new()};
    std::unique_ptr<pa_context, ContextCloser> context;
    std::unique_ptr<pa_stream, StreamCloser> stream;
    std::array<SoundBuffer, soundBufferCount> buffers{};
    BufferQueue waiting;
    std::size_t takenOfFragment = 0; // bytes of the server's present fragment that stand in buffers already
    bool isStarted = false;
    Clock::time_point nextTry{};
};

namespace {

bool isContextGood(const Microphone& microphone) {
    return microphone.context && PA_CONTEXT_IS_GOOD(pa_context_get_state(microphone.context.get()));
}

bool isContextReady(const Microphone& microphone) {
    return microphone.context && pa_context_get_state(microphone.context.get()) == PA_CONTEXT_READY;
}

bool isStreamGood(const Microphone& microphone) {
    return microphone.stream && PA_STREAM_IS_GOOD(pa_stream_get_state(microphone.stream.get()));
}

bool isStreamReady(const Microphone& microphone) {
    return microphone.stream && pa_stream_get_state(microphone.stream.get()) == PA_STREAM_READY;
}

void connectToServer(Microphone& microphone) {
    microphone.stream.reset();
    microphone.context.reset(pa_context_new(pa_mainloop_get_api(microphone.loop.get()), "Rotika"));
    if (microphone.context) {
        // Starting a server would hold this thread until that one is up, without a limit.
        pa_context_connect(microphone.context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    }
}

void connectToDevice(Microphone& microphone) {
    microphone.takenOfFragment = 0;
    if (!microphone.waiting.isEmpty()) {
        microphone.buffers[microphone.waiting.front()].filled = 0; // the rest of its sound will never come
    }
    const pa_sample_spec format{.format = PA_SAMPLE_S16LE, .rate = soundSampleRate, .channels = 1};
    microphone.stream.reset(pa_stream_new(microphone.context.get(), "Sterowanie głosem", &format, nullptr));
    if (!microphone.stream) {
        return;
    }
    constexpr auto byServer = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr sizes{.maxlength = soundBufferCount * soundBufferBytes,
                               .tlength = byServer,
                               .prebuf = byServer,
                               .minreq = byServer,
                               .fragsize = soundBufferBytes};
    const int corked = microphone.isStarted ? PA_STREAM_NOFLAGS : PA_STREAM_START_CORKED;
    pa_stream_connect_record(microphone.stream.get(), nullptr, &sizes,
                             static_cast<pa_stream_flags_t>(corked | PA_STREAM_ADJUST_LATENCY));
}

/// The device may have been unplugged, the server restarted.
void reconnectIfLost(Microphone& microphone) {
    const bool isComing = isContextGood(microphone) && !isContextReady(microphone);
    if (isStreamGood(microphone) || isComing) {
        return;
    }
    const bool isFresh = isContextReady(microphone) && !microphone.stream;
    if (!isFresh && Clock::now() < microphone.nextTry) {
        return;
    }
    microphone.nextTry = Clock::now() + retryPause;
    if (isContextReady(microphone)) {
        connectToDevice(microphone);
    } else {
        connectToServer(microphone);
    }
}

/// Lets the server's messages in, waiting for one until `deadline` at most.
void handleMessages(Microphone& microphone, Clock::time_point deadline) {
    if (!isStreamGood(microphone)) {
        deadline = std::min(deadline, std::max(Clock::now(), microphone.nextTry));
    }
    const auto left =
        std::chrono::ceil<std::chrono::microseconds>(std::max(deadline - Clock::now(), Clock::duration(0)));
    pa_mainloop* const loop = microphone.loop.get();
    if (pa_mainloop_prepare(loop, static_cast<int>(left.count())) < 0 || pa_mainloop_poll(loop) < 0 ||
        pa_mainloop_dispatch(loop) < 0) {
        std::this_thread::sleep_until(deadline);
    }
}

void handOut(Microphone& microphone, std::size_t index) {
    microphone.buffers[index].filled = 0;
    microphone.buffers[index].hasComeBack = false;
    microphone.waiting.push(index);
}

/// Copies as much as the buffer at the front of the queue has room for; whether that filled it.
bool fillFront(Microphone& microphone, const char* bytes, std::size_t byteCount) {
    SoundBuffer& buffer = microphone.buffers[microphone.waiting.front()];
    const std::size_t copied = std::min(byteCount, soundBufferBytes - buffer.filled);
    std::memcpy(buffer.bytes.data() + buffer.filled, bytes, copied);
    buffer.filled += copied;
    microphone.takenOfFragment += copied;
    if (buffer.filled < soundBufferBytes) {
        return false;
    }
    buffer.hasComeBack = true;
    microphone.waiting.pop();
    return true;
}

/// Moves what the server has sent into the buffers; whether one has come back. What finds no buffer stays in
/// the stream's queue, where sound past the four fragments is lost.
bool takeSound(Microphone& microphone) {
    bool hasComeBack = false;
    while (isStreamReady(microphone) && !microphone.waiting.isEmpty()) {
        const void* fragment = nullptr;
        std::size_t byteCount = 0;
        if (pa_stream_peek(microphone.stream.get(), &fragment, &byteCount) != 0 || byteCount == 0) {
            break;
        }
        // A hole in the recording has a length but no bytes.
        if (fragment != nullptr && microphone.takenOfFragment < byteCount) {
            const char* const rest = static_cast<const char*>(fragment) + microphone.takenOfFragment;
            hasComeBack |= fillFront(microphone, rest, byteCount - microphone.takenOfFragment);
        }
        if (fragment == nullptr || microphone.takenOfFragment >= byteCount) {
            pa_stream_drop(microphone.stream.get());
            microphone.takenOfFragment = 0;
        }
    }
    return hasComeBack;
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
    const Clock::time_point deadline = Clock::now() + openingLimit;
    connectToServer(*microphone);
    while (isContextGood(*microphone) && Clock::now() < deadline) {
        if (isContextReady(*microphone) && !microphone->stream) {
            connectToDevice(*microphone);
        }
        if (microphone->stream && !isStreamGood(*microphone)) {
            return nullptr;
        }
        if (isStreamReady(*microphone)) {
            return microphone;
        }
        microphone->nextTry = deadline;
        handleMessages(*microphone, deadline);
    }
    return nullptr;
}

void startMicrophone(Microphone& microphone) {
    microphone.waiting.clear();
    for (std::size_t i = 0; i < soundBufferCount; ++i) {
        handOut(microphone, i);
    }
    microphone.isStarted = true;
    if (isStreamReady(microphone)) {
        if (pa_operation* const uncorking = pa_stream_cork(microphone.stream.get(), 0, nullptr, nullptr)) {
            pa_operation_unref(uncorking);
        }
    }
}

void waitForSound(Microphone& microphone, std::uint32_t limitMs) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(limitMs);
    do {
        reconnectIfLost(microphone);
        if (takeSound(microphone)) {
            return;
        }
        handleMessages(microphone, deadline);
    } while (Clock::now() < deadline);
    takeSound(microphone);
}

std::optional<std::string_view> recordedSound(const Microphone& microphone, std::size_t index) {
    const SoundBuffer& buffer = microphone.buffers[index];
    if (!buffer.hasComeBack) {
        return std::nullopt;
    }
    return std::string_view(buffer.bytes.data(), buffer.filled);
}

void requeueSoundBuffer(Microphone& microphone, std::size_t index) {
    if (microphone.buffers[index].hasComeBack) {
        handOut(microphone, index);
    }
}
