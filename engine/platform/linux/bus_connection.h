#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

/// An object of a program on a D-Bus bus.
struct BusObject {
    std::string program; // the name of its connection
    std::string path;
};

/// A private connection to a bus. Questions go out many at a time; opening and all of them together take no
/// longer than the time limit, whatever the programs do. To be made, used and destroyed on one thread, not
/// the owner's.
class BusConnection {
public:
    /// Takes the values of the answer, or null if there was none of the type that was asked for.
    using AnswerHandler = std::function<void(GVariant* values)>;

    /// The time begins now.
    explicit BusConnection(std::chrono::milliseconds limit);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// In place of the bus that was open before. False if there is none at that address.
    bool open(const std::string& address);

    /// `arguments` may be null for none, and is taken over if floating; `interface`, `method` and
    /// `answerType` are not copied. The handler may ask further questions. Once the time is up no handler is
    /// called any more.
    void ask(const BusObject& object, const char* interface, const char* method, GVariant* arguments,
             const char* answerType, AnswerHandler handler);

    /// Until everything asked has been answered, or the time is up.
    void waitForAnswers();

    /// False once the time is up.
    bool pause(std::chrono::milliseconds time);

private:
    struct Question;

    void sendQueued();
    void close();
    static void takeConnection(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static void takeAnswer(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static gboolean endTime(gpointer data) noexcept;

    GMainContext* context;
    GSource* limitSource;
    GCancellable* cancellable;
    GDBusConnection* connection = nullptr;
    std::deque<std::unique_ptr<Question>> queue;
    std::size_t unanswered = 0;
    bool isOpening = false;
    bool isTimeUp = false;
};
