#include "files/first_run_files.h"

#include "common/file_names.h"
#include "files/wheel_writer.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace rotika {

namespace {

constexpr char firstSettings[] = R"({
  "segmentColor": "#3498DB",
  "toggleKey": "x"
}
)";

constexpr char firstVoiceFunctions[] = R"({
  "actions": [
    { "name": "Przełącz okno", "voice": "przełącz okno",
      "steps": [ { "key": "alt", "action": "hold" },
                 { "key": "tab", "action": "click" },
                 { "key": "alt", "action": "release" } ] }
  ]
}
)";

std::string firstWheels() {
    constexpr int fieldCount = 8;
    std::string text = "{\n  \"wheels\": [\n    {\n      \"name\": \"Kolo 1\",\n      \"actions\": [\n";
    for (int n = 1; n <= fieldCount; ++n) {
        const std::string number = std::to_string(n);
        text += "        { \"name\": \"Funkcja " + number + "\", \"key\": \"" + number + "\" }";
        text += n < fieldCount ? ",\n" : "\n";
    }
    return text + "      ]\n    }\n  ]\n}\n";
}

void writeIfMissing(const std::u16string& path, const std::string& text) {
    if (!pathExists(path)) {
        writeTextFile(path, text);
    }
}

} // namespace

void ensureDefaultFiles(const std::u16string& folder) {
    writeIfMissing(joinPath(folder, configFileName), firstSettings);
    writeIfMissing(joinPath(folder, defaultWheelsFileName), firstWheels());
    writeIfMissing(joinPath(folder, voiceFunctionsFileName), firstVoiceFunctions);
}

} // namespace rotika
