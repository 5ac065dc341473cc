#include "harness/target_windows.h"

#include "harness/waiting.h"

#include <algorithm>
#include <filesystem>

namespace e2e {

namespace {

constexpr const char* debianWineServer = "/usr/lib/wine/wineserver64";

/// A prefix is large and nearly all of it is only read: what is not the registry is linked.
void copyPrefix(const std::filesystem::path& from, const std::filesystem::path& to) {
    namespace fs = std::filesystem;
    fs::create_directories(to);
    for (const auto& entry : fs::directory_iterator(from)) {
        const bool isFolder = entry.is_directory() && !entry.is_symlink();
        const auto how = isFolder ? fs::copy_options::recursive | fs::copy_options::create_hard_links
                                  : fs::copy_options::none;
        fs::copy(entry.path(), to / entry.path().filename(), how | fs::copy_options::copy_symlinks);
    }
}

class WindowsTarget : public Target {
public:
    void prepare(const PrivateScreen& screen) override {
        environment = screen.environment();
        environment["WINEPREFIX"] = testArguments().winePrefix;
        if (runToEnd({{testArguments().wineScript, "--prepare"}, environment, {}, {}}) != 0)
            throw ScenarioError("no Wine prefix");
        const std::filesystem::path prefix = screen.folder() / "prefix";
        copyPrefix(testArguments().winePrefix, prefix);
        environment["WINEPREFIX"] = prefix;
    }

    Command commandFor(const std::filesystem::path& program,
                       const std::vector<std::string>& words) const override {
        Command command;
        command.words = {testArguments().wineScript, program};
        command.words.insert(command.words.end(), words.begin(), words.end());
        command.environment = environment;
        return command;
    }

    std::string pathText(const std::filesystem::path& file) const override {
        std::string text = "Z:" + file.string();
        std::replace(text.begin(), text.end(), '/', '\\');
        return text;
    }

    std::unique_ptr<RealMouse> openMouse(const XConnection& eyes) const override {
        return openTestMouse(eyes);
    }

    /// Wine pins the cursor by a window as large as the place where it may be, here of one pixel.
    bool holdsMouse(const XConnection& eyes) const override {
        const ScreenPoint pointer = eyes.pointer();
        const std::vector<ShownWindow> shown = eyes.shownWindows();
        return std::any_of(shown.begin(), shown.end(), [&](const ShownWindow& window) {
            return window.width == 1 && window.height == 1 && window.left == pointer.x &&
                   window.top == pointer.y;
        });
    }

    bool inputIsExact() const override { return false; }
    int turnsPerPress() const override { return 2; }

    void askToQuit(const Process& program) const override {
        static_cast<void>(program);
        sendToEngine({"quit"});
    }

    std::optional<std::string> statusText(const std::string& /*title*/) const override {
        return std::nullopt;
    }

    std::string libraryFile(const std::string& name) const override { return name + ".dll"; }

    std::string runtimeFolder() const override { return "win-x86_64"; }

    void saveTheme(const std::string& themeId) const override {
        addToRegistry("HKCU\\Software\\Rotika\\UI", "theme", themeId);
    }

    int sendToEngine(const std::vector<std::string>& words) const override {
        return runToEnd(commandFor(testArguments().recorder.parent_path() / "rotika_sender.exe", words));
    }

    void setHandler(const std::filesystem::path& handler) const override {
        const std::string classes = "HKCR\\";
        const std::string command = "\"" + pathText(handler) + "\" \"%1\"";
        addToRegistry(classes + ".txt", "", "handledfile");
        addToRegistry(classes + "handledfile\\shell\\open\\command", "", command);
        addToRegistry(classes + "handled", "URL Protocol", "");
        addToRegistry(classes + "handled\\shell\\open\\command", "", command);
    }

    void finish() override {
        if (!std::filesystem::exists(environment["WINEPREFIX"]))
            return;
        const bool isDebian = std::filesystem::exists(debianWineServer);
        runToEnd({{isDebian ? debianWineServer : "wineserver", "-k"}, environment, {}, {}});
    }

private:
    /// An empty name is the key's own value.
    void addToRegistry(const std::string& key, const std::string& name, const std::string& value) const {
        std::vector<std::string> words = {"add", key, "/d", value, "/f"};
        if (name.empty())
            words.insert(words.begin() + 2, "/ve");
        else
            words.insert(words.begin() + 2, {"/v", name});
        if (runToEnd(commandFor("reg", words)) != 0)
            throw ScenarioError("could not write " + key + " into the registry");
    }

    Environment environment;
};

} // namespace

std::unique_ptr<Target> makeWindowsTarget() {
    return std::make_unique<WindowsTarget>();
}

} // namespace e2e
