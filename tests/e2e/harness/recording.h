#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace e2e {

/// One line of a recorder's log; recorder/record.h tells what it may hold.
struct RecordedEvent {
    long timeMs = 0;
    std::string kind;
    std::string name;
    int x = 0;
    int y = 0;

    /// "key-down a": what most scenarios compare.
    std::string what() const { return kind + " " + name; }
};

/// What the program in front has received so far.
class Recording {
public:
    Recording() = default;
    explicit Recording(std::filesystem::path logFile) : file(std::move(logFile)) {}

    std::vector<RecordedEvent> all() const;
    /// Keys and buttons since the mark, without the repeats of held keys and without releases of what was
    /// never pressed here: the wheel takes a press for itself, and has closed again when Windows passes its
    /// release on.
    std::vector<RecordedEvent> presses() const;
    /// The same as texts, "key-down a".
    std::vector<std::string> pressTexts() const;
    int count(const std::string& kind) const;

    /// What came before is no longer looked at.
    void mark() { first = readLines().size(); }

    /// Waits until a `what` of the form "key-down a" has come `times` times since the mark.
    void waitForPress(const std::string& what, int times = 1) const;
    void waitForPresses(std::size_t number) const;
    void waitForKind(const std::string& kind) const;

private:
    std::vector<RecordedEvent> readLines() const;

    std::filesystem::path file;
    std::size_t first = 0;
};

} // namespace e2e
