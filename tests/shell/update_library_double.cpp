// Stands in for the update library: records what it is told and, when asked, requests a shutdown from a
// thread of its own, as an update does.

#include "probe_log.h"

#include <string>
#include <thread>

#ifdef _WIN32
#define DOUBLE_EXPORT extern "C" __declspec(dllexport)
#else
#define DOUBLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

void (*requestShutdown)() = nullptr;

std::string ascii(const wchar_t* text) {
    std::string result;
    for (; *text != L'\0'; ++text)
        result += static_cast<char>(*text);
    return result;
}

} // namespace

DOUBLE_EXPORT void win_sparkle_set_appcast_url(const char* url) {
    probeLog(std::string("updates feed ") + url);
}

DOUBLE_EXPORT void win_sparkle_set_app_details(const wchar_t* company, const wchar_t* application,
                                               const wchar_t* version) {
    probeLog("updates for " + ascii(company) + " " + ascii(application) + " " + ascii(version));
}

DOUBLE_EXPORT void win_sparkle_set_shutdown_request_callback(void (*callback)()) {
    probeLog("updates callback");
    requestShutdown = callback;
}

DOUBLE_EXPORT void win_sparkle_set_automatic_check_for_updates(int state) {
    probeLog("updates automatic " + std::to_string(state));
}

DOUBLE_EXPORT void win_sparkle_init() {
    probeLog("updates init");
    if (probeAsked("ROTIKA_PROBE_UPDATE_QUITS"))
        std::thread([] { requestShutdown(); }).detach();
}

#ifndef WITHOUT_CLEANUP
DOUBLE_EXPORT void win_sparkle_cleanup() {
    probeLog("updates cleanup");
}
#endif

DOUBLE_EXPORT void win_sparkle_check_update_with_ui() {}
