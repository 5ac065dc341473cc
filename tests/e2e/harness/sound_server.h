#pragma once

#include "harness/process.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace e2e {

/// A sound server with one microphone, which hears what say() says and else silence. Programs find it by
/// what environment() holds. It begins without the microphone.
class SoundServer {
public:
    /// `variables` is what its helpers run with; logs and the socket go into `folder`.
    SoundServer(const std::filesystem::path& folder, const Environment& variables);

    const Environment& environment() const { return surroundings; }

    void plugMicrophoneIn();
    /// As when its plug is drawn, whoever may be listening.
    void unplugMicrophone();
    /// Says it in Polish by one of espeak-ng's voices, such as "pl" or "pl+f4", and waits until it has been
    /// heard. The time at which its last sound was.
    std::chrono::steady_clock::time_point say(const std::string& text, const std::string& voice = "pl");
    /// Every client loses it at once.
    void kill();

private:
    void control(const std::vector<std::string>& words) const;

    std::filesystem::path folder;
    Environment surroundings;
    Process server;
    Process silence; // without it an idle microphone's first sound comes seconds late
};

} // namespace e2e
