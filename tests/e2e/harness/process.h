#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace e2e {

using Environment = std::map<std::string, std::string>;

struct Command {
    std::vector<std::string> words;   // the program, by path or by the search path, and its arguments
    Environment environment;          // put over this process's own; an empty value takes the name away
    std::filesystem::path folder;     // to start in; empty: this process's own
    std::filesystem::path outputFile; // standard output and error; empty: /dev/null
    int inheritedFd = -1;             // this descriptor becomes number 3
};

/// A child process that never outlives the test: its end is asked for and then forced when this goes, and the
/// kernel ends it should the test program itself die.
class Process {
public:
    Process() = default;
    explicit Process(const Command& command);
    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    pid_t pid() const { return child; }
    bool isRunning();
    void send(int signal) const;
    /// As a shell tells it: the exit status, or 128 plus the signal. Nothing when it is still running after
    /// `limit`.
    std::optional<int> statusWithin(std::chrono::milliseconds limit);
    /// Asks it to end and forces it in the end.
    void end();

private:
    bool reap();

    pid_t child = 0; // 0: never started
    std::optional<int> status;
};

/// Runs it to its end and gives its status; throws ScenarioError if that takes too long.
int runToEnd(const Command& command);

} // namespace e2e
