#include "platform/device_libraries.h"

namespace rotika {

std::u16string speechLibraryName() {
    return u"libvosk.dll";
}

std::u16string gazeLibraryName() {
    return u"tobii_stream_engine.dll";
}

std::vector<std::u16string> gazeLibraryRoots() {
    return {
        u"C:\\Program Files\\Tobii",
        u"C:\\Program Files (x86)\\Tobii",
        u"C:\\Program Files\\Tobii Experience",
        u"C:\\Program Files (x86)\\Tobii Experience",
        u"C:\\ProgramData\\Tobii",
    };
}

} // namespace rotika
