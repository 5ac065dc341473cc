#include "platform/linux/bus_connection.h"

#include <atomic>
#include <utility>

namespace rotika {

namespace {

// A stopped program that continues finds at most this many calls queued.
constexpr std::size_t maxPendingCalls = 256;

// How often the end of a wait is checked.
constexpr guint tickMs = 5;

constexpr std::chrono::milliseconds closeLimit{500};

/// Atomic: GIO's own thread may drop the connection's last reference.
struct Closing {
    std::atomic<bool> isOver = false;
};

} // namespace

struct BusConnection::PendingCall {
    BusConnection* bus;
    ProgramQueue* queue;
    BusObject object;
    const char* interface;
    const char* method;
    GVariant* arguments;
    const char* replyType;
    ReplyHandler handler;

    PendingCall(BusConnection* caller, ProgramQueue* callQueue, BusObject target, const char* interfaceName,
                const char* methodName, GVariant* callArguments, const char* expectedType,
                ReplyHandler replyHandler)
        : bus(caller), queue(callQueue), object(std::move(target)), interface(interfaceName),
          method(methodName),
          arguments(callArguments == nullptr ? nullptr : g_variant_ref_sink(callArguments)),
          replyType(expectedType), handler(std::move(replyHandler)) {}
    ~PendingCall() {
        if (arguments != nullptr)
            g_variant_unref(arguments);
    }
    PendingCall(const PendingCall&) = delete;
    PendingCall& operator=(const PendingCall&) = delete;
};

BusConnection::BusConnection(std::chrono::milliseconds limit, std::chrono::milliseconds timeout)
    : context(g_main_context_new()), limitSource(g_timeout_source_new(static_cast<guint>(limit.count()))),
      replyTimeoutSource(g_timeout_source_new(static_cast<guint>(timeout.count()))),
      cancellable(g_cancellable_new()), replyTimeout(timeout) {
    // GIO operations started while it is the thread's default complete in this context.
    g_main_context_push_thread_default(context);
    g_source_set_callback(limitSource, onTimeLimit, this, nullptr);
    g_source_attach(limitSource, context);
    g_source_set_callback(replyTimeoutSource, onReplyTimeout, this, nullptr);
    g_source_attach(replyTimeoutSource, context);
}

BusConnection::~BusConnection() {
    onTimeLimit(this);
    // Cancelled calls still call back at once, with pointers to these objects.
    waitForReplies();
    close();
    for (GSource* source : {limitSource, replyTimeoutSource}) {
        g_source_destroy(source);
        g_source_unref(source);
    }
    g_object_unref(cancellable);
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

/// A closed connection's sources, and with them its descriptors, stay in the context until they have run.
void BusConnection::close() {
    if (connection == nullptr)
        return;
    const auto closing = std::make_shared<Closing>();
    const auto end = [](gpointer data, GObject*) {
        const std::unique_ptr<std::shared_ptr<Closing>> ended(static_cast<std::shared_ptr<Closing>*>(data));
        (*ended)->isOver = true;
    };
    g_object_weak_ref(G_OBJECT(connection), end,
                      std::make_unique<std::shared_ptr<Closing>>(closing).release());
    g_dbus_connection_close(connection, nullptr, nullptr, nullptr);
    g_object_unref(connection);
    connection = nullptr;
    const auto limit = std::chrono::steady_clock::now() + closeLimit;
    runUntil([&] { return closing->isOver || std::chrono::steady_clock::now() >= limit; });
}

void BusConnection::runUntil(const std::function<bool()>& isOver) {
    GSource* tick = g_timeout_source_new(tickMs);
    g_source_set_callback(
        tick, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(tick, context);
    while (!isOver())
        g_main_context_iteration(context, TRUE);
    g_source_destroy(tick);
    g_source_unref(tick);
}

gboolean BusConnection::onTimeLimit(gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    bus->isTimeUp = true;
    for (auto& [program, queue] : bus->queues)
        queue.waiting.clear();
    g_cancellable_cancel(bus->cancellable);
    return G_SOURCE_CONTINUE;
}

gboolean BusConnection::onReplyTimeout(gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    return bus->pendingCount > 0 || bus->isOpening ? onTimeLimit(bus) : G_SOURCE_CONTINUE;
}

void BusConnection::restartReplyTimeout() {
    g_source_set_ready_time(replyTimeoutSource, g_get_monotonic_time() + replyTimeout.count());
}

void BusConnection::onConnected(GObject*, GAsyncResult* result, gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    bus->connection = g_dbus_connection_new_for_address_finish(result, nullptr);
    bus->isOpening = false;
}

bool BusConnection::open(const std::string& address) {
    close();
    if (isTimeUp || address.empty())
        return false;
    isOpening = true;
    restartReplyTimeout();
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, cancellable, onConnected, this);
    runUntil([this] { return !isOpening; });
    return connection != nullptr;
}

void BusConnection::call(const BusObject& object, const char* interface, const char* method,
                         GVariant* arguments, const char* replyType, ReplyHandler handler) {
    ProgramQueue& queue = queues[object.program];
    auto pendingCall = std::make_unique<PendingCall>(this, &queue, object, interface, method, arguments,
                                                     replyType, std::move(handler));
    if (isTimeUp || connection == nullptr)
        return;
    if (pendingCount == 0)
        restartReplyTimeout();
    queue.waiting.push_back(std::move(pendingCall));
    sendWaiting(queue);
}

void BusConnection::sendWaiting(ProgramQueue& queue) {
    while (!queue.waiting.empty() && queue.pendingCount < maxPendingCalls) {
        PendingCall* pendingCall = queue.waiting.front().release();
        queue.waiting.pop_front();
        ++queue.pendingCount;
        ++pendingCount;
        g_dbus_connection_call(connection, pendingCall->object.program.c_str(),
                               pendingCall->object.path.c_str(), pendingCall->interface, pendingCall->method,
                               pendingCall->arguments, G_VARIANT_TYPE(pendingCall->replyType),
                               G_DBUS_CALL_FLAGS_NONE, G_MAXINT, cancellable, onReply, pendingCall);
    }
}

void BusConnection::onReply(GObject* source, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<PendingCall> pendingCall(static_cast<PendingCall*>(data));
    BusConnection* bus = pendingCall->bus;
    GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
    --pendingCall->queue->pendingCount;
    --bus->pendingCount;
    bus->restartReplyTimeout();
    if (!bus->isTimeUp)
        pendingCall->handler(values);
    if (values != nullptr)
        g_variant_unref(values);
    bus->sendWaiting(*pendingCall->queue);
}

void BusConnection::waitForReplies() {
    waitForReplies([] { return false; });
}

void BusConnection::waitForReplies(const std::function<bool()>& isEnough) {
    runUntil([&] { return isEnough() || pendingCount == 0; });
}

bool BusConnection::pause(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    runUntil([&] { return isTimeUp || std::chrono::steady_clock::now() >= end; });
    return !isTimeUp;
}

} // namespace rotika
