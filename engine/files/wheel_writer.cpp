#include "files/wheel_writer.h"

#include "base/text.h"
#include "files/color_text.h"
#include "platform/files.h"

#include <array>

namespace rotika {

namespace {

constexpr char lowerDigits[] = "0123456789abcdef";

void appendMember(std::string& out, const char* key, const std::u16string& text) {
    out += ", \"";
    out += key;
    out += "\": \"" + escapeJsonString(text) + "\"";
}

void appendNumberMember(std::string& out, const char* key, std::int32_t number) {
    out += ", \"";
    out += key;
    out += "\": " + std::to_string(number);
}

const char* actionWord(StepKind kind) {
    switch (kind) {
    case StepKind::hold:
        return "hold";
    case StepKind::release:
        return "release";
    default:
        return "click";
    }
}

void appendStep(std::string& out, const ActionStep& step) {
    out += "            { ";
    if (step.kind == StepKind::open) {
        out += "\"open\": \"" + escapeJsonString(step.target) + "\" }";
        return;
    }
    out +=
        "\"key\": \"" + escapeJsonString(step.key.text) + "\", \"action\": \"" + actionWord(step.kind) + "\"";
    if (step.kind != StepKind::release) {
        appendNumberMember(out, "value", step.value);
    }
    out += " }";
}

/// One item per line, with a comma after all but the last.
template <typename Item>
void appendList(std::string& out, const std::vector<Item>& items, void (*append)(std::string&, const Item&)) {
    for (const Item& item : items) {
        append(out, item);
        out += &item == &items.back() ? "\n" : ",\n";
    }
}

void appendField(std::string& out, const WheelAction& action) {
    out += "        { \"name\": \"" + escapeJsonString(action.name) + "\"";
    if (action.hasColor) {
        out += ", \"color\": \"" + colorText(action.color) + "\"";
    }
    if (action.delay != WheelAction().delay) {
        appendNumberMember(out, "delay", action.delay);
    }
    if (!action.icon.empty()) {
        appendMember(out, "icon", action.icon);
    }
    if (!action.voice.empty()) {
        appendMember(out, "voice", action.voice);
    }
    out += ",\n          \"steps\": [\n";
    appendList(out, action.steps, appendStep);
    out += "          ]\n        }";
}

void appendWheel(std::string& out, const Wheel& wheel) {
    out += "    {\n      \"name\": \"" + escapeJsonString(wheel.name) + "\",\n      \"actions\": [\n";
    appendList(out, wheel.actions, appendField);
    out += "      ]\n    }";
}

} // namespace

std::string serializeWheels(const std::vector<Wheel>& wheels) {
    std::string out = "{\n  \"wheels\": [\n";
    appendList(out, wheels, appendWheel);
    return out + "  ]\n}\n";
}

std::string escapeJsonString(std::string_view text, JsonEscapes escapes) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '"' || byte == '\\') {
            escaped += {'\\', byte};
        } else if (code >= 32 || escapes == JsonEscapes::quotesOnly) {
            escaped += byte;
        } else if (byte == '\t') {
            escaped += "\\t";
        } else if (byte == '\n') {
            escaped += "\\n";
        } else if (byte == '\r') {
            escaped += "\\r";
        } else {
            escaped += "\\u00";
            escaped += {lowerDigits[code >> 4], lowerDigits[code & 15]};
        }
    }
    return escaped;
}

std::string escapeJsonString(const std::u16string& text) {
    return escapeJsonString(utf8FromUtf16(text), JsonEscapes::all);
}

void writeTextFile(const std::u16string& path, const std::string& bytes) {
    replaceFileBytes(path, bytes);
}

} // namespace rotika
