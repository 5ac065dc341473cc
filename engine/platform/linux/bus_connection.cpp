#include "platform/linux/bus_connection.h"

#include <utility>

namespace {

// A program that was stopped must not find more than this many questions when it goes on.
constexpr std::size_t mostUnanswered = 256;

} // namespace

struct BusConnection::Question {
    BusConnection* bus;
    BusObject object;
    const char* interface;
    const char* method;
    GVariant* arguments;
    const char* answerType;
    AnswerHandler handler;

    Question(BusConnection* asker, BusObject asked, const char* itsInterface, const char* itsMethod,
             GVariant* itsArguments, const char* itsAnswerType, AnswerHandler itsHandler)
        : bus(asker), object(std::move(asked)), interface(itsInterface), method(itsMethod),
          arguments(itsArguments == nullptr ? nullptr : g_variant_ref_sink(itsArguments)),
          answerType(itsAnswerType), handler(std::move(itsHandler)) {}
    ~Question() {
        if (arguments != nullptr)
            g_variant_unref(arguments);
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
};

BusConnection::BusConnection(std::chrono::milliseconds limit)
    : context(g_main_context_new()), limitSource(g_timeout_source_new(static_cast<guint>(limit.count()))),
      cancellable(g_cancellable_new()) {
    // What GIO begins while it is the thread's default ends in this context.
    g_main_context_push_thread_default(context);
    g_source_set_callback(limitSource, endTime, this, nullptr);
    g_source_attach(limitSource, context);
}

BusConnection::~BusConnection() {
    endTime(this);
    // Cancelled calls still report, at once, to the objects that they were begun with.
    waitForAnswers();
    close();
    g_source_destroy(limitSource);
    g_source_unref(limitSource);
    g_object_unref(cancellable);
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

void BusConnection::close() {
    if (connection == nullptr)
        return;
    g_dbus_connection_close(connection, nullptr, nullptr, nullptr);
    g_object_unref(connection);
    connection = nullptr;
}

gboolean BusConnection::endTime(gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    bus->isTimeUp = true;
    bus->queue.clear();
    g_cancellable_cancel(bus->cancellable);
    return G_SOURCE_CONTINUE;
}

void BusConnection::takeConnection(GObject*, GAsyncResult* result, gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    bus->connection = g_dbus_connection_new_for_address_finish(result, nullptr);
    bus->isOpening = false;
}

bool BusConnection::open(const std::string& address) {
    close();
    if (isTimeUp || address.empty())
        return false;
    isOpening = true;
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, cancellable, takeConnection, this);
    while (isOpening)
        g_main_context_iteration(context, TRUE);
    return connection != nullptr;
}

void BusConnection::ask(const BusObject& object, const char* interface, const char* method,
                        GVariant* arguments, const char* answerType, AnswerHandler handler) {
    auto question = std::make_unique<Question>(this, object, interface, method, arguments, answerType,
                                               std::move(handler));
    if (isTimeUp || connection == nullptr)
        return;
    queue.push_back(std::move(question));
    sendQueued();
}

void BusConnection::sendQueued() {
    while (!queue.empty() && unanswered < mostUnanswered) {
        Question* question = queue.front().release();
        queue.pop_front();
        ++unanswered;
        g_dbus_connection_call(connection, question->object.program.c_str(), question->object.path.c_str(),
                               question->interface, question->method, question->arguments,
                               G_VARIANT_TYPE(question->answerType), G_DBUS_CALL_FLAGS_NONE, G_MAXINT,
                               cancellable, takeAnswer, question);
    }
}

void BusConnection::takeAnswer(GObject* source, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<Question> question(static_cast<Question*>(data));
    BusConnection* bus = question->bus;
    GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
    --bus->unanswered;
    if (!bus->isTimeUp)
        question->handler(values);
    if (values != nullptr)
        g_variant_unref(values);
    bus->sendQueued();
}

void BusConnection::waitForAnswers() {
    while (unanswered > 0)
        g_main_context_iteration(context, TRUE);
}

bool BusConnection::pause(std::chrono::milliseconds time) {
    bool isOver = false;
    const auto end = [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
    };
    GSource* source = g_timeout_source_new(static_cast<guint>(time.count()));
    g_source_set_callback(source, end, &isOver, nullptr);
    g_source_attach(source, context);
    while (!isOver && !isTimeUp)
        g_main_context_iteration(context, TRUE);
    g_source_destroy(source);
    g_source_unref(source);
    return !isTimeUp;
}
