#include "harness/private_screen.h"

#include "harness/waiting.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <system_error>

namespace e2e {

ScratchFolder::ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "rotika-e2e.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw ScenarioError("no scratch folder " + name);
    folder = name;
}

ScratchFolder::~ScratchFolder() {
    // A program that is on its way out may still write into it.
    holdsWithin(generousLimit, [this] {
        std::error_code failure;
        std::filesystem::remove_all(folder, failure);
        return !failure;
    });
}

PrivateScreen::PrivateScreen(const ScreenSetup& setup) {
    const std::filesystem::path home = folder() / "home";
    const std::filesystem::path run = folder() / "run";
    std::filesystem::create_directory(home);
    std::filesystem::create_directory(run);
    std::filesystem::permissions(run, std::filesystem::perms::owner_all);
    variables = {{"HOME", home}, {"XDG_RUNTIME_DIR", run}, {"XDG_SESSION_TYPE", "x11"}};
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                             "XDG_CURRENT_DESKTOP", "WAYLAND_DISPLAY", "XAUTHORITY", "QT_QPA_PLATFORM"})
        variables[name] = "";
    startServer();
    startBus();
    windowManager = startHelper({"openbox", "--sm-disable"});
    waitFor("the window manager", [this] { return connection->hasWindowManager(); });
    connection->waitUntilWindowsAreShown();
    if (setup.compositing == Compositing::on)
        setCompositing(Compositing::on);
    if (setup.sound != Sound::none)
        startSound(setup.sound);
    int number = 0;
    for (const std::string& monitor : setup.monitors) {
        // One monitor may own the server's only output; the others own none.
        const std::string output = number == 0 ? "screen" : "none";
        runToEnd({{"xrandr", "--setmonitor", "part" + std::to_string(++number), monitor, output},
                  variables,
                  {},
                  {}});
    }
}

void PrivateScreen::startServer() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw ScenarioError("no pipe");
    Command command;
    command.words = {"Xvfb",        "-displayfd", "3",   "-screen", "0",
                     "1280x800x24", "-nolisten",  "tcp", "-noreset"};
    command.outputFile = folder() / "server.log";
    command.environment = variables;
    command.inheritedFd = ends[1];
    server = Process(command);
    close(ends[1]);
    std::array<char, 32> number{};
    std::string digits;
    // The server writes its number and a line feed once it listens, and closes its end if it fails.
    while (digits.find('\n') == std::string::npos) {
        const ssize_t got = read(ends[0], number.data(), number.size());
        if (got <= 0)
            break;
        digits.append(number.data(), static_cast<std::size_t>(got));
    }
    close(ends[0]);
    if (digits.empty())
        throw ScenarioError("the X server did not start");
    displayName = ":" + digits.substr(0, digits.find('\n'));
    variables["DISPLAY"] = displayName;
    connection = std::make_unique<XConnection>(displayName);
}

void PrivateScreen::startBus() {
    const std::filesystem::path socket = folder() / "run" / "bus";
    bus = startHelper({"dbus-daemon", "--session", "--nofork", "--address=unix:path=" + socket.string()});
    variables["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket.string();
    variables["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + socket.string(); // never the machine's own session
    waitFor("the session bus", [&] { return std::filesystem::exists(socket); });
}

void PrivateScreen::startSound(Sound sound) {
    soundServer = std::make_unique<SoundServer>(folder(), variables);
    variables = soundServer->environment();
    if (sound == Sound::microphone)
        soundServer->plugMicrophoneIn();
}

Process PrivateScreen::startHelper(const std::vector<std::string>& words) const {
    return Process({words, variables, folder(), folder() / (words.front() + ".log")});
}

void PrivateScreen::setCompositing(Compositing compositing) {
    compositor.end();
    if (compositing == Compositing::on)
        compositor = startHelper({"picom", "--backend", "xrender", "--config", "/dev/null"});
    waitFor("the compositor to come or go",
            [&] { return connection->hasCompositor() == (compositing == Compositing::on); });
}

void PrivateScreen::takeAway() {
    connection.reset();
    server.send(SIGKILL);
    server.statusWithin(generousLimit);
}

} // namespace e2e
