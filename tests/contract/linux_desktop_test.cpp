// Other programs of a Linux session on the X server and the message buses.

#include "common/linux/bus_address.h"
#include "contract_test.h"
#include "platform/elements.h"
#include "platform/injection.h"
#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"
#include "platform/linux/x11.h"

#include <gio/gio.h>
#include <unistd.h>

#include <atomic>
#include <future>

using namespace rotika;

namespace {

using LinuxDesktop = ContractTest;

const std::unique_ptr<Display, int (*)(Display*)> other(XOpenDisplay(nullptr), XCloseDisplay);

TEST_F(LinuxDesktop, ACursorMovedByAnotherProgramDuringACaptureIsPutBack) {
    beginCapture(overRecorder);
    XWarpPointer(other.get(), noXid, DefaultRootWindow(other.get()), 0, 0, 0, 0, 20, 30);
    XSync(other.get(), 0);
    EXPECT_NE(cursorPosition(), overRecorder);
    EXPECT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
}

/// The owner thread, which then watches for taps of the key, must not mistake our own press for one.
TEST_F(LinuxDesktop, AKeyThatIsLeftDownStaysDown) {
    constexpr std::uint16_t control = 0x11;
    const KeyCode code = keycodeOfVirtualKey(ownerDisplay(), control);
    for (int round = 0; round < 150; ++round) {
        const auto press =
            std::async(std::launch::async, injectKey, control, false, InputMotion::downPersistent);
        ASSERT_TRUE(pumpUntil(
            [&] { return press.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready; }));
        for (int i = 0; i < 3; ++i)
            pumpOnce();
        ASSERT_TRUE(isKeyDown(ownerDisplay(), code)) << round;
        injectKey(control, false, InputMotion::up);
    }
}

/// Another program on a bus.
class BusProgram {
public:
    /// Called on a thread of GIO for each call to the program; null sends no reply.
    using CallHandler =
        std::function<GVariant*(const std::string& path, const std::string& member, GVariant*)>;

    explicit BusProgram(CallHandler callHandler, const std::string& address = sessionBusAddress())
        : handler(std::move(callHandler)) {
        const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        bus = g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr);
        g_dbus_connection_add_filter(bus, onMessage, this, nullptr);
    }
    ~BusProgram() {
        g_dbus_connection_flush_sync(bus, nullptr, nullptr); // pending replies must be sent
        g_dbus_connection_close_sync(bus, nullptr, nullptr);
        g_object_unref(bus);
    }

