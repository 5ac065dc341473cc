#include "platform/device_libraries.h"

namespace rotika {

std::u16string speechLibraryName() {
    return u"libvosk.so";
}

std::u16string gazeLibraryName() {
    return u"libtobii_stream_engine.so";
}

std::vector<std::u16string> gazeLibraryRoots() {
    return {u"/usr/lib/tobii", u"/opt/tobii"};
}

} // namespace rotika
