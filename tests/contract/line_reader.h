#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Collects the lines of another process on a thread of its own, until `readSome` answers 0 for the end.
class LineReader {
public:
    explicit LineReader(std::function<std::size_t(char* bytes, std::size_t room)> readSome)
        : reader([this, read = std::move(readSome)] { collect(read); }) {}
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    ~LineReader() { reader.join(); }

    std::vector<std::string> lines() const {
        const std::lock_guard hold(lock);
        return complete;
    }

private:
    void collect(const std::function<std::size_t(char*, std::size_t)>& read) {
        std::string rest;
        char bytes[512];
        while (const std::size_t count = read(bytes, sizeof(bytes))) {
            rest.append(bytes, count);
            for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
                std::string line = rest.substr(0, end);
                if (line.ends_with('\r'))
                    line.pop_back();
                rest.erase(0, end + 1);
                const std::lock_guard hold(lock);
                complete.push_back(std::move(line));
            }
        }
    }

    mutable std::mutex lock;
    std::vector<std::string> complete;
    std::thread reader; // last: it uses what stands above
};
