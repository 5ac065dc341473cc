#include "harness/stage.h"

#include "harness/waiting.h"

#include <fstream>
#include <system_error>

namespace e2e {

namespace {

/// Files that a run of the program leaves behind; a copy starts without them.
bool isWrittenByProgram(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    return name == "config.json" || name == "default.json" || name == "voice.json";
}

/// The program reads and writes beside itself, so every test has its own. The programs themselves are only
/// read: a hard link is enough, and a symbolic one would lead the program back to the original's folder.
void copyProgram(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::create_directories(to);
    for (const auto& entry : std::filesystem::directory_iterator(from)) {
        const std::filesystem::path copy = to / entry.path().filename();
        if (isWrittenByProgram(entry.path()))
            continue;
        std::error_code failure;
        if (entry.is_regular_file())
            std::filesystem::create_hard_link(entry.path(), copy, failure);
        if (failure || !entry.is_regular_file())
            std::filesystem::copy(entry.path(), copy, std::filesystem::copy_options::recursive);
    }
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ",\n") + text;
    return all;
}

} // namespace

std::string settingsText(const std::string& more) {
    return std::string("{ \"toggleKey\": \"") + toggleKey +
           "\", \"gazeEnabled\": false, \"voiceEnabled\": false" + (more.empty() ? "" : ", " + more) + " }\n";
}

std::string oneWheelText(const std::string& name, const std::vector<std::string>& actions) {
    return "{ \"wheels\": [ { \"name\": \"" + name + "\", \"actions\": [\n" + joined(actions) + "\n] } ] }\n";
}

std::vector<std::string> clickActions(const std::vector<std::string>& keys) {
    std::vector<std::string> actions;
    for (const std::string& key : keys) {
        actions.push_back("{ \"name\": \"Pole " + std::to_string(actions.size() + 1) +
                          "\", \"steps\": [ { \"key\": \"" + key + "\" } ] }");
    }
    return actions;
}

std::string jsonText(const std::string& text) {
    std::string quoted = "\"";
    for (const char sign : text) {
        if (sign == '"' || sign == '\\')
            quoted += '\\';
        quoted += sign;
    }
    return quoted + '"';
}

Stage::Stage(const ScreenSetup& setup)
    : screen(setup), target(makeTarget()), wheel(screen.eyes()), programFolder(screen.folder() / "program"),
      executable(programFolder / testArguments().program.filename()) {
    copyProgram(testArguments().program.parent_path(), programFolder);
    writeFile("config.json", settingsText());
    target->prepare(screen);
    mouse = target->openMouse(screen.eyes());
}

Stage::~Stage() {
    program.end();
    recorder.end();
    target->finish();
}

void Stage::writeFile(const std::string& name, const std::string& text) const {
    std::ofstream stream(programFolder / name, std::ios::binary | std::ios::trunc);
    stream << text;
    if (!stream.flush())
        throw ScenarioError("could not write " + name);
}

Process Stage::launchProgram(const std::filesystem::path& startFolder) const {
    Command command = target->commandFor(executable, {});
    command.folder = startFolder.empty() ? screen.folder() : startFolder;
    command.outputFile = screen.folder() / "program.log";
    command.environment["RECORDER_NOTES"] = target->pathText(screen.folder() / "notes.txt");
    return Process(command);
}

std::vector<std::string> Stage::notes() const {
    std::ifstream stream(screen.folder() / "notes.txt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    return lines;
}

void Stage::startProgram() {
    program = launchProgram();
    waitForMainWindow();
}

std::optional<ShownWindow> Stage::mainWindow() const {
    for (const ShownWindow& shown : screen.eyes().shownWindows()) {
        if (shown.title == "Rotika" && shown.width >= smallestMainWindow)
            return shown;
    }
    return std::nullopt;
}

void Stage::waitForMainWindow() {
    waitFor("the program's window", [this] {
        if (!program.isRunning())
            throw ScenarioError("the program ended by itself at its start");
        return mainWindow().has_value();
    });
}

void Stage::endProgram() {
    target->askToQuit(program);
    if (program.statusWithin(generousLimit) != 0)
        throw ScenarioError("the program did not end well");
}

void Stage::startRecorder() {
    const std::filesystem::path log = screen.folder() / "recorder.txt";
    Command command = target->commandFor(testArguments().recorder, {target->pathText(log), "0", "0",
                                                                    std::to_string(screen.eyes().width()),
                                                                    std::to_string(screen.eyes().height())});
    command.outputFile = screen.folder() / "recorder.log";
    recorder = Process(command);
    recording = Recording(log);
    recording.waitForKind("ready");
    recording.waitForKind("focus-in");
    waitFor("the recorder to be in front",
            [this] { return screen.eyes().titleOfActiveWindow() == "recorder"; });
}

void Stage::startAll() {
    startProgram();
    startRecorder();
}

bool Stage::wheelIsOpen() const {
    return wheel.window().has_value();
}

void Stage::toggle() const {
    tapKey(screen.eyes(), toggleKey);
}

void Stage::openWheel(const std::string& key) {
    openWheelAfter([&] { tapKey(screen.eyes(), key); });
}

void Stage::openWheelAfter(const std::function<void()>& opening) {
    opening();
    waitFor("the wheel", [this] { return wheel.cursorIsAt(layerCentre); });
    waitFor("the mouse being held back", [this] { return target->holdsMouse(screen.eyes()); });
    cursor = layerCentre;
}

void Stage::waitUntilWheelIsClosed() const {
    waitFor("the wheel to close", [this] { return !wheelIsOpen(); });
    waitFor("the mouse being given back", [this] { return !target->holdsMouse(screen.eyes()); });
}

void Stage::aim(LayerPoint point) {
    mouse->move(point.x - cursor.x, point.y - cursor.y);
    cursor = point;
    waitFor("the virtual cursor at " + std::to_string(point.x) + ", " + std::to_string(point.y),
            [&] { return wheel.cursorIsAt(point); });
}

void Stage::choose(LayerPoint point) {
    aim(point);
    mouse->click(MouseButton::left);
}

} // namespace e2e
