#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/// What a stand-in library is told and what it tells, in two files beside it: `NAME_script.txt`, which a
/// test can change or lengthen at any time, and `NAME_log.txt`. In the script each
/// line is a word and what belongs to it; lines that begin with '#' say nothing.
///
/// Some words hold as long as they stand there. The others are events: they happen once each, in their order.
/// An event's number tells it from its like, and appended lines come later.
class DoubleScript {
public:
    struct Event {
        std::string word;
        std::string rest;
    };

    DoubleScript(std::string_view name, std::vector<std::string> eventWords);

    /// Whether the line stands there. Any thread.
    bool says(std::string_view line) const;
    /// What stands behind `word` in each of its lines. Any thread.
    std::vector<std::string> allOf(std::string_view word) const;
    /// Event number `index`; one with an empty word if there are not so many. Any thread.
    Event event(std::size_t index) const;

    /// Appends a line to the log. Any thread.
    void note(const std::string& line);

private:
    std::vector<Event> lines() const;
    std::vector<Event> readLines() const;

    // What was read last, and how the file looked then: a look costs far less than reading.
    mutable std::mutex readLock;
    mutable std::filesystem::file_time_type readTime;
    mutable std::uintmax_t readSize = 0;
    mutable std::vector<Event> read;

    std::filesystem::path scriptFile;
    std::filesystem::path logFile;
    std::vector<std::string> events;
    std::mutex logLock;
};

/// Where this very library was loaded from: there may be several of its kind in one process.
std::filesystem::path ownFolder();

/// A fault of the hardware's kind, as a library with a defect brings about.
void faultOnPurpose();
