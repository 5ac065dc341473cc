#include "files/settings_file.h"

#include "base/text.h"
#include "common/file_names.h"
#include "common/limits.h"
#include "files/color_text.h"
#include "files/first_run_files.h"
#include "files/json_reader.h"
#include "files/key_names.h"
#include "files/wheel_files.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr std::size_t placeholderFieldCount = 6;

void readBoolean(const JsonValue& root, std::u16string_view key, bool& setting) {
    if (const JsonValue* member = findMember(root, key, JsonType::Bool)) {
        setting = member->boolean;
    }
}

void readBoolean(const JsonValue& root, std::u16string_view key, Relaxed<bool>& setting) {
    bool value = setting;
    readBoolean(root, key, value);
    setting = value;
}

/// Clamped to 0 to `highest`.
void readInteger(const JsonValue& root, std::u16string_view key, std::int32_t highest,
                 std::int32_t& setting) {
    if (const JsonValue* member = findMember(root, key, JsonType::Number)) {
        setting = std::clamp(integerOf(member->number), 0, highest);
    }
}

void readInteger(const JsonValue& root, std::u16string_view key, std::int32_t highest,
                 Relaxed<std::int32_t>& setting) {
    std::int32_t value = setting;
    readInteger(root, key, highest, value);
    setting = value;
}

void readString(const JsonValue& root, std::u16string_view key, std::u16string& setting) {
    if (const JsonValue* member = findMember(root, key, JsonType::String)) {
        setting = member->text;
    }
}

/// The only setting whose wrong type is reported like an invalid value.
void readSegmentColor(const JsonValue& root, std::u16string& problems) {
    const JsonValue* member = findMember(root, u"segmentColor");
    if (member == nullptr) {
        return;
    }
    if (member->type != JsonType::String || !parseHexColor(member->text, engineConfig.segmentColor)) {
        problems += u"config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n";
    }
}

/// A file that cannot be read leaves every setting unchanged, on a reload not necessarily at its default.
void readSettings(const std::u16string& path, std::u16string& problems) {
    JsonValue root;
    if (!readJsonFile(path, root) || root.type != JsonType::Object) {
        problems += u"Nie udało się wczytać config.json — używam ustawień domyślnych.\n";
        return;
    }
    readSegmentColor(root, problems);
    readString(root, u"toggleKey", engineConfig.toggleKey);
    readInteger(root, u"sendDelay", 2000, engineConfig.sendDelay);
    readInteger(root, u"keyHold", 1000, engineConfig.keyHold);
    readBoolean(root, u"takeFocus", engineConfig.takeFocus);
    readBoolean(root, u"gazeEnabled", engineConfig.gazeEnabled);
    readInteger(root, u"gazeDwell", maxGazeDwellMs, engineConfig.gazeDwell);
    readString(root, u"gazeDllPath", engineConfig.gazeDllPath);
    readBoolean(root, u"voiceEnabled", engineConfig.voiceEnabled);
    readBoolean(root, u"voiceGlobal", engineConfig.voiceGlobal);
    if (const JsonValue* model = findMember(root, u"voiceModel", JsonType::String);
        model && !model->text.empty()) {
        engineConfig.voiceModel = model->text;
    }
    readString(root, u"voiceDllPath", engineConfig.voiceDllPath);
}

/// A mouse button cannot be a hot key, so it counts as unknown.
void resolveToggleKey(std::u16string& problems) {
    engineConfig.toggleKeyCode = parseKeyCode(engineConfig.toggleKey);
    if (engineConfig.toggleKeyCode.isMouse) {
        engineConfig.toggleKeyCode.valid = false;
    }
    if (engineConfig.toggleKeyCode.valid) {
        return;
    }
    problems += u"config.json: nieznany klawisz \"" + engineConfig.toggleKey + u"\" — używam \"x\".\n";
    engineConfig.toggleKeyCode = parseKeyCode(u"x");
    engineConfig.toggleKey = engineConfig.toggleKeyCode.text;
}

/// There is always at least one wheel with a field: the layout divides by the field count.
void readWheels(const std::u16string& path, std::u16string& problems) {
    loadWheelFile(path, engineState.wheels, problems);
    if (engineState.wheels.empty()) {
        problems += u"default.json: brak poprawnych kół — wyświetlam 6 pustych pól.\n";
        engineState.wheels.emplace_back().actions.resize(placeholderFieldCount);
    }
    engineState.activeWheel = 0;
}

void readVoiceFunctions(const std::u16string& path, std::u16string& problems) {
    engineState.voiceActions.clear();
    if (!pathExists(path)) {
        return;
    }
    std::vector<Wheel> wheels;
    loadWheelFile(path, wheels, problems);
    for (Wheel& wheel : wheels) {
        for (WheelAction& action : wheel.actions) {
            if (!action.voice.empty()) {
                engineState.voiceActions.push_back(std::move(action));
            }
        }
    }
}

} // namespace

void loadConfiguration(std::u16string& problems) {
    const std::u16string folder = programFolder();
    ensureDefaultFiles(folder);
    readSettings(joinPath(folder, configFileName), problems);
    resolveToggleKey(problems);
    readWheels(joinPath(folder, defaultWheelsFileName), problems);
    readVoiceFunctions(joinPath(folder, voiceFunctionsFileName), problems);
}

} // namespace rotika
