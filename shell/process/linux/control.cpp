#include "shell/process/control.h"

#include "common/data_folder.h"
#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

// The header of glibc 2.36 lacks this.
extern "C" {
#include <sys/pidfd.h>
}

#include <QFile>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr char busName[] = "pl.rotika.Rotika";
constexpr char objectPath[] = "/pl/rotika/Rotika";
constexpr char applicationInterface[] = "org.freedesktop.Application";
constexpr char interfaceText[] = R"(<node><interface name="org.freedesktop.Application">
<method name="Activate"><arg type="a{sv}" direction="in"/></method>
<method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
<method name="ActivateAction"><arg type="s" direction="in"/><arg type="av" direction="in"/>
<arg type="a{sv}" direction="in"/></method></interface></node>)";

constexpr guint retryMs = 50; // a copy that is starting has no name on the bus yet

/// Bus callbacks may come after the listener has gone. Main thread.
ControlListener* currentListener = nullptr;

ControlCommand commandOf(const char* method, GVariant* parameters) {
    if (std::string_view(method) == "Activate")
        return {showCommand.toString(), {}};
    if (std::string_view(method) != "ActivateAction")
        return {};
    const char* name = nullptr;
    GVariantIter* values = nullptr;
    g_variant_get(parameters, "(&sava{sv})", &name, &values, nullptr);
    ControlCommand command{QString::fromUtf8(name), {}};
    GVariant* value = nullptr;
    while (g_variant_iter_next(values, "v", &value) != FALSE) {
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY) != FALSE) {
            GVariantIter files;
            const char* file = nullptr;
            g_variant_iter_init(&files, value);
            while (g_variant_iter_next(&files, "&s", &file) != FALSE)
                command.arguments.append(QString::fromUtf8(file));
        }
        g_variant_unref(value);
    }
    g_variant_iter_free(values);
    return command;
}

/// `values`: the sender's user id, null if the bus does not know it.
void obey(GVariant* values, const ControlCommand& command, GDBusMethodInvocation* invocation) {
    guint32 user = 0;
    if (values != nullptr)
        g_variant_get(values, "(u)", &user);
    if (values == nullptr || user != ::getuid() || currentListener == nullptr) {
        g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED,
                                              "not for this user");
        return;
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
    currentListener->arrive(command);
}

void onMethodCall(GDBusConnection* bus, const char* sender, const char*, const char*, const char* method,
                  GVariant* parameters, GDBusMethodInvocation* invocation, gpointer) noexcept {
    const ControlCommand command = commandOf(method, parameters);
    if (!isValidCommand(command)) {
        g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                              "unknown command");
        return;
    }
    const BusCall query{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                        "GetConnectionUnixUser", "(u)"};
    callOnOwnerBus(bus, query, g_variant_new("(s)", sender),
                   [command, invocation](GVariant* values) { obey(values, command, invocation); });
}

void publish(GDBusConnection* bus) {
    if (bus == nullptr || currentListener == nullptr)
        return;
    static const GDBusInterfaceVTable table{onMethodCall, nullptr, nullptr, {}};
    static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(interfaceText, nullptr);
    g_dbus_connection_register_object(bus, objectPath, node->interfaces[0], &table, nullptr, nullptr,
                                      nullptr);
    g_bus_own_name_on_connection(bus, busName, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                 nullptr);
}

/// One command on its way to the running copy. Shared with callbacks, which may come late.
struct Sending {
    ControlCommand command;
    GDBusConnection* bus = nullptr;
    bool isOver = false;
    bool isReceived = false;
    bool isPending = false;
};

GVariant* argumentsOf(const ControlCommand& command) {
    GVariantBuilder values;
    g_variant_builder_init(&values, G_VARIANT_TYPE("av"));
    GVariantBuilder files;
    g_variant_builder_init(&files, G_VARIANT_TYPE_STRING_ARRAY);
    for (const QString& file : command.arguments)
        g_variant_builder_add(&files, "s", file.toUtf8().constData());
    g_variant_builder_add(&values, "v", g_variant_builder_end(&files));
    return g_variant_new("(sava{sv})", command.name.toUtf8().constData(), &values, nullptr);
}

void sendIfDue(const std::shared_ptr<Sending>& sending) {
    if (sending->bus == nullptr || sending->isPending || sending->isOver)
        return;
    sending->isPending = true;
    const BusCall call{busName, objectPath, applicationInterface, "ActivateAction", "()"};
    callOnOwnerBus(sending->bus, call, argumentsOf(sending->command), [sending](GVariant* values) {
        sending->isPending = false;
        sending->isReceived = values != nullptr;
        sending->isOver = sending->isReceived;
    });
}