    std::string name() const { return g_dbus_connection_get_unique_name(bus); }
    void own(const char* wellKnown) {
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
             g_variant_new("(su)", wellKnown, 0U));
    }
    /// The reply if it is a string, otherwise empty.
    std::string call(const char* to, const char* path, const char* interface, const char* method,
                     GVariant* arguments) {
        GVariant* values = g_dbus_connection_call_sync(bus, to, path, interface, method, arguments, nullptr,
                                                       G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        const char* text = "";
        if (g_variant_is_of_type(values, G_VARIANT_TYPE("(s)")))
            g_variant_get(values, "(&s)", &text);
        const std::string reply = text;
        g_variant_unref(values);
        return reply;
    }
    void emit(const char* path, const char* interface, const char* signal, GVariant* values) {
        g_dbus_connection_emit_signal(bus, nullptr, path, interface, signal, values, nullptr);
    }

private:
    static GDBusMessage* onMessage(GDBusConnection* bus, GDBusMessage* message, gboolean isIncoming,
                                   gpointer program) {
        if (isIncoming == 0 || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return message;
        GVariant* const values = static_cast<BusProgram*>(program)->handler(
            g_dbus_message_get_path(message), g_dbus_message_get_member(message),
            g_dbus_message_get_body(message));
        if (values != nullptr) {
            GDBusMessage* const reply = g_dbus_message_new_method_reply(message);
            g_dbus_message_set_body(reply, values);
            g_dbus_connection_send_message(bus, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
            g_object_unref(reply);
        }
        g_object_unref(message);
        return nullptr;
    }

    const CallHandler handler;
    GDBusConnection* bus = nullptr;
};

bool lockChangesAre(const std::vector<bool>& expected) {
    return pumpUntil([&] { return received.lockChanges == expected; });
}

TEST_F(LinuxDesktop, ALockersStateCountsFromItsStartToItsEnd) {
    constexpr char name[] = "org.cinnamon.ScreenSaver";
    auto saver = std::make_unique<BusProgram>([](auto&&...) { return g_variant_new("(b)", TRUE); });
    saver->own(name);
    ASSERT_TRUE(lockChangesAre({true})) << "the initial state is queried";
    for (const int isLocked : {1, 0, 1})
        saver->emit("/org/cinnamon/ScreenSaver", name, "ActiveChanged", g_variant_new("(b)", isLocked));
    EXPECT_TRUE(lockChangesAre({true, false, true}));
    saver.reset();
    EXPECT_TRUE(lockChangesAre({true, false, true, false})) << "a locker that died";
}

TEST_F(LinuxDesktop, TheLoginManagersLockRequestsExpireWithoutALocker) {
    constexpr char session[] = "/org/freedesktop/login1/session/_31";
    constexpr char interface[] = "org.freedesktop.login1.Session";
    BusProgram logind([&](const std::string&, const std::string& member, GVariant*) {
        return member == "GetSession" ? g_variant_new("(o)", session)
                                      : g_variant_new("(v)", g_variant_new_boolean(FALSE));
    });
    logind.own("org.freedesktop.login1");
    EXPECT_TRUE(pumpUntil([&] { // the signal counts only once our session is known
        logind.emit(session, interface, "Lock", nullptr);
        return !received.lockChanges.empty();
    }));
    logind.emit(session, interface, "Unlock", nullptr);
    logind.emit("/org/freedesktop/login1/session/_32", interface, "Lock", nullptr); // another user's
    EXPECT_TRUE(lockChangesAre({true, false}));
    logind.emit(session, interface, "Lock", nullptr); // no locker locks
    EXPECT_TRUE(lockChangesAre({true, false, true, false}));
}

// Roles and states of the AT-SPI protocol.
constexpr guint32 frame = 23, panel = 39, button = 43, application = 75;
constexpr guint32 usualStates = 1U << 24 | 1U << 25 | 1U << 30; // sensitive, showing, visible

struct Published {
    guint32 role;
    Rect place;
    std::vector<int> children = {}; // indexes of the program's objects
    const char* name = "";
};

class Publisher {
public:
    /// Object 0 is the application.
    explicit Publisher(std::vector<Published> published, int answersBeforeItStops = 1 << 30)
        : objects(std::move(published)), answersLeft(answersBeforeItStops) {
        bus.call("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root", "org.a11y.atspi.Socket",
                 "Embed", g_variant_new("(@(so))", reference(0)));
    }

    std::atomic<int> asked = 0;

private:
    GVariant* reference(int object) const {
        return g_variant_new("(so)", bus.name().c_str(),
                             ("/org/a11y/atspi/accessible/" + std::to_string(object)).c_str());
    }

    GVariant* answer(const Published& object, const std::string& member, GVariant* arguments) const {
        const Rect& place = object.place;
        if (member == "GetRole")
            return g_variant_new("(u)", object.role);
        if (member == "GetExtents")
            return g_variant_new("((iiii))", place.left, place.top, place.width(), place.height());
        if (member == "GetState")
            return g_variant_new_parsed("([%u, 0],)", usualStates);
        if (member == "GetChildren") {
            GVariantBuilder list;
            g_variant_builder_init(&list, G_VARIANT_TYPE("a(so)"));
            for (const int child : object.children)
                g_variant_builder_add_value(&list, reference(child));
            return g_variant_new("(a(so))", &list);
        }
        if (member == "GetChildAtIndex") {
            gint32 index = 0;
            g_variant_get(arguments, "(i)", &index);
            return g_variant_new("(@(so))", reference(object.children.at(static_cast<std::size_t>(index))));
        }
        const char* property = "";
        g_variant_get_child(arguments, 1, "&s", &property);
        return g_variant_new("(v)", std::string(property) == "Name"
                                        ? g_variant_new_string(object.name)
                                        : g_variant_new_int32(static_cast<gint32>(object.children.size())));
    }

    const std::vector<Published> objects;
    std::atomic<int> answersLeft;
    BusProgram bus{
        [this](const std::string& path, const std::string& member, GVariant* arguments) {
            ++asked;
            const auto object = std::stoul(path.substr(path.rfind('/') + 1));
            return answersLeft-- > 0 ? answer(objects.at(object), member, arguments) : nullptr;
        },
        BusProgram(nullptr).call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr)};
};

/// The left edges of the elements below each root.
using LeftEdges = std::vector<std::vector<int>>;

class LinuxElements : public ContractTest {
protected:
    void openFront(long process) {
        front = openRecorder(place);
        XStoreName(other.get(), windowOf(front->window()), "In front");
        setFrontNumbers("_NET_WM_PID", {process});
    }

    void setFrontNumbers(const char* name, const std::vector<long>& values) {
        XChangeProperty(other.get(), windowOf(front->window()), XInternAtom(other.get(), name, 0),
                        XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values.data()),
                        static_cast<int>(values.size()));
        XSync(other.get(), 0);
    }

    static LeftEdges search(std::size_t enough = 1 << 20) {
        const ElementSearch wanted{ElementScope::windowAndTaskbar, {}, [=](const FoundElements& beginning) {
                                       return !beginning.roots.empty() && beginning.roots[0].size() >= enough;
                                   }};
        LeftEdges edges;
        for (const auto& root : std::async(std::launch::async, findElements, wanted).get().roots) {
            edges.emplace_back();
            for (const ScreenElement& element : root)
                if (element.isEnabled && !element.isOffscreen)
                    edges.back().push_back(element.rect.left);
        }
        return edges;
    }

    static constexpr Rect place{200, 200, 800, 600};
    std::unique_ptr<Recorder> front;
    const Published someProgram{application, {}, {1}}, something{button, {300, 300, 350, 320}};
};

