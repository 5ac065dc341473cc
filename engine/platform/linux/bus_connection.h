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
    std::string program; // the name of its connection
    std::string path;
};

/// A private connection to a bus. Questions go out many at a time; opening and all of them together take no
/// longer than the time limit, whatever the programs do. A program that does not answer does not hold up the
/// questions to others. To be made, used and destroyed on one thread, not the owner's.
class BusConnection {
public:
    /// Takes the values of the answer, or null if there was none of the type that was asked for.
    using AnswerHandler = std::function<void(GVariant* values)>;

    /// The time begins now. It is also up when nothing has been answered for as long as `silence` although
    /// something was asked.
    explicit BusConnection(std::chrono::milliseconds limit,
                           std::chrono::milliseconds silence = std::chrono::hours(1));
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

    /// The same, but no longer than until `isEnough` says so, which is called every few milliseconds and may
    /// ask further questions.
    void waitForAnswers(const std::function<bool()>& isEnough);

    /// False once the time is up.
    bool pause(std::chrono::milliseconds time);

private:
    struct Question;

    /// The questions to one program.
    struct Line {
        std::deque<std::unique_ptr<Question>> waiting;
        std::size_t unanswered = 0;
    };

    void sendWaiting(Line& line);
    void close();
    void restartSilence();
    void runUntil(const std::function<bool()>& isOver);
    static void takeConnection(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static void takeAnswer(GObject* source, GAsyncResult* result, gpointer data) noexcept;
    static gboolean endTime(gpointer data) noexcept;
    static gboolean endSilence(gpointer data) noexcept;

    GMainContext* context;
    GSource* limitSource;
    GSource* silenceSource;
    GCancellable* cancellable;
    GDBusConnection* connection = nullptr;
    std::chrono::microseconds longestSilence;
    std::map<std::string, Line> lines; // by program
    std::size_t unanswered = 0;
    bool isOpening = false;
    bool isTimeUp = false;
};

} // namespace rotika
