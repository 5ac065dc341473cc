// What a Linux desktop does around the windows: it locks, changes its monitors, shows notifications, and
// other programs destroy what is not theirs.

#include "contract_test.h"
#include "platform/injection.h"
#include "platform/message_box.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"

#include "platform/linux/x11.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace {

using Changes = std::vector<bool>;

constexpr char saverName[] = "org.cinnamon.ScreenSaver";
constexpr char saverPath[] = "/org/cinnamon/ScreenSaver";
constexpr char saverMethods[] = R"(<node><interface name="org.cinnamon.ScreenSaver">
    <method name="GetActive"><arg type="b" direction="out"/></method></interface></node>)";

constexpr char logindName[] = "org.freedesktop.login1";
constexpr char logindPath[] = "/org/freedesktop/login1";
constexpr char logindMethods[] = R"(<node><interface name="org.freedesktop.login1.Manager">
    <method name="GetSession"><arg type="s" direction="in"/><arg type="o" direction="out"/></method>
    </interface></node>)";
constexpr char sessionName[] = "org.freedesktop.login1.Session";
constexpr char sessionPath[] = "/org/freedesktop/login1/session/_31";
constexpr char sessionProperties[] = R"(<node><interface name="org.freedesktop.login1.Session">
    <property name="LockedHint" type="b" access="read"/></interface></node>)";

constexpr char noticeName[] = "org.freedesktop.Notifications";
constexpr char noticePath[] = "/org/freedesktop/Notifications";
constexpr char noticeMethods[] = R"(<node><interface name="org.freedesktop.Notifications">
    <method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="as" direction="in"/><arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/></method></interface></node>)";

/// Another program on the test's bus, which is session and system bus at once.
class BusProgram {
public:
    using Answer = std::function<GVariant*(GVariant* arguments)>;

    BusProgram()
        : bus(g_dbus_connection_new_for_address_sync(
              std::getenv("DBUS_SESSION_BUS_ADDRESS"),
              static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
              nullptr, nullptr, nullptr)) {}
    ~BusProgram() {
        g_dbus_connection_flush_sync(bus, nullptr, nullptr); // an answer under way still counts
        g_dbus_connection_close_sync(bus, nullptr, nullptr);
        g_object_unref(bus);
    }
    BusProgram(const BusProgram&) = delete;
    BusProgram& operator=(const BusProgram&) = delete;

