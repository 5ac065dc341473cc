#include "harness/target_linux.h"

#include "harness/waiting.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <csignal>
#include <fstream>
#include <string_view>

namespace e2e {

namespace {

constexpr const char* mouseName = "Xvfb mouse";

void writeText(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
}

class LinuxTarget : public Target {
public:
    void prepare(const PrivateScreen& screen) override { environment = screen.environment(); }

    Command commandFor(const std::filesystem::path& program,
                       const std::vector<std::string>& words) const override {
        Command command;
        command.words = {program};
        command.words.insert(command.words.end(), words.begin(), words.end());
        command.environment = environment;
        return command;
    }

    std::string pathText(const std::filesystem::path& file) const override { return file; }

    std::unique_ptr<RealMouse> openMouse(const XConnection& eyes) const override {
        return openSlaveMouse(eyes, mouseName);
    }

    /// A device that somebody has grabbed is detached from the cursor: it floats.
    bool holdsMouse(const XConnection& eyes) const override {
        int count = 0;
        XIDeviceInfo* devices = XIQueryDevice(eyes.raw(), XIAllDevices, &count);
        bool floats = false;
        for (int i = 0; i < count; ++i)
            floats = floats ||
                     (devices[i].use == XIFloatingSlave && std::string_view(devices[i].name) == mouseName);
        XIFreeDeviceInfo(devices);
        return floats;
    }

    bool inputIsExact() const override { return true; }
    int turnsPerPress() const override { return 1; }

    void askToQuit(const Process& program) const override { program.send(SIGTERM); }

    std::optional<std::string> statusText(const std::string& title) const override {
        const std::filesystem::path file = home() / "status.txt";
        std::filesystem::remove(file);
        if (runToEnd({{testArguments().statusReader, title}, environment, {}, file}) != 0)
            return std::nullopt;
        std::ifstream stream(file);
        std::string last; // behind what the libraries may have said
        for (std::string line; std::getline(stream, line);)
            last = line;
        return last;
    }

    std::string libraryFile(const std::string& name) const override {
        return (name.starts_with("lib") ? name : "lib" + name) + ".so";
    }

    std::string runtimeFolder() const override { return "linux-x86_64"; }

    void saveTheme(const std::string& themeId) const override {
        writeText(home() / ".config" / "Rotika" / "UI.conf", "[General]\ntheme=" + themeId + "\n");
    }

    int sendToEngine(const std::vector<std::string>& /*words*/) const override {
        throw ScenarioError("the engine's window takes no messages from outside on this system");
    }

    void setHandler(const std::filesystem::path& handler) const override {
        writeText(home() / ".local" / "share" / "applications" / "handler.desktop",
                  "[Desktop Entry]\nType=Application\nName=Handler\nExec=\"" + handler.string() +
                      "\" %u\nMimeType=x-scheme-handler/handled;text/plain;\n");
        writeText(home() / ".config" / "mimeapps.list",
                  "[Default Applications]\nx-scheme-handler/handled=handler.desktop\n"
                  "text/plain=handler.desktop\n");
    }

    void finish() override {}

private:
    std::filesystem::path home() const { return environment.at("HOME"); }

    Environment environment;
};

} // namespace

std::unique_ptr<Target> makeLinuxTarget() {
    return std::make_unique<LinuxTarget>();
}

} // namespace e2e
