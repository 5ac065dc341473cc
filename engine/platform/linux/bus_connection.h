#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace rotika {

/// An object of a program on a D-Bus bus.
struct BusObject {
    std::string program; // its bus name
    std::string path;
};

/// A private connection to a bus. Many calls are in flight at a time; opening and all calls together take no
/// longer than the time limit, whatever the programs do. A program that does not reply does not delay calls
/// to others. Created, used and destroyed on one thread, not the owner's.
class BusConnection {
public:
    /// Receives the values of the reply, or null if there was none of the requested type.
    using ReplyHandler = std::function<void(GVariant* values)>;

    /// The time starts now. It is also up when calls are pending and no reply has come for `timeout`.
    explicit BusConnection(std::chrono::milliseconds limit,
                           std::chrono::milliseconds timeout = std::chrono::hours(1));
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Replaces the bus that was open before. False if there is none at that address.
    bool open(const std::string& address);

    /// Returns at once. `arguments` may be null for none, and is taken over if floating; `interface`,
    /// `method` and `replyType` are not copied. The handler may make further calls. Once the time is up no
    /// handler is called any more.
    void call(const BusObject& object, const char* interface, const char* method, GVariant* arguments,
              const char* replyType, ReplyHandler handler);

    /// Returns when every call has its reply, or the time is up.
    void waitForReplies();

    /// The same, but also ends when `isEnough` returns true. It is called every few milliseconds and may make
    /// further calls.
    void waitForReplies(const std::function<bool()>& isEnough);

    /// False once the time is up.
    bool pause(std::chrono::milliseconds time);

private:
    struct PendingCall;

    /// The calls to one program.
    struct ProgramQueue {
        std::deque<std::unique_ptr<PendingCall>> waiting;
        std::size_t pendingCount = 0;
    };

    void sendWaiting(ProgramQueue& queue);
    void close();
    void restartReplyTimeout();
    void runUntil(const std::function<bool()>& isOver);
    static void onConnected(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static void onReply(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static gboolean onTimeLimit(gpointer data) noexcept;
    static gboolean onReplyTimeout(gpointer data) noexcept;

    GMainContext* context;
    GSource* limitSource;
    GSource* replyTimeoutSource;
    GCancellable* cancellable;
    GDBusConnection* connection = nullptr;
    std::chrono::microseconds replyTimeout;
    std::map<std::string, ProgramQueue> queues; // by program
    std::size_t pendingCount = 0;
    bool isOpening = false;
    bool isTimeUp = false;
};

} // namespace rotika
