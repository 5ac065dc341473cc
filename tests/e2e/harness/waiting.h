#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace e2e {

/// A scenario could not go on: what it waited for did not come. Ends the test case with its text.
class ScenarioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Far above what anything takes, even on a machine that is busy with something else: only a fault reaches
/// it.
constexpr std::chrono::milliseconds generousLimit{30'000};

/// Polls until `condition` holds. False when `limit` has passed first.
bool holdsWithin(std::chrono::milliseconds limit, const std::function<bool()>& condition);

/// The same with the generous limit; throws ScenarioError naming `what`.
void waitFor(const std::string& what, const std::function<bool()>& condition);

} // namespace e2e
