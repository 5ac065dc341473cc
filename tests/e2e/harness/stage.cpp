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

/// Where input may be lost or doubled: how long one attempt is given, and how many there are.
constexpr std::chrono::milliseconds patience{3000};
constexpr int patientAttempts = 8;

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
    command.environment.insert(programVariables.begin(), programVariables.end());
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
    // It takes the focus a little later than it is shown, and would take it from what is started next.
    waitFor("the program's window to have the focus", [this] { return isInFront("Rotika"); });
}

bool Stage::isInFront(const std::string& title) const {
    return screen.eyes().titleOfFocusedWindow() == title && screen.eyes().titleOfActiveWindow() == title;
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

void Stage::startRecorder(int marginPx) {
    const std::filesystem::path log = screen.folder() / "recorder.txt";
    Command command = target->commandFor(
        testArguments().recorder, {target->pathText(log), "0", "0", std::to_string(screen.eyes().width()),
                                   std::to_string(screen.eyes().height() - marginPx)});
    command.outputFile = screen.folder() / "recorder.log";
    recorder = Process(command);
    recording = Recording(log);
    recording.waitForKind("ready");
    recording.waitForKind("focus-in");
    waitFor("the recorder to be in front", [this] { return isInFront("recorder"); });
}

void Stage::startAll() {
    startProgram();
    startRecorder();
}

void Stage::restPointerAt(ScreenPoint place) {
    placePointer(screen.eyes(), place);
    waitFor("the cursor's arrival in the recorder", [&] {
        std::optional<ScreenPoint> last;
        for (const RecordedEvent& event : recording.all()) {
            if (event.kind == "motion")
                last = ScreenPoint{event.x, event.y};
        }
        return last == place;
    });
    recording.mark();
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

bool Stage::wheelOpensWell(std::chrono::milliseconds limit) const {
    return holdsWithin(limit,
                       [this] { return wheel.cursorIsAt(layerCentre) && target->holdsMouse(screen.eyes()); });
}

void Stage::openWheelAfter(const std::function<void()>& opening) {
    opening();
    waitFor("the wheel", [this] { return wheelIsOpen(); });
    cursor = layerCentre;
    if (target->inputIsExact()) {
        if (!wheelOpensWell(generousLimit))
            throw ScenarioError("the wheel stands, but not as it should");
        return;
    }
    // As a person would: close it and open it again.
    for (int attempt = 0; attempt < patientAttempts && !wheelOpensWell(patience); ++attempt) {
        toggle();
        waitFor("the wheel to close for another attempt", [this] { return !wheelIsOpen(); });
        toggle();
        waitFor("the wheel to open again", [this] { return wheelIsOpen(); });
    }
    if (!wheelOpensWell(patience))
        throw ScenarioError("the wheel stands, but not as it should, time and again");
}

void Stage::waitUntilWheelIsClosed() const {
    waitFor("the wheel to close", [this] { return !wheelIsOpen(); });
    waitFor("the mouse being given back", [this] { return !target->holdsMouse(screen.eyes()); });
}

bool Stage::cursorArrives(LayerPoint point, std::chrono::milliseconds limit) const {
    return holdsWithin(limit, [&] { return wheel.cursorIsAt(point); });
}

void Stage::aim(LayerPoint point) {
    const bool isExact = target->inputIsExact();
    for (int attempt = 0; attempt < (isExact ? 1 : patientAttempts); ++attempt) {
        // Half the way every other time: where movements count twice, that leads there.
        const int part = attempt % 2 == 0 ? 1 : 2;
        mouse->move((point.x - cursor.x) / part, (point.y - cursor.y) / part);
        cursor = point;
        if (cursorArrives(point, isExact ? generousLimit : patience))
            return;
        // As a person would: look where it is, or else begin in the corner, and correct.
        const std::optional<LayerPoint> seen = wheel.findCursor();
        if (!seen)
            mouse->move(-2 * layerWidth, -2 * layerHeight);
        cursor = seen.value_or(LayerPoint{});
    }
    throw ScenarioError("waited in vain for the virtual cursor at " + std::to_string(point.x) + ", " +
                        std::to_string(point.y));
}

void Stage::choose(LayerPoint point) {
    aim(point);
    mouse->click(MouseButton::left);
}

} // namespace e2e
