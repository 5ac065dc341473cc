#include "double_script.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

DoubleScript::DoubleScript(std::string_view name, std::vector<std::string> eventWords)
    : scriptFile(ownFolder() / (std::string(name) + "_script.txt")),
      logFile(ownFolder() / (std::string(name) + "_log.txt")), events(std::move(eventWords)) {}

std::vector<DoubleScript::Event> DoubleScript::lines() const {
    const std::lock_guard lock(readLock);
    std::error_code isMissing;
    const auto time = std::filesystem::last_write_time(scriptFile, isMissing);
    const std::uintmax_t size = std::filesystem::file_size(scriptFile, isMissing);
    // Some systems tell the time to the second, so a fresh file may have changed without a trace.
    const bool isSettled = std::filesystem::file_time_type::clock::now() - time > std::chrono::seconds(2);
    if (!isMissing && isSettled && time == readTime && size == readSize)
        return read;
    readTime = time;
    readSize = size;
    read = readLines();
    return read;
}

std::vector<DoubleScript::Event> DoubleScript::readLines() const {
    std::ifstream stream(scriptFile, std::ios::binary);
    std::vector<Event> found;
    for (std::string line; std::getline(stream, line);) {
        // A line without its end is one that is still being written.
        if (stream.eof() || line.empty() || line.starts_with('#'))
            continue;
        const std::size_t blank = std::min(line.find(' '), line.size());
        found.push_back({line.substr(0, blank), line.substr(std::min(blank + 1, line.size()))});
    }
    return found;
}

bool DoubleScript::says(std::string_view line) const {
    const std::vector<Event> all = lines();
    return std::any_of(all.begin(), all.end(), [&](const Event& each) {
        return each.word + (each.rest.empty() ? "" : " ") + each.rest == line;
    });
}

std::vector<std::string> DoubleScript::allOf(std::string_view word) const {
    std::vector<std::string> rests;
    for (const Event& each : lines()) {
        if (each.word == word)
            rests.push_back(each.rest);
    }
    return rests;
}

DoubleScript::Event DoubleScript::event(std::size_t index) const {
    for (const Event& each : lines()) {
        if (std::find(events.begin(), events.end(), each.word) != events.end() && index-- == 0)
            return each;
    }
    return {};
}

void DoubleScript::note(const std::string& line) {
    const std::lock_guard lock(logLock);
    std::ofstream(logFile, std::ios::binary | std::ios::app) << line + "\n" << std::flush;
}

// A sanitizer would end the process in its own way.
[[gnu::no_sanitize("undefined")]] void faultOnPurpose() {
    // Out of the compiler's sight, which would turn it into something else.
    static volatile std::uintptr_t nowhere = 0;
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

std::filesystem::path ownFolder() {
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
