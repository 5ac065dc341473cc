#include "files/wheel_files.h"

#include "base/text.h"
#include "common/limits.h"
#include "files/color_text.h"
#include "files/json_reader.h"
#include "files/key_names.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace rotika {

namespace {

// In code units. Each line about a step quotes its field's name, so an untrusted file of a few megabytes
// could otherwise produce terabytes of lines.
constexpr std::size_t maxProblemsLength = std::size_t{1} << 24;

struct LoadContext {
    std::vector<Wheel>& wheels;
    std::u16string& problems;
    bool clean = true;
};

struct ActionWord {
    std::u16string_view word;
    StepKind kind;
};

constexpr std::array actionWords{
    ActionWord{u"click", StepKind::click},     ActionWord{u"klik", StepKind::click},
    ActionWord{u"hold", StepKind::hold},       ActionWord{u"przytrzymaj", StepKind::hold},
    ActionWord{u"release", StepKind::release}, ActionWord{u"pusc", StepKind::release},
    ActionWord{u"puść", StepKind::release},
};

void report(LoadContext& context, std::initializer_list<std::u16string_view> line) {
    context.clean = false;
    if (context.problems.size() >= maxProblemsLength) {
        return;
    }
    for (const std::u16string_view part : line) {
        context.problems += part;
    }
}

/// A value of another type counts as absent.
std::u16string stringMember(const JsonValue& element, std::u16string_view key) {
    const JsonValue* member = findMember(element, key, JsonType::String);
    return member != nullptr ? member->text : std::u16string();
}

KeyCode readKeyValue(const std::u16string& fieldName, const JsonValue& keyValue, LoadContext& context) {
    std::u16string token;
    if (keyValue.type == JsonType::String) {
        token = keyValue.text;
    } else if (keyValue.type == JsonType::Number) {
        token = decimalText(integerOf(keyValue.number));
    }
    KeyCode key = parseKeyCode(token);
    if (!key.valid) {
        report(context,
               {u"default.json: nieznany klawisz \"", token, u"\" dla pola \"", fieldName, u"\".\n"});
    }
    return key;
}

/// An unknown word is reported and read as a click.
StepKind readStepKind(const std::u16string& fieldName, const JsonValue& element, LoadContext& context) {
    const JsonValue* action = findMember(element, u"action", JsonType::String);
    if (action == nullptr) {
        return StepKind::click;
    }
    const std::u16string word = asciiLowered(action->text);
    const auto* row = std::find_if(actionWords.begin(), actionWords.end(),
                                   [&word](const ActionWord& candidate) { return candidate.word == word; });
    if (row != actionWords.end()) {
        return row->kind;
    }
    report(context, {u"default.json: nieznana czynność \"", word, u"\" w polu \"", fieldName, u"\".\n"});
    return StepKind::click;
}

std::int32_t readStepValue(const JsonValue& element, StepKind kind) {
    const JsonValue* member = findMember(element, u"value", JsonType::Number);
    return member == nullptr ? defaultStepValue(kind) : clampedStepValue(kind, integerOf(member->number));
}

/// The presence of "open" makes the element an open step; without a valid target it is discarded silently.
void readOpenStep(const JsonValue& target, std::vector<ActionStep>& steps) {
    if (target.type == JsonType::String && !target.text.empty()) {
        ActionStep& step = steps.emplace_back();
        step.kind = StepKind::open;
        step.target = target.text;
    }
}

/// The action word is read even without a valid key, so one invalid step can give two lines.
void readStep(const JsonValue& element, WheelAction& action, LoadContext& context) {
    if (const JsonValue* target = findMember(element, u"open")) {
        readOpenStep(*target, action.steps);
        return;
    }
    ActionStep step;
    if (const JsonValue* keyValue = findMember(element, u"key")) {
        step.key = readKeyValue(action.name, *keyValue, context);
    }
    step.kind = readStepKind(action.name, element, context);
    step.value = readStepValue(element, step.kind);
    if (step.key.valid) {
        action.steps.push_back(std::move(step));
    }
}

void appendClick(const JsonValue& keyValue, WheelAction& action, LoadContext& context) {
    ActionStep step;
    step.key = readKeyValue(action.name, keyValue, context);
    if (step.key.valid) {
        action.steps.push_back(std::move(step));
    }
}

/// The presence of "steps", whatever its type, decides the form: "keys" and "key" are then ignored.
void readFunction(const JsonValue& element, WheelAction& action, LoadContext& context) {
    if (const JsonValue* steps = findMember(element, u"steps")) {
        for (const JsonValue& step : steps->items) {
            readStep(step, action, context);
        }
        return;
    }
    const JsonValue* keys = findMember(element, u"keys");
    if (keys == nullptr) {
        keys = findMember(element, u"key");
    }
    if (keys == nullptr) {
        return;
    }
    if (keys->type != JsonType::Array) {
        appendClick(*keys, action, context);
        return;
    }
    for (const JsonValue& key : keys->items) {
        appendClick(key, action, context);
    }
}

/// An element that is not an object gives an empty field.
WheelAction readField(const JsonValue& element, LoadContext& context) {
    WheelAction action;
    action.name = stringMember(element, u"name");
    readFunction(element, action, context);
    if (const JsonValue* delay = findMember(element, u"delay", JsonType::Number)) {
        action.delay = clampedDelay(integerOf(delay->number));
    }
    action.hasColor = parseHexColor(stringMember(element, u"color"), action.color);
    action.icon = stringMember(element, u"icon");
    action.voice = stringMember(element, u"voice");
    return action;
}

void readWheelActions(const JsonValue& actionsValue, std::u16string wheelName, LoadContext& context) {
    Wheel wheel;
    wheel.name = std::move(wheelName);
    for (const JsonValue& element : actionsValue.items) {
        // Fields past the maximum are read too, to report their problems, and discarded.
        WheelAction action = readField(element, context);
        if (wheel.actions.size() < maxFieldCount) {
            wheel.actions.push_back(std::move(action));
        }
    }
    if (actionsValue.items.size() > maxFieldCount) {
        report(context, {u"default.json: zbyt wiele funkcji w kole \"", wheel.name,
                         u"\" — używam pierwszych ", decimalText(maxFieldCount), u".\n"});
    }
    if (!wheel.actions.empty()) {
        context.wheels.push_back(std::move(wheel));
    }
}

void readWheel(const JsonValue& element, LoadContext& context) {
    if (const JsonValue* actions = findMember(element, u"actions", JsonType::Array)) {
        readWheelActions(*actions, stringMember(element, u"name"), context);
    } else {
        report(context, {u"default.json: koło bez tablicy \"actions\".\n"});
    }
}

} // namespace

