// A double of the eye tracker's library. "gaze_script.txt" may contain, besides the words for every call:
//
//   look X Y VALIDITY   each wait ends with this sample, X and Y from 0 to 1 across the screen, valid if
//                       VALIDITY is 1; the last such line counts, and without one each wait times out
//   period MS           duration of a wait; 10 by default
//   lost                waits fail, as when the tracker has been unplugged
//
// All calls are logged in "gaze_log.txt", except waiting for and processing of callbacks.

#include "double_script.h"

#include <sstream>

namespace {

struct Point {
    std::int64_t timestampUs = 0;
    std::int32_t validity = 0;
    float x = 0;
    float y = 0;
};

using UrlReceiver = void (*)(const char* url, void* user);
using PointReceiver = void (*)(const Point* point, void* user);

constexpr int failed = 1;
constexpr int timedOut = 6;

const DoubleScript& script = *new DoubleScript("gaze");
PointReceiver receiver = nullptr;
void* const handle = &receiver; // for every object; never dereferenced

int outcome(const char* call, const std::string& details = {}) {
    return script.begins(call, details) ? 0 : failed;
}

} // namespace

extern "C" int tobii_api_create(void** api, const void* /*allocator*/, const void* /*log*/) {
    *api = handle;
    return outcome("api_create");
}

extern "C" int tobii_api_destroy(void* /*api*/) {
    return outcome("api_destroy");
}

extern "C" int tobii_enumerate_local_device_urls(void* /*api*/, UrlReceiver urlReceiver, void* user) {
    if (outcome("enumerate_local_device_urls") == 0)
        urlReceiver("double://only", user);
    return 0;
}

extern "C" int tobii_device_create(void* /*api*/, const char* url, int fieldOfUse, void** device) {
    *device = handle;
    return outcome("device_create", url + (" " + std::to_string(fieldOfUse)));
}

extern "C" int tobii_device_destroy(void* /*device*/) {
    return outcome("device_destroy");
}

extern "C" int tobii_gaze_point_subscribe(void* /*device*/, PointReceiver pointReceiver, void* /*user*/) {
    receiver = pointReceiver;
    return outcome("gaze_point_subscribe");
}

extern "C" int tobii_wait_for_callbacks(int deviceCount, void* const* devices) {
    const std::vector<DoubleScript::Line> periods = script.lines({"period"});
    std::this_thread::sleep_for(std::chrono::milliseconds(periods.empty() ? 10 : std::stoi(periods[0].rest)));
    if (deviceCount != 1 || *devices != handle || script.says("lost", ""))
        return failed;
    return script.lines({"look"}).empty() ? timedOut : 0;
}

#ifndef WITHOUT_REQUIRED
extern "C" int tobii_device_process_callbacks(void* /*device*/) {
    Point point;
    std::istringstream(script.lines({"look"}).back().rest) >> point.x >> point.y >> point.validity;
    receiver(&point, nullptr);
    return 0;
}
#endif

#ifndef WITHOUT_OPTIONAL
extern "C" int tobii_device_reconnect(void* /*device*/) {
    return outcome("device_reconnect");
}

extern "C" int tobii_gaze_point_unsubscribe(void* /*device*/) {
    return outcome("gaze_point_unsubscribe");
}
#endif
