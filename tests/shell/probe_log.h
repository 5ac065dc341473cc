#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// The record that the start-up probe and its stand-ins keep together: a line for each event, in the file that
// ROTIKA_PROBE_LOG names.

inline void probeLog(const std::string& line) {
    const char* path = std::getenv("ROTIKA_PROBE_LOG");
    if (path == nullptr)
        return;
    if (std::FILE* file = std::fopen(path, "ab")) {
        std::fputs((line + "\n").c_str(), file);
        std::fclose(file);
    }
}

/// True when the test asks for this.
inline bool probeAsked(const char* name) {
    return std::getenv(name) != nullptr;
}
