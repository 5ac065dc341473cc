#include "shell/process/control.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr qsizetype maxArguments = 16;
constexpr qsizetype maxArgumentLength = 32767; // the longest path on any system
constexpr qsizetype maxEarlyCommands = 16;
constexpr std::chrono::seconds maxWheelDelay{2};
// Longer than the time that a key is held, on most desktops, before it repeats.
constexpr std::chrono::milliseconds repetitionLimit{750};

} // namespace

bool isValidCommand(const ControlCommand& command) {
    constexpr QStringView withoutArguments[] = {quitCommand,        showCommand,      raiseCommand,
                                                toggleWheelCommand, toggleKeyCommand, voiceOnCommand,
                                                voiceOffCommand};
    if (std::find(std::begin(withoutArguments), std::end(withoutArguments), command.name) !=
        std::end(withoutArguments))
        return command.arguments.isEmpty();
    const auto isShort = [](const QString& text) { return text.size() <= maxArgumentLength; };
    return command.name == installVoiceCommand && command.arguments.size() <= maxArguments &&
           std::all_of(command.arguments.begin(), command.arguments.end(), isShort);
}

ControlListener::ControlListener(bool isFirstCopy, std::function<void()> quitHandler)
    : quit(std::move(quitHandler)) {
    open(isFirstCopy);
}

ControlListener::~ControlListener() {
    close();
}

void ControlListener::deliverTo(Handler newHandler) {
    handler = std::move(newHandler);
    const auto limit = std::chrono::steady_clock::now() - maxWheelDelay;
    for (const Early& each : std::exchange(early, {}))
        if (each.command.name != toggleWheelCommand || each.arrival >= limit)
            handler(each.command);
}

bool ControlListener::hasEarlyCommands() const {
    return !early.isEmpty();
}

void ControlListener::arrive(const ControlCommand& command) {
    if (isRepetition(command))
        return;
    QMetaObject::invokeMethod(
        &context, [this, command] { obey(command); }, Qt::QueuedConnection);
}

bool ControlListener::isRepetition(const ControlCommand& command) {
    if (command.name != toggleWheelCommand)
        return false;
    const Time now = std::chrono::steady_clock::now();
    const std::optional<Time> previous = std::exchange(lastForWheel, now);
    return previous && now - *previous < repetitionLimit;
}

void ControlListener::obey(const ControlCommand& command) {
    if (command.name == quitCommand)
        quit();
    else if (handler)
        handler(command);
    else if (early.size() < maxEarlyCommands)
        early.append({command, std::chrono::steady_clock::now()});
}
