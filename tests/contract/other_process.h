#pragma once

#include "platform/geometry_types.h"

#include <memory>
#include <string>
#include <vector>

// This test program once more, as another process that plays a role: a recorder, or a program that uses the
// seam and is then killed. Owner thread.

class OtherProcess {
public:
    /// Starts `--role` with these words.
    explicit OtherProcess(const std::vector<std::string>& role);
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    /// Kills it: nothing of its own runs any more.
    ~OtherProcess();

    /// What it has told so far.
    std::vector<std::string> lines() const;
    /// Whether it told this line within ten seconds.
    bool tells(const std::string& line) const;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// The other process's main function. It ends with the process that started it.
int playRole(const std::vector<std::string>& role);

/// Tells the process that started us one line.
void tellLine(const std::string& line);

/// Shows the recorder's window, tells "window N", then "keyboard" whenever it gets the keyboard, and each
/// event. Never returns. Once per platform.
[[noreturn]] void playRecorder(const Rect& place);
