#include "harness/waiting.h"

#include <thread>

namespace e2e {

namespace {

constexpr std::chrono::milliseconds pollPause{4};

}

bool holdsWithin(std::chrono::milliseconds limit, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return condition();
        std::this_thread::sleep_for(pollPause);
    }
    return true;
}

void waitFor(const std::string& what, const std::function<bool()>& condition) {
    if (!holdsWithin(generousLimit, condition))
        throw ScenarioError("waited in vain for " + what);
}

} // namespace e2e
