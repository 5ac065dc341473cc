// Stands in for the update library: requests a shutdown from a thread of its own, as an update does.

#include <cstdio>
#include <thread>

#ifdef _WIN32
#define DOUBLE_EXPORT extern "C" __declspec(dllexport)
#else
#define DOUBLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

static void (*requestShutdown)() = nullptr;

DOUBLE_EXPORT void win_sparkle_set_appcast_url(const char*) {}
DOUBLE_EXPORT void win_sparkle_set_app_details(const wchar_t*, const wchar_t*, const wchar_t*) {}
DOUBLE_EXPORT void win_sparkle_set_automatic_check_for_updates(int) {}
DOUBLE_EXPORT void win_sparkle_check_update_with_ui() {}
DOUBLE_EXPORT void win_sparkle_set_shutdown_request_callback(void (*callback)()) {
    requestShutdown = callback;
}
DOUBLE_EXPORT void win_sparkle_init() {
    std::puts("updates start");
    std::thread(requestShutdown).detach();
}
DOUBLE_EXPORT void win_sparkle_cleanup() {
    std::puts("updates end");
}
