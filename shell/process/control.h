#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <optional>

// Commands from other processes of the same user to the running program: on Linux by
// org.freedesktop.Application on the session bus (name pl.rotika.Rotika), on Windows by WM_COPYDATA to a
// hidden window.

/// A command as it is sent.
struct ControlCommand {
    QString name;
    QStringList arguments;
};

inline constexpr QStringView quitCommand = u"quit";
inline constexpr QStringView showCommand = u"show";
inline constexpr QStringView raiseCommand = u"raise"; // shows the window without giving it the keyboard
inline constexpr QStringView toggleWheelCommand = u"toggle-wheel";
inline constexpr QStringView toggleKeyCommand = u"toggle-key"; // the dialog that changes it
inline constexpr QStringView voiceOnCommand = u"voice-on";
inline constexpr QStringView voiceOffCommand = u"voice-off";
inline constexpr QStringView installVoiceCommand = u"install-voice"; // arguments: absolute paths, may be none

/// From an untrusted sender: false for unknown names and for more or longer arguments than any command has.
bool isValidCommand(const ControlCommand& command);

/// Receives commands while it exists, from programs of the user's session: on Linux a sender of another user
/// is not obeyed; on Windows the system protects the messages, and no more is known of the sender. Never
/// blocks: with no session bus, or one that hangs, there are just no commands. At most one object at a time.
/// Main thread.
class ControlListener {
public:
    using Handler = std::function<void(const ControlCommand&)>;

    /// `isFirstCopy`: the only other case is the second copy, which receives nothing but quit.
    /// `quitHandler` is called for each quit.
    ControlListener(bool isFirstCopy, std::function<void()> quitHandler);
    ~ControlListener();
    ControlListener(const ControlListener&) = delete;
    ControlListener& operator=(const ControlListener&) = delete;

    /// Passes all other commands on, at first those that have arrived already, but no command for the wheel
    /// whose user no longer expects it: it would take the mouse.
    void deliverTo(Handler newHandler);

    /// Whether commands wait for deliverTo().
    bool hasEarlyCommands() const;

    /// For the implementations: a command has arrived. It is obeyed in the event loop, because it may open a
    /// dialog with a loop of its own. The repetitions of a held shortcut count as one command for the wheel.
    void arrive(const ControlCommand& command);

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Early {
        ControlCommand command;
        Time arrival;
    };

    void open(bool isFirstCopy);
    void close();
    void obey(const ControlCommand& command);
    bool isRepetition(const ControlCommand& command);

    QObject context; // of the commands in the event loop
    std::function<void()> quit;
    Handler handler;
    QList<Early> early;
    std::optional<Time> lastForWheel;
};

/// Sends a command to the first copy, which may be just starting; waits for its answer at most `limit`. False
/// if nobody has received it. Needs no QApplication. Not while a ControlListener of the first copy exists.
/// Main thread.
bool sendToRunningCopy(const ControlCommand& command, std::chrono::milliseconds limit);

/// Sends a command to the first copy, without waiting for anything. Needs the event loop. As above.
void sendInBackground(const ControlCommand& command);

/// Ends all copies of this user that run from this program's folder, the engine without the shell and second
/// copies included, and waits until they have gone; not those that wait in this function themselves. False if
/// one is left after `limit`; it may still end later. On Windows a copy whose user cannot be read counts.
bool quitRunningCopies(std::chrono::milliseconds limit);
