// Stands in for the eye tracker's library. What "gaze_script.txt" beside it may say:
//
//   api_create fail, device_create fail, subscribe fail
//   api_create hang    it takes as long as this line stands there
//   url none           no tracker is there
//   url ADDRESS        this one is, in place of one of the double's own choice; any number of them
//   period MS          a sample, or the end of a fruitless wait, comes so often; 10 unless told
//
// Events. Each holds for so many waits, and the last of them until there are more:
//
//   look X Y VALIDITY COUNT   a sample, X and Y from 0 to 1 across the screen; valid if VALIDITY is 1
//   rest COUNT                a wait that ends with nothing
//   error COUNT               a wait that fails, as when the tracker has been unplugged
//   hang                      a wait that ends only when there is a next event
//
// Every call but those of the waiting is noted in "gaze_log.txt".

#include "double_script.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#define TOBII_NAME extern "C" __declspec(dllexport)
#else
#define TOBII_NAME extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr int failed = 1;
constexpr int timedOut = 6;

DoubleScript& script() {
    static DoubleScript& only = *new DoubleScript("gaze", {"look", "rest", "error", "hang"});
    return only;
}

struct Point {
    std::int64_t timestampUs = 0;
    std::int32_t validity = 0;
    float x = 0;
    float y = 0;
};

using UrlReceiver = void (*)(const char* url, void* user);
using PointReceiver = void (*)(const Point* point, void* user);

struct Api {};

struct Device {
    PointReceiver receiver = nullptr;
    void* user = nullptr;
    Point next;
    bool hasNext = false;
    std::size_t eventIndex = 0;
    int waits = 0; // of this event
};

int outcome(const std::string& call) {
    return script().says(call + " fail") ? failed : 0;
}

void sleepOnePeriod() {
    const std::vector<std::string> periods = script().allOf("period");
    std::this_thread::sleep_for(std::chrono::milliseconds(periods.empty() ? 10 : std::stoi(periods.front())));
}

bool isLast(const Device& device) {
    return script().event(device.eventIndex + 1).word.empty();
}

/// Goes on to the next event once this one has held for its number of waits.
void countWait(Device& device, int count) {
    if (++device.waits < count || isLast(device))
        return;
    device.waits = 0;
    ++device.eventIndex;
}

int wait(Device& device) {
    sleepOnePeriod();
    const DoubleScript::Event event = script().event(device.eventIndex);
    while (event.word == "hang" && isLast(device))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::istringstream rest(event.rest);
    device.hasNext = event.word == "look";
    if (device.hasNext)
        rest >> device.next.x >> device.next.y >> device.next.validity;
    int count = 1;
    rest >> count;
    countWait(device, count);
    if (device.hasNext)
        return 0;
    return event.word == "error" ? failed : timedOut;
}

} // namespace

TOBII_NAME int tobii_api_create(void** api, const void* /*allocator*/, const void* /*log*/) {
    script().note("api_create");
    while (script().says("api_create hang"))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (outcome("api_create") != 0)
        return failed;
    *api = new Api;
    return 0;
}

TOBII_NAME int tobii_api_destroy(void* api) {
    script().note("api_destroy");
    delete static_cast<Api*>(api);
    return 0;
}

TOBII_NAME int tobii_enumerate_local_device_urls(void* /*api*/, UrlReceiver receiver, void* user) {
    script().note("enumerate_local_device_urls");
    if (script().says("url none"))
        return 0;
    std::vector<std::string> urls = script().allOf("url");
    if (urls.empty())
        urls = {"double://only"};
    for (const std::string& url : urls)
        receiver(url.c_str(), user);
    return 0;
}

TOBII_NAME int tobii_device_create(void* /*api*/, const char* url, int fieldOfUse, void** device) {
    script().note(std::string("device_create ") + url + " " + std::to_string(fieldOfUse));
    if (outcome("device_create") != 0)
        return failed;
    *device = new Device;
    return 0;
}

TOBII_NAME int tobii_device_destroy(void* device) {
    script().note("device_destroy");
    delete static_cast<Device*>(device);
    return 0;
}

TOBII_NAME int tobii_gaze_point_subscribe(void* device, PointReceiver receiver, void* user) {
    script().note("gaze_point_subscribe");
    static_cast<Device*>(device)->receiver = receiver;
    static_cast<Device*>(device)->user = user;
    return outcome("subscribe");
}

TOBII_NAME int tobii_wait_for_callbacks(int deviceCount, void* const* devices) {
    if (deviceCount != 1)
        script().note("wait_for_callbacks " + std::to_string(deviceCount));
    return wait(*static_cast<Device*>(devices[0]));
}

#ifndef WITHOUT_REQUIRED_NAME
TOBII_NAME int tobii_device_process_callbacks(void* device) {
    Device& full = *static_cast<Device*>(device);
    if (full.hasNext)
        full.receiver(&full.next, full.user);
    full.hasNext = false;
    return 0;
}
#endif

#ifndef WITHOUT_OPTIONAL_NAMES
TOBII_NAME int tobii_device_reconnect(void* /*device*/) {
    script().note("device_reconnect");
    return 0;
}

TOBII_NAME int tobii_gaze_point_unsubscribe(void* /*device*/) {
    script().note("gaze_point_unsubscribe");
    return 0;
}
#endif
