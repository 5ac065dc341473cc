#pragma once

#include <cstdio>
#include <string>

// What both recorders share: their arguments, and the lines that they write, one for an event:
//   MILLISECONDS KIND NAME X Y
// Kinds: ready, key-down, key-repeat, key-up, button-down, button-up, motion, focus-in, focus-out. A key's
// name is the one that X11 gives its unshifted symbol, a button's left, middle, right, side1 or side2; "-" if
// there is none. Times are the window system's own, so they tell when an event was made, not when it was
// read.

struct RecorderArguments {
    std::string logFile;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    /// LOG-FILE LEFT TOP WIDTH HEIGHT
    static RecorderArguments parse(int count, char** words);
};

/// Started with nothing, or with one file or address, a recorder only notes that in the file that the
/// variable RECORDER_NOTES names: so it stands in for what a step opens. False if the arguments are of
/// neither kind.
bool noteOpening(int count, char** words);

class EventLog {
public:
    explicit EventLog(const std::string& file) : stream(std::fopen(file.c_str(), "ab")) {}
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;
    ~EventLog() {
        if (stream != nullptr)
            std::fclose(stream);
    }

    void write(unsigned long timeMs, const char* kind, const std::string& name = "-", int x = 0, int y = 0) {
        if (stream == nullptr)
            return;
        std::fprintf(stream, "%lu %s %s %d %d\n", timeMs, kind, name.c_str(), x, y);
        std::fflush(stream);
    }

private:
    std::FILE* stream;
};
