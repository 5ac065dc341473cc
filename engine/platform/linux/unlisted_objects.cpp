#include "platform/linux/unlisted_objects.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace rotika {

namespace {

constexpr std::string_view pathStart = "/org/a11y/atspi/accessible/";
constexpr std::uint32_t firstNumber = 0x80000000; // of Qt alone

// A menu is published with a few objects around it.
constexpr std::uint32_t maxBefore = 64;
constexpr std::uint32_t maxAfter = 64;
constexpr std::size_t maxGuesses = 600;

/// 0 for other paths.
std::uint32_t numberOf(std::string_view path) {
    std::uint32_t number = 0;
    if (!path.starts_with(pathStart))
        return 0;
    path.remove_prefix(pathStart.size());
    const auto [end, failure] = std::from_chars(path.data(), path.data() + path.size(), number);
    return failure == std::errc{} && end == path.data() + path.size() && number >= firstNumber ? number : 0;
}

} // namespace

std::vector<BusObject> unlistedObjects(const std::set<std::pair<std::string, std::string>>& seen,
                                       const std::string& program) {
    std::set<std::uint32_t> listed;
    for (const auto& [owner, path] : seen)
        if (const std::uint32_t number = numberOf(path); owner == program && number != 0)
            listed.insert(number);
    std::vector<BusObject> objects;
    if (listed.empty())
        return objects;
    const std::uint32_t lowest = *listed.begin() - std::min(*listed.begin() - firstNumber, maxBefore);
    for (std::uint32_t number = *listed.rbegin() + maxAfter; number >= lowest && objects.size() < maxGuesses;
         --number)
        if (!listed.contains(number))
            objects.push_back({program, std::string(pathStart) + std::to_string(number)});
    return objects;
}

} // namespace rotika