/// The program reports the scaled position of the frame.
TEST_F(LinuxElements, ManySearchesOfACyclicTreeLeakNoDescriptors) {
    openFront(getpid());
    setFrontNumbers("_NET_FRAME_EXTENTS", {2, 2, 40, 10});
    const Publisher program({someProgram,
                             {frame, {99, 80, 401, 305}, {2, 3}},
                             {panel, {99, 80, 401, 305}, {1, 2, 3}},
                             {button, {150, 160, 200, 180}}});
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    ASSERT_EQ(search(), (LeftEdges{{300}}));
    const auto before = descriptors();
    for (int i = 0; i < 100; ++i)
        search();
    EXPECT_LE(descriptors(), before + 2);
}

/// Full-screen windows share one place, and titles may be equal.
TEST_F(LinuxElements, NoOtherWindowIsMistakenForTheFrontOneAndAStoppedProgramDoesNotBlock) {
    openFront(1); // a game, a terminal, a program in a container: its process publishes nothing
    const Publisher stopped({}, 0);
    constexpr Rect elsewhere{0, 0, 200, 100};
    const std::pair<Published, LeftEdges> cases[] = {
        {{frame, place, {2}, "Other"}, {}},
        {{frame, elsewhere, {2}, "In front"}, {}},
        {{frame, place, {2}, "In front"}, {{300}}},
    };
    for (const auto& [window, expected] : cases) {
        const Publisher program({someProgram, window, something});
        // Waiting for the stopped program would find nothing. Repeated: a busy machine may reply too late.
        EXPECT_TRUE(pumpUntil([&wanted = expected] { return search() == wanted; })) << window.name;
    }
}

TEST_F(LinuxElements, TheFirstOfThousandsOfElementsAreFoundAloneAlsoIfTheProgramStops) {
    openFront(getpid());
    std::vector<Published> objects{someProgram, {frame, place}};
    for (int i = 0; i < 5000; ++i) {
        objects[1].children.push_back(i + 2);
        objects.push_back({button, {i, 300, i + 20, 320}});
    }
    for (const int answers : {1 << 30, 300}) {
        const Publisher program(objects, answers);
        const LeftEdges edges = search(99);
        ASSERT_EQ(edges.size(), 1U);
        ASSERT_GE(edges[0].size(), answers == 300 ? 20U : 99U);
        for (std::size_t i = 0; i < 20; ++i)
            EXPECT_EQ(edges[0][i], static_cast<int>(i));
        EXPECT_LT(program.asked, 4000);
    }
}

} // namespace