    /// `answer` is for calls and for readings of properties alike.
    void serve(const char* path, const char* description, Answer answer) {
        answers[path] = std::move(answer);
        static const GDBusInterfaceVTable table{
            [](GDBusConnection*, const gchar*, const gchar* object, const gchar*, const gchar*,
               GVariant* arguments, GDBusMethodInvocation* call, gpointer data) {
                auto& own = *static_cast<std::map<std::string, Answer>*>(data);
                g_dbus_method_invocation_return_value(call, own[object](arguments));
            },
            [](GDBusConnection*, const gchar*, const gchar* object, const gchar*, const gchar*, GError**,
               gpointer data) {
                return (*static_cast<std::map<std::string, Answer>*>(data))[object](nullptr);
            },
            nullptr,
            {}};
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description, nullptr);
        g_dbus_connection_register_object(bus, path, node->interfaces[0], &table, &answers, nullptr, nullptr);
        g_dbus_node_info_unref(node);
    }

    void own(const char* name) {
        g_variant_unref(g_dbus_connection_call_sync(
            bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    }

    void emit(const char* path, const char* interface, const char* signal, GVariant* values) {
        g_dbus_connection_emit_signal(bus, nullptr, path, interface, signal, values, nullptr);
    }

private:
    GDBusConnection* bus;
    std::map<std::string, Answer> answers;
};

class LinuxDesktop : public ContractTest {
protected:
    LinuxDesktop() : other(XOpenDisplay(nullptr)) {}
    ~LinuxDesktop() override { XCloseDisplay(other); }

    Window root() { return DefaultRootWindow(other); }
    Atom atom(const char* name) { return XInternAtom(other, name, 0); }

    static bool lockChangesAre(const Changes& expected) {
        return pumpUntil([&] { return heard.lockChanges == expected; });
    }

    /// XScreenSaver's way; null for none of its words.
    void setSaverProperty(const char* word) {
        const unsigned long values[] = {word == nullptr ? 0 : atom(word), 1'700'000'000, 1};
        XChangeProperty(other, root(), atom("_SCREENSAVER_STATUS"), XA_INTEGER, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values), 3);
        XFlush(other);
    }

    void setMonitor(const char* name, int x, int width) {
        XRRMonitorInfo* const monitor = XRRAllocateMonitor(other, 0);
        monitor->name = atom(name);
        monitor->x = x;
        monitor->width = width;
        monitor->height = 800;
        monitor->mwidth = monitor->mheight = 200;
        XRRSetMonitor(other, root(), monitor);
        XRRFreeMonitors(monitor);
        XFlush(other);
    }

    /// A managed window whose title begins so; 0 if there is none.
    Window windowTitled(const std::string& beginning) {
        for (const auto& [window, title] : managedWindows())
            if (title.starts_with(beginning))
                return window;
        return noXid;
    }

    Display* other;

private:
    std::vector<unsigned char> property(Window window, const char* name) {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(other, window, atom(name), 0, 1000, 0, AnyPropertyType, &type, &format, &count,
                           &left, &data);
        const XOwned<unsigned char> owned(data);
        return {data, data + count * (format == 32 ? sizeof(long) : 1)};
    }

    std::map<Window, std::string> managedWindows() {
        std::map<Window, std::string> titles;
        const std::vector<unsigned char> bytes = property(root(), "_NET_CLIENT_LIST");
        for (std::size_t i = 0; i + sizeof(Window) <= bytes.size(); i += sizeof(Window)) {
            const Window window = *reinterpret_cast<const Window*>(bytes.data() + i);
            const std::vector<unsigned char> title = property(window, "_NET_WM_NAME");
            titles[window].assign(title.begin(), title.end());
        }
        return titles;
    }
};

TEST_F(LinuxDesktop, ALockerOfTheDesktopIsBelievedFromItsComingToItsEnd) {
    bool isActive = true;
    auto saver = std::make_unique<BusProgram>();
    saver->serve(saverPath, saverMethods, [&](GVariant*) { return g_variant_new("(b)", isActive); });
    saver->own(saverName);
    ASSERT_TRUE(lockChangesAre({true})) << "asked whether it is locked already";
    BusProgram().emit(saverPath, saverName, "ActiveChanged", g_variant_new("(b)", FALSE)); // not the locker
    saver->emit(saverPath, saverName, "ActiveChanged", g_variant_new("(s)", "no"));
    saver->emit(saverPath, saverName, "ActiveChanged", g_variant_new("(b)", TRUE));
    saver->emit(saverPath, saverName, "ActiveChanged", g_variant_new("(b)", FALSE));
    EXPECT_TRUE(lockChangesAre({true, false}));
    saver->emit(saverPath, saverName, "ActiveChanged", g_variant_new("(b)", TRUE));
    EXPECT_TRUE(lockChangesAre({true, false, true}));
    saver.reset();
    EXPECT_TRUE(lockChangesAre({true, false, true, false})) << "a locker that died";
}

TEST_F(LinuxDesktop, TheLoginManagersHintCountsAndItsRequestsForAWhile) {
    bool isHinted = false;
    BusProgram logind;
    logind.serve(logindPath, logindMethods, [](GVariant*) { return g_variant_new("(o)", sessionPath); });
    logind.serve(sessionPath, sessionProperties, [&](GVariant*) { return g_variant_new_boolean(isHinted); });
    isHinted = true;
    logind.own(logindName);
    ASSERT_TRUE(lockChangesAre({true}));
    const auto hint = [&](bool isLocked) {
        isHinted = isLocked;
        logind.emit(sessionPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                    g_variant_new("(sa{sv}as)", sessionName, nullptr, nullptr));
    };
    hint(false);
    ASSERT_TRUE(lockChangesAre({true, false}));
    logind.emit("/org/freedesktop/login1/session/_32", sessionName, "Lock", nullptr); // another person's
    logind.emit(sessionPath, sessionName, "Lock", nullptr);
    ASSERT_TRUE(lockChangesAre({true, false, true}));
    hint(true);
    logind.emit(sessionPath, sessionName, "Unlock", nullptr);
    hint(false);
    EXPECT_TRUE(lockChangesAre({true, false, true, false}));
    logind.emit(sessionPath, sessionName, "Lock", nullptr); // and no locker obeys
    EXPECT_TRUE(lockChangesAre({true, false, true, false, true, false}));
}

TEST_F(LinuxDesktop, ALockOfXScreenSaverCountsAndADarkScreenDoesNot) {
    setSaverProperty("LOCK");
    EXPECT_TRUE(lockChangesAre({true}));
    setSaverProperty("BLANK");
    EXPECT_TRUE(lockChangesAre({true, false}));
    setSaverProperty(nullptr);
}

TEST_F(LinuxDesktop, AChangeOfTheMonitorsIsToldOnceHoweverManyEventsItMakes) {
    setMonitor("left", 0, 640);
    setMonitor("right", 640, 640);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges == 1; }));
    setMonitor("left", 0, 640); // as it is
    XRRDeleteMonitor(other, root(), atom("right"));
    XRRDeleteMonitor(other, root(), atom("left"));
    XFlush(other);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges == 2; }));
}

