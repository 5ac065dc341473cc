#include "platform/device_libraries.h"

namespace rotika {

std::u16string speechLibraryName() {
    return u"simulated-speech";
}

std::u16string gazeLibraryName() {
    return u"simulated-gaze";
}

std::vector<std::u16string> gazeLibraryRoots() {
    return {};
}

} // namespace rotika
