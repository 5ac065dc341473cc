#include "harness/target.h"

#include "harness/target_linux.h"
#include "harness/target_windows.h"

#include <map>

namespace e2e {

namespace {

Arguments& mutableArguments() {
    static Arguments arguments;
    return arguments;
}

} // namespace

const Arguments& testArguments() {
    return mutableArguments();
}

bool readTestArguments(int count, char** words) {
    Arguments& arguments = mutableArguments();
    const std::map<std::string, std::filesystem::path*> paths = {
        {"--program", &arguments.program},        {"--recorder", &arguments.recorder},
        {"--artefacts", &arguments.artefacts},    {"--wine-script", &arguments.wineScript},
        {"--wine-prefix", &arguments.winePrefix}, {"--status-reader", &arguments.statusReader},
        {"--doubles", &arguments.doubles},        {"--speech", &arguments.speech}};
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const std::size_t split = word.find('=');
        const std::string value = split == std::string::npos ? "" : word.substr(split + 1);
        const auto path = paths.find(word.substr(0, split));
        if (word.starts_with("--target="))
            arguments.target = value;
        else if (path != paths.end())
            *path->second = std::filesystem::absolute(value);
        else
            return false;
    }
    return !arguments.program.empty() && !arguments.recorder.empty() && !arguments.artefacts.empty() &&
           (arguments.target == "linux" || (arguments.target == "windows" && !arguments.wineScript.empty() &&
                                            !arguments.winePrefix.empty()));
}

std::unique_ptr<Target> makeTarget() {
    return testArguments().target == "windows" ? makeWindowsTarget() : makeLinuxTarget();
}

} // namespace e2e
