#include "device_double.h"

#include "harness/waiting.h"

#include <algorithm>
#include <fstream>

namespace e2e {

std::string deviceSettings(bool voice, bool gaze, const std::string& more) {
    const auto text = [](bool value) { return value ? "true" : "false"; };
    return std::string("{ \"toggleKey\": \"") + toggleKey + "\", \"gazeEnabled\": " + text(gaze) +
           ", \"voiceEnabled\": " + text(voice) + ", " + more + " }\n";
}

DeviceDouble::DeviceDouble(Stage& stage, const std::string& name, const std::string& kind,
                           const std::string& variant) {
    const std::filesystem::path folder = stage.screen.folder() / (kind + "-" + variant);
    std::filesystem::create_directories(folder);
    const std::filesystem::path library = folder / stage.target->libraryFile(name);
    std::filesystem::copy_file(testArguments().doubles / variant / library.filename(), library,
                               std::filesystem::copy_options::overwrite_existing);
    file = stage.target->pathText(library);
    script = folder / (kind + "_script.txt");
    logFile = folder / (kind + "_log.txt");
}

std::string DeviceDouble::setting(const std::string& key) const {
    return jsonText(key) + ": " + jsonText(file);
}

void DeviceDouble::write(const std::string& text) const {
    const std::filesystem::path made = script.string() + ".new";
    std::ofstream(made, std::ios::binary | std::ios::trunc) << text << '\n' << std::flush;
    std::filesystem::rename(made, script);
}

void DeviceDouble::add(const std::string& line) const {
    std::ofstream(script, std::ios::binary | std::ios::app) << line + "\n" << std::flush;
}

void DeviceDouble::forgetLog() const {
    std::filesystem::remove(logFile);
}

std::vector<std::string> DeviceDouble::log() const {
    std::ifstream stream(logFile, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::size_t DeviceDouble::count(const std::string& call) const {
    const std::vector<std::string> lines = log();
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(), [&](const std::string& line) { return line.starts_with(call); }));
}

void DeviceDouble::waitForCall(const std::string& call, std::size_t times) const {
    waitFor("the library's " + call, [&] { return count(call) >= times; });
}

} // namespace e2e