bool loadWheelFile(const std::u16string& path, std::vector<Wheel>& wheels, std::u16string& problems) {
    wheels.clear();
    // Only this line names the real file; the others say default.json for any file.
    LoadContext context{wheels, problems};
    JsonValue root;
    if (!readJsonFile(path, root)) {
        report(context, {u"Nie udało się wczytać pliku kół: ", path, u"\n"});
    } else if (const JsonValue* list = findMember(root, u"wheels", JsonType::Array)) {
        for (const JsonValue& element : list->items) {
            readWheel(element, context);
        }
    } else if (const JsonValue* actions = findMember(root, u"actions", JsonType::Array)) {
        readWheelActions(*actions, std::u16string(), context);
    } else {
        report(context, {u"default.json: brak \"wheels\" ani \"actions\".\n"});
    }
    return context.clean;
}

std::int32_t defaultStepValue(StepKind kind) {
    return kind == StepKind::click ? 1 : 0;
}

std::int32_t clampedStepValue(StepKind kind, std::int32_t value) {
    switch (kind) {
    case StepKind::click:
        return std::clamp(value, 1, maxClickCount);
    case StepKind::hold:
        return std::clamp(value, 0, maxHoldMs);
    default:
        return std::max(value, 0);
    }
}

std::int32_t clampedDelay(std::int32_t delayMs) {
    return std::clamp(delayMs, 0, maxDelayMs);
}

} // namespace rotika
