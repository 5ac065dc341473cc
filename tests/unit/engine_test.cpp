#include "engine_test.h"

#include "core/engine_workers.h"
#include "files/key_names.h"

#include <fstream>
#include <iterator>
#include <sstream>

using namespace rotika;

namespace {

const std::string kinds[] = {"click", "hold", "release", "open"};

std::string describe(const WheelAction& action) {
    std::ostringstream text;
    text << utf8FromUtf16(action.name) << "{";
    for (const ActionStep& each : action.steps)
        text << (&each == &action.steps.front() ? "" : ", ") << kinds[static_cast<int>(each.kind)] << " "
             << utf8FromUtf16(each.kind == StepKind::open ? each.target : each.key.text) << " " << each.value;
    const auto append = [&text](bool differs, const char* name, const auto& value) {
        if (differs)
            text << " " << name << "=" << value;
    };
    text << "}";
    append(action.delay != 30, "delay", action.delay);
    text << std::hex << std::uppercase;
    append(action.hasColor, "bgr", action.color);
    append(!action.icon.empty(), "icon", utf8FromUtf16(action.icon));
    append(!action.voice.empty(), "voice", utf8FromUtf16(action.voice));
    return text.str();
}

} // namespace

std::vector<Row> rowsOf(const std::string& table) {
    std::vector<Row> rows;
    for (std::size_t at = table.find_first_not_of(" \n"); at != table.npos;
         at = table.find_first_not_of(" \n", at)) {
        const std::size_t end = std::min({table.find('\n', at), table.find("  ", at), table.size()});
        const std::string row = table.substr(at, end - at);
        const std::size_t arrow = row.rfind(" ->");
        if (!row.starts_with("# "))
            rows.emplace_back(row.substr(0, arrow), row.substr(std::min(arrow + 4, row.size())));
        at = end;
    }
    return rows;
}

std::string replaced(std::string text, const Texts& pairs) {
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        for (auto at = text.find(pairs[i]); at != text.npos; at = text.find(pairs[i]))
            text.replace(at, pairs[i].size(), pairs[i + 1]);
    return text;
}

std::string describe(const std::vector<Wheel>& wheels) {
    std::string text;
    for (const Wheel& each : wheels)
        text += (text.empty() ? "" : " ") + utf8FromUtf16(each.name) + "[" + describe(each.actions) + "]";
    return text;
}

std::string describe(const std::vector<WheelAction>& actions) {
    std::string text;
    for (const WheelAction& each : actions)
        text += (text.empty() ? "" : "; ") + describe(each);
    return text;
}

std::vector<ActionStep> stepsOf(const std::string& text) {
    std::vector<ActionStep> steps;
    std::istringstream words(text);
    std::string kind;
    std::string name;
    for (std::int32_t value = 0; words >> kind >> name >> value;)
        if (kind == "open")
            steps.push_back({{}, StepKind::open, value, utf16FromUtf8(name)});
        else
            steps.push_back({parseKeyCode(utf16FromUtf8(name)),
                             static_cast<StepKind>(std::ranges::find(kinds, kind) - kinds), value, u""});
    return steps;
}

WheelAction field(const std::string& key, const std::u16string& name, const std::u16string& voice) {
    WheelAction action;
    action.name = name;
    action.steps = stepsOf("click " + key + " 1");
    action.voice = voice;
    return action;
}

Wheel wheelOf(int fieldCount) {
    Wheel wheel;
    for (int i = 0; i < fieldCount; ++i)
        wheel.actions.push_back(field({static_cast<char>('a' + i)}));
    return wheel;
}

std::string repeated(const std::string& piece, std::size_t count) {
    return count == 0 ? "" : piece + repeated(piece, count - 1);
}

std::string textOf(const OverlayChar* text) {
    return utf8FromUtf16(reinterpret_cast<const char16_t*>(text));
}

bool activateFile(const std::u16string& path) {
    return OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(path.c_str()));
}

std::u16string TemporaryFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream(at(name), std::ios::binary) << bytes;
    return path(name);
}

std::string TemporaryFolder::read(const std::string& name) const {
    std::ifstream file(at(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

EngineTest::EngineTest() : desktop((resetEngineForTest(), resetSimulatedDesktop(), simulatedDesktop())) {
    setSimulatedProgramFolder(folder.path());
}

/// Requests the stop of workers that run until then, before draining the others.
EngineTest::~EngineTest() {
    stopWorkers();
    desktop.clock.drain();
    resetSimulatedPaths();
    resetSimulatedLayout();
    setSimulatedDiskSpace(std::nullopt);
}

std::string EngineTest::journal(std::optional<JournalKind> kind) const {
    std::string text;
    for (const JournalEntry& entry : desktop.journal)
        if (!kind || entry.kind == *kind)
            text += (text.empty() ? "" : ", ") + entry.text;
    return text;
}
