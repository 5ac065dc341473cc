#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#define DOUBLE_EXPORT extern "C" __declspec(dllexport)
#else
#include <dlfcn.h>
#define DOUBLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// A fault of the hardware's kind, as a library with a defect brings about. A sanitizer would end the process
/// in its own way.
[[gnu::no_sanitize("undefined")]] inline void faultOnPurpose() {
    static volatile std::uintptr_t nowhere = 0; // out of the compiler's sight
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

/// Where this very library was loaded from: there may be several of its kind in one process.
inline std::filesystem::path ownFolder() {
#ifdef _WIN32
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&faultOnPurpose), &self);
    wchar_t path[1024] = {};
    GetModuleFileNameW(self, path, 1023);
    return std::filesystem::path(path).parent_path();
#else
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&faultOnPurpose), &self);
    return std::filesystem::absolute(self.dli_fname).parent_path();
#endif
}

/// What a stand-in library is told and what it tells, in two files beside it: `NAME_script.txt`, which a
/// test can change or lengthen at any time, and `NAME_log.txt`. In the script each line is a word and what
/// belongs to it. Some words hold as long as they stand there, these of every call that begins():
///
///   fails CALL, faults CALL, hangs CALL
///
/// Others are events: they happen once each, in their order. Any thread may call the members.
class DoubleScript {
public:
    struct Event {
        std::string word;
        std::string rest;
    };

    explicit DoubleScript(const std::string& name, std::vector<std::string> eventWords = {})
        : scriptFile(ownFolder() / (name + "_script.txt")), logFile(ownFolder() / (name + "_log.txt")),
          events(std::move(eventWords)) {}

    /// What stands behind `word` in each of its lines.
    std::vector<std::string> allOf(std::string_view word) const {
        std::vector<std::string> rests;
        for (const Event& each : lines())
            if (each.word == word)
                rests.push_back(each.rest);
        return rests;
    }

    bool says(std::string_view word, std::string_view rest) const {
        return std::ranges::count(allOf(word), rest) > 0;
    }

    /// Event number `index`; one with an empty word if there are not so many.
    Event event(std::size_t index) const {
        for (const Event& each : lines())
            if (std::ranges::count(events, each.word) > 0 && index-- == 0)
                return each;
        return {};
    }

    /// Notes the call and does with it what the script says; false if it shall fail.
    bool begins(const std::string& call, const std::string& details = {}) {
        note(call + (details.empty() ? "" : " ") + details);
        while (says("hangs", call))
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (says("faults", call))
            faultOnPurpose();
        return !says("fails", call);
    }

    void note(const std::string& line) {
        const std::lock_guard lock(logLock);
        std::ofstream(logFile, std::ios::binary | std::ios::app) << line + "\n" << std::flush;
    }

private:
    std::vector<Event> lines() const {
        const std::lock_guard lock(readLock);
        std::error_code isMissing;
        const auto time = std::filesystem::last_write_time(scriptFile, isMissing);
        const std::uintmax_t size = std::filesystem::file_size(scriptFile, isMissing);
        // Some systems tell the time to the second, so a fresh file may have changed without a trace.
        const auto age = std::filesystem::file_time_type::clock::now() - time;
        if (!isMissing && age > std::chrono::seconds(2) && time == readTime && size == readSize)
            return read;
        readTime = time;
        readSize = size;
        read.clear();
        std::ifstream stream(scriptFile, std::ios::binary);
        // A line without its end is one that is still being written.
        for (std::string line; std::getline(stream, line) && !stream.eof();) {
            const std::size_t blank = std::min(line.find(' '), line.size());
            read.push_back({line.substr(0, blank), line.substr(std::min(blank + 1, line.size()))});
        }
        return read;
    }

    const std::filesystem::path scriptFile;
    const std::filesystem::path logFile;
    const std::vector<std::string> events;
    std::mutex logLock;
    // What was read last, and how the file looked then: a look costs far less than reading.
    mutable std::mutex readLock;
    mutable std::filesystem::file_time_type readTime;
    mutable std::uintmax_t readSize = 0;
    mutable std::vector<Event> read;
};
