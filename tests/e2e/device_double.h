#pragma once

#include "harness/stage.h"

#include <filesystem>
#include <string>
#include <vector>

namespace e2e {

/// The wheel's key and the devices' settings; `more` as settingsText takes it.
std::string deviceSettings(bool voice, bool gaze, const std::string& more);

/// A library that stands in for a device's, for one scenario: with its own script and log, which
/// tests/doubles/ explains.
class DeviceDouble {
public:
    /// `name` is the library's, `kind` that of script and log; `variant` a folder of the doubles.
    DeviceDouble(Stage& stage, const std::string& name, const std::string& kind,
                 const std::string& variant = "complete");

    /// The settings' member `key` with this library.
    std::string setting(const std::string& key) const;

    /// In place of what the script held; all its lines at once.
    void write(const std::string& script) const;
    void add(const std::string& line) const;
    void forgetLog() const;

    std::vector<std::string> log() const;
    /// Calls that begin with this text.
    std::size_t count(const std::string& call) const;
    void waitForCall(const std::string& call, std::size_t times = 1) const;

private:
    std::string file;
    std::filesystem::path script;
    std::filesystem::path logFile;
};

} // namespace e2e
