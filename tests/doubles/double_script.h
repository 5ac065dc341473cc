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

/// Causes a hardware fault, as a defective library does. Not sanitized: a sanitizer would abort the process.
__attribute__((no_sanitize("undefined"))) inline void faultOnPurpose() {
    static volatile std::uintptr_t nullAddress = 0; // volatile: the compiler must not see that it is null
    *reinterpret_cast<volatile int*>(nullAddress) = 1;
}

/// The script that controls a double and the log that it writes, two files in the folder DOUBLES_FOLDER:
/// `NAME_script.txt`, which a test can replace or extend at any time, and `NAME_log.txt`. Each line of the
/// script is a word and its argument. These words apply to every call that uses begins(), as long as they are
/// in the script: fails CALL, faults CALL, hangs CALL. Any thread may call the members.
class DoubleScript {
public:
    struct Line {
        std::string word;
        std::string rest;
    };

    explicit DoubleScript(const std::string& name)
        : scriptFile(folder() / (name + "_script.txt")), logFile(folder() / (name + "_log.txt")) {}

    /// The script's lines with one of these words.
    std::vector<Line> lines(const std::vector<std::string_view>& words) const {
        std::vector<Line> found;
        std::ifstream stream(scriptFile, std::ios::binary);
        // A line without a line feed is still being written.
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

    /// Logs the call, then hangs or faults if the script says so; false if the call must fail.
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
        const char* const path = std::getenv("DOUBLES_FOLDER");
        return path == nullptr ? "" : path;
    }

    const std::filesystem::path scriptFile;
    const std::filesystem::path logFile;
};
