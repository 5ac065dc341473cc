// Stands in for the update library: requests a shutdown from a thread of its own, as an update does.

#include <QtGlobal>
#include <thread>

static void (*requestShutdown)() = nullptr;
static std::thread update;

extern "C" {
Q_DECL_EXPORT void win_sparkle_set_appcast_url() {}
Q_DECL_EXPORT void win_sparkle_set_app_details() {}
Q_DECL_EXPORT void win_sparkle_set_automatic_check_for_updates() {}
Q_DECL_EXPORT void win_sparkle_check_update_with_ui() {}
Q_DECL_EXPORT void win_sparkle_set_shutdown_request_callback(void (*callback)()) {
    requestShutdown = callback;
}
Q_DECL_EXPORT void win_sparkle_init() {
    update = std::thread(requestShutdown);
}
Q_DECL_EXPORT void win_sparkle_cleanup() {
    update.join();
    requestShutdown();
}
}