/// Sends as soon as there is a connection.
std::shared_ptr<Sending> startSending(const ControlCommand& command) {
    auto sending = std::make_shared<Sending>(Sending{command});
    const std::string address = sessionBusAddress();
    sending->isOver = address.empty();
    if (!address.empty())
        openOwnerBus(address, [sending](GDBusConnection* bus) {
            sending->bus = bus;
            sending->isOver = sending->isOver || bus == nullptr;
            sendIfDue(sending);
        });
    return sending;
}

/// A process of this user that runs from this program's folder.
struct Copy {
    int handle; // a process descriptor: a process number may be used again
    bool isShell;
};

/// The name of the program file if it is in `folder`; a file replaced by an update counts as well.
std::string programIn(const fs::path& folder, const std::string& process) {
    std::error_code failure;
    std::string path = fs::read_symlink("/proc/" + process + "/exe", failure).string();
    constexpr std::string_view replaced = " (deleted)";
    if (path.ends_with(replaced))
        path.resize(path.size() - replaced.size());
    return fs::path(path).parent_path() == folder ? fs::path(path).filename().string() : std::string();
}

/// A process that waits for the end of the others itself; see forgetRestart().
bool isWaiting(const std::string& process) {
    QFile file(QString::fromStdString("/proc/" + process + "/cmdline"));
    const QByteArray words = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return words.contains(QByteArray("\0--quit", 7)) || words.contains(QByteArray("\0--restart", 10));
}

std::vector<Copy> runningCopies() {
    std::vector<Copy> found;
    const fs::path folder = executableFolder();
    std::error_code failure;
    for (fs::directory_iterator each("/proc", failure); !failure && each != fs::directory_iterator();
         each.increment(failure)) {
        const std::string process = each->path().filename();
        struct stat status {};
        const int number = std::atoi(process.c_str());
        if (number <= 0 || number == ::getpid() || ::stat(each->path().c_str(), &status) != 0 ||
            status.st_uid != ::getuid())
            continue;
        // Opened first, so that what is read below is about this very process.
        const int handle = ::pidfd_open(number, 0);
        const std::string program = programIn(folder, process);
        const bool isShell = program == "rotika" && !isWaiting(process);
        if (handle >= 0 && (isShell || program == "rotika-guard"))
            found.push_back({handle, isShell});
        else if (handle >= 0)
            ::close(handle);
    }
    return found;
}

bool hasEnded(const Copy& copy, Clock::time_point limit) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(limit - Clock::now());
    pollfd descriptor{copy.handle, POLLIN, 0};
    return ::poll(&descriptor, 1, static_cast<int>(std::max(left, 0ms).count())) > 0;
}

} // namespace

void ControlListener::open(bool isFirstCopy) {
    // A second copy ends by SIGTERM, which needs no bus.
    const std::string address = isFirstCopy ? sessionBusAddress() : std::string();
    if (address.empty())
        return;
    currentListener = this;
    openOwnerBus(address, publish);
}

void ControlListener::close() {
    if (currentListener == this)
        currentListener = nullptr;
}

bool sendToRunningCopy(const ControlCommand& command, std::chrono::milliseconds limit) {
    auto sending = startSending(command);
    const auto end = Clock::now() + limit;
    const guint retry = g_timeout_add(
        retryMs,
        [](gpointer data) -> gboolean {
            sendIfDue(*static_cast<std::shared_ptr<Sending>*>(data));
            return G_SOURCE_CONTINUE;
        },
        &sending);
    while (!sending->isOver && Clock::now() < end)
        g_main_context_iteration(nullptr, TRUE);
    g_source_remove(retry);
    sending->isOver = true;
    return sending->isReceived;
}

void sendInBackground(const ControlCommand& command) {
    startSending(command);
}

bool quitRunningCopies(std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    // Repeated: the program may just be starting another one of them, for example its guard.
    for (std::vector<Copy> copies = runningCopies(); !copies.empty(); copies = runningCopies()) {
        bool haveAllEnded = true;
        for (const Copy& copy : copies)
            if (copy.isShell)
                pidfd_send_signal(copy.handle, SIGTERM, nullptr, 0);
        for (const Copy& copy : copies) {
            haveAllEnded = hasEnded(copy, end) && haveAllEnded;
            ::close(copy.handle);
        }
        if (!haveAllEnded)
            return false;
    }
    return true;
}
