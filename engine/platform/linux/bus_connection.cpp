#include "platform/linux/bus_connection.h"

#include <atomic>
#include <utility>

namespace rotika {

namespace {

// A program that was stopped must not find more than this many questions when it goes on.
constexpr std::size_t mostUnanswered = 256;

// How often it is looked whether a wait is over.
constexpr guint tickMs = 5;

constexpr std::chrono::milliseconds partingLimit{500};

/// A connection on its way out. The thread that drops its last reference may be GIO's own.
struct Parting {
    std::atomic<bool> isOver = false;
};

} // namespace

struct BusConnection::Question {
    BusConnection* bus;
    Line* line;
    BusObject object;
    const char* interface;
    const char* method;
    GVariant* arguments;
    const char* answerType;
    AnswerHandler handler;

    Question(BusConnection* asker, Line* itsLine, BusObject asked, const char* itsInterface,
             const char* itsMethod, GVariant* itsArguments, const char* itsAnswerType,
             AnswerHandler itsHandler)
        : bus(asker), line(itsLine), object(std::move(asked)), interface(itsInterface), method(itsMethod),
          arguments(itsArguments == nullptr ? nullptr : g_variant_ref_sink(itsArguments)),
          answerType(itsAnswerType), handler(std::move(itsHandler)) {}
    ~Question() {
        if (arguments != nullptr)
            g_variant_unref(arguments);
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
};

BusConnection::BusConnection(std::chrono::milliseconds limit, std::chrono::milliseconds silence)
    : context(g_main_context_new()), limitSource(g_timeout_source_new(static_cast<guint>(limit.count()))),
      silenceSource(g_timeout_source_new(static_cast<guint>(silence.count()))),
      cancellable(g_cancellable_new()), longestSilence(silence) {
    // What GIO begins while it is the thread's default ends in this context.
    g_main_context_push_thread_default(context);
    g_source_set_callback(limitSource, endTime, this, nullptr);
    g_source_attach(limitSource, context);
    g_source_set_callback(silenceSource, endSilence, this, nullptr);
    g_source_attach(silenceSource, context);
}

BusConnection::~BusConnection() {
    endTime(this);
    // Cancelled calls still report, at once, to the objects that they were begun with.
    waitForAnswers();
    close();
    for (GSource* source : {limitSource, silenceSource}) {
        g_source_destroy(source);
        g_source_unref(source);
    }
    g_object_unref(cancellable);
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

/// A closed connection leaves sources in the context, and with them its descriptors, until they have run.
void BusConnection::close() {
    if (connection == nullptr)
        return;
    const auto parting = std::make_shared<Parting>();
    const auto end = [](gpointer data, GObject*) {
        const std::unique_ptr<std::shared_ptr<Parting>> ended(static_cast<std::shared_ptr<Parting>*>(data));
        (*ended)->isOver = true;
    };
    g_object_weak_ref(G_OBJECT(connection), end,
                      std::make_unique<std::shared_ptr<Parting>>(parting).release());
    g_dbus_connection_close(connection, nullptr, nullptr, nullptr);
    g_object_unref(connection);
    connection = nullptr;
    const auto limit = std::chrono::steady_clock::now() + partingLimit;
    runUntil([&] { return parting->isOver || std::chrono::steady_clock::now() >= limit; });
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

gboolean BusConnection::endTime(gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    bus->isTimeUp = true;
    for (auto& [program, line] : bus->lines)
        line.waiting.clear();
    g_cancellable_cancel(bus->cancellable);
    return G_SOURCE_CONTINUE;
}

gboolean BusConnection::endSilence(gpointer data) noexcept {
    auto* bus = static_cast<BusConnection*>(data);
    return bus->unanswered > 0 || bus->isOpening ? endTime(bus) : G_SOURCE_CONTINUE;
}

void BusConnection::restartSilence() {
    g_source_set_ready_time(silenceSource, g_get_monotonic_time() + longestSilence.count());
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
    restartSilence();
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, cancellable, takeConnection, this);
    runUntil([this] { return !isOpening; });
    return connection != nullptr;
}

void BusConnection::ask(const BusObject& object, const char* interface, const char* method,
                        GVariant* arguments, const char* answerType, AnswerHandler handler) {
    Line& line = lines[object.program];
    auto question = std::make_unique<Question>(this, &line, object, interface, method, arguments, answerType,
                                               std::move(handler));
    if (isTimeUp || connection == nullptr)
        return;
    if (unanswered == 0)
        restartSilence();
    line.waiting.push_back(std::move(question));
    sendWaiting(line);
}

void BusConnection::sendWaiting(Line& line) {
    while (!line.waiting.empty() && line.unanswered < mostUnanswered) {
        Question* question = line.waiting.front().release();
        line.waiting.pop_front();
        ++line.unanswered;
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
    --question->line->unanswered;
    --bus->unanswered;
    bus->restartSilence();
    if (!bus->isTimeUp)
        question->handler(values);
    if (values != nullptr)
        g_variant_unref(values);
    bus->sendWaiting(*question->line);
}

void BusConnection::waitForAnswers() {
    waitForAnswers([] { return false; });
}

void BusConnection::waitForAnswers(const std::function<bool()>& isEnough) {
    runUntil([&] { return isEnough() || unanswered == 0; });
}

bool BusConnection::pause(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    runUntil([&] { return isTimeUp || std::chrono::steady_clock::now() >= end; });
    return !isTimeUp;
}

} // namespace rotika