TEST_F(LinuxDesktop, ACursorThatAnotherProgramMovesDuringACaptureComesBack) {
    setCursorPosition({300, 250});
    beginCapture({300, 250});
    XWarpPointer(other, noXid, root(), 0, 0, 0, 0, 20, 30);
    XSync(other, 0);
    EXPECT_NE(cursorPosition(), (Point{300, 250}));
    EXPECT_TRUE(pumpUntil([] { return cursorPosition() == (Point{300, 250}); }));
}

TEST_F(LinuxDesktop, ADestroyedLayerIsToldOnceAndItsHandleHarmsNothing) {
    static int destroyed;
    destroyed = 0;
    const WindowHandle layer =
        createOverlayWindow(OverlayKind::wheel, 50, 50, {.destroyed = []() noexcept { ++destroyed; }});
    placeOverlayWindow(layer, {0, 0, 50, 50});
    showOverlayWindow(layer);
    XDestroyWindow(other, windowOf(layer));
    XFlush(other);
    EXPECT_TRUE(pumpUntil([] { return destroyed == 1; }));
    presentPicture(layer, plainPicture(50, 50, {0xFF, 1, 2, 3}));
    showOverlayWindow(layer);
    hideOverlayWindow(layer);
    EXPECT_EQ(overlayWindowRect(layer), Rect{});
}

TEST_F(LinuxDesktop, AWarningIsANotificationOrAWindowThatBlocksNothing) {
    std::string told;
    {
        BusProgram server;
        server.serve(noticePath, noticeMethods, [&](GVariant* arguments) {
            const char* summary = nullptr;
            const char* body = nullptr;
            g_variant_get_child(arguments, 3, "&s", &summary);
            g_variant_get_child(arguments, 4, "&s", &body);
            told += std::string(summary) + "|" + body;
            return g_variant_new("(u)", 7U);
        });
        server.own(noticeName);
        showWarningBox(u"Rotika", u"Skrót '<' jest zajęty.");
        EXPECT_TRUE(pumpUntil([&] { return !told.empty(); }));
        EXPECT_EQ(told, "Rotika|Skrót '&lt;' jest zajęty.");
    }
    showWarningBox(u"Rotika", u"Skrót 'y'\njest zajęty."); // nobody notifies any more
    EXPECT_TRUE(pumpUntil([&] { return windowTitled("Rotika: Skrót 'y' jest zajęty.") != noXid; }));
    EXPECT_EQ(windowTitled("Rotika: Skrót '<'"), noXid);
    EXPECT_TRUE(pumpUntil([&] {
        injectKey(0x0D, false, InputMotion::downUntilReleased); // until it has the keyboard
        injectKey(0x0D, false, InputMotion::up);
        return windowTitled("Rotika: ") == noXid;
    }));
}

} // namespace
