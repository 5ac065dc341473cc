#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A fault of the hardware's kind, as a library with a defect brings about. A sanitizer would end the process
/// in its own way.
__attribute__((no_sanitize("undefined"))) inline void faultOnPurpose() {
    static volatile std::uintptr_t nowhere = 0; // out of the compiler's sight
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

/// What a stand-in library is told and what it tells, in two files in the folder DOUBLES_FOLDER:
/// `NAME_script.txt`, which a test can change or lengthen at any time, and `NAME_log.txt`. In the script each
/// line is a word and what belongs to it. These words hold of every call that begins(), as long as they stand
/// there: fails CALL, faults CALL, hangs CALL. Any thread may call the members.
class DoubleScript {
public:
    struct Line {
        std::string word;
        std::string rest;
    };

    explicit DoubleScript(const std::string& name)
        : scriptFile(folder() / (name + "_script.txt")), logFile(folder() / (name + "_log.txt")) {}

    /// Those with one of these words.
    std::vector<Line> lines(const std::vector<std::string_view>& words) const {
        std::vector<Line> found;
        std::ifstream stream(scriptFile, std::ios::binary);
        // A line without its end is one that is still being written.
        for (std::string line; std::getline(stream, line) && !stream.eof();) {
            const std::size_t blank = std::min(line.find(' '), line.size());
            if (std::ranges::count(words, line.substr(0, blank)) > 0)
                found.push_back({line.substr(0, blank), line.substr(std::min(blank + 1, line.size()))});
        }
        return found;
    }

    bool says(std::string_view word, std::string_view rest) const {
        return std::ranges::count(lines({word}), rest, &Line::rest) > 0;
    }

    /// Notes the call and does with it what the script says; false if it shall fail.
    bool begins(const std::string& call, const std::string& details = {}) const {
        note(call + (details.empty() ? "" : " ") + details);
        while (says("hangs", call))
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (says("faults", call))
            faultOnPurpose();
        return !says("fails", call);
    }

    void note(const std::string& line) const {
        std::ofstream(logFile, std::ios::binary | std::ios::app) << line + "\n";
    }

private:
    static std::filesystem::path folder() {
        const char* const told = std::getenv("DOUBLES_FOLDER");
        return told == nullptr ? "" : told;
    }

    const std::filesystem::path scriptFile;
    const std::filesystem::path logFile;
};
