#include "core/text.h"
#include "files/json_reader.h"

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::u16string text = utf16FromUtf8({reinterpret_cast<const char*>(data), size});
    JsonCursor cursor{text};
    JsonValue value;
    if (parseValue(cursor, value)) {
        require(cursor.pos > 0 && cursor.pos <= text.size());
        const JsonValue* name = findMember(value, u"name", JsonType::String);
        require(name == nullptr || (value.type == JsonType::Object && name->type == JsonType::String));
        skipWhitespace(cursor);
        require(cursor.pos <= text.size());
    }
    // What comes out of the decoder is whole UTF-16, so it survives the way back unchanged.
    require(utf16FromUtf8(utf8FromUtf16(text)) == text);
    return 0;
}
