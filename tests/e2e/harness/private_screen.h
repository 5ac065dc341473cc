#pragma once

#include "harness/process.h"
#include "harness/sound_server.h"
#include "harness/x_connection.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace e2e {

/// A folder that goes with everything in it.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

enum class Compositing { on, off };

enum class Sound { none, silent, microphone };

struct ScreenSetup {
    Compositing compositing = Compositing::on;
    /// Rectangles as xrandr takes them with --setmonitor, such as "640/200x800/250+0+0"; none: one monitor.
    std::vector<std::string> monitors{};
    /// None: there may be a server, or none, as the machine has it. Silent: one of its own without a
    /// microphone.
    Sound sound = Sound::none;
};

/// An X server with a window manager, a session bus and folders for settings and run-time files of its own,
/// so that any number of them can run at once. 1280 by 800 pixels.
class PrivateScreen {
public:
    explicit PrivateScreen(const ScreenSetup& setup);

    const std::filesystem::path& folder() const { return scratch.path(); }
    /// What a program needs to run here.
    const Environment& environment() const { return variables; }
    const XConnection& eyes() const { return *connection; }
    const std::string& display() const { return displayName; }
    SoundServer& sound() const { return *soundServer; }

    void setCompositing(Compositing compositing);
    /// As when the person logs out or the server crashes: every client loses it at once.
    void takeAway();
    bool isThere() const { return connection != nullptr; }

private:
    void startServer();
    void startBus();
    void startSound(Sound sound);
    Process startHelper(const std::vector<std::string>& words) const;

    ScratchFolder scratch;
    Environment variables;
    std::string displayName;
    // In the order of their start; they end in the reverse one.
    Process server;
    std::unique_ptr<XConnection> connection;
    Process bus;
    Process windowManager;
    Process compositor;
    std::unique_ptr<SoundServer> soundServer;
};

} // namespace e2e
