#include "platform/linux/injection_connection.h"

namespace rotika {

namespace {

struct SharedConnection {
    std::mutex mutex;
    Display* display = nullptr;
};

// Never destroyed: run threads may inject until the process ends.
SharedConnection& sharedConnection() {
    static SharedConnection* const instance = new SharedConnection;
    return *instance;
}

} // namespace

InjectionConnection lockInjectionConnection() {
    SharedConnection& shared = sharedConnection();
    InjectionConnection connection{std::unique_lock(shared.mutex), nullptr};
    if (shared.display == nullptr) {
        shared.display = XOpenDisplay(nullptr);
        if (shared.display != nullptr)
            XTestGrabControl(shared.display,
                             1); // a client that has grabbed the server must not stop a release
    }
    connection.display = shared.display;
    return connection;
}

} // namespace rotika
