// What other programs of a Linux session say on the message buses: that it is locked, and what their windows
// hold.

#include "contract_test.h"
#include "platform/elements.h"
#include "platform/message_box.h"

#include "platform/linux/x11.h"

#include <gio/gio.h>
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>

namespace {

/// Another program on a bus.
class BusProgram {
public:
    /// Called on a thread of GIO for each call to the program; without a value the caller waits in vain.
    using Answer = std::function<GVariant*(const std::string& path, const std::string& member, GVariant*)>;

    explicit BusProgram(Answer answer, const std::string& address = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        : answering(std::move(answer)) {
        const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        bus = g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr);
        g_dbus_connection_add_filter(bus, onMessage, this, nullptr);
    }
    ~BusProgram() {
        g_dbus_connection_flush_sync(bus, nullptr, nullptr); // an answer under way still counts
        g_dbus_connection_close_sync(bus, nullptr, nullptr);
        g_object_unref(bus);
    }
    BusProgram(const BusProgram&) = delete;
    BusProgram& operator=(const BusProgram&) = delete;

    std::string name() const { return g_dbus_connection_get_unique_name(bus); }
    void own(const char* wellKnown) {
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
             g_variant_new("(su)", wellKnown, 0U));
    }
    /// The answer, if it is a text.
    std::string call(const char* to, const char* path, const char* interface, const char* method,
                     GVariant* arguments) {
        GVariant* values = g_dbus_connection_call_sync(bus, to, path, interface, method, arguments, nullptr,
                                                       G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        const char* text = "";
        if (g_variant_is_of_type(values, G_VARIANT_TYPE("(s)")))
            g_variant_get(values, "(&s)", &text);
        const std::string answered = text;
        g_variant_unref(values);
        return answered;
    }
    void emit(const char* path, const char* interface, const char* signal, GVariant* values) {
        g_dbus_connection_emit_signal(bus, nullptr, path, interface, signal, values, nullptr);
    }

private:
    static GDBusMessage* onMessage(GDBusConnection* bus, GDBusMessage* message, gboolean isIncoming,
                                   gpointer program) {
        if (isIncoming == 0 || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return message;
        GVariant* const values = static_cast<BusProgram*>(program)->answering(
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

    const Answer answering;
    GDBusConnection* bus = nullptr;
};

using LinuxSession = ContractTest;

bool lockChangesAre(const std::vector<bool>& expected) {
    return pumpUntil([&] { return heard.lockChanges == expected; });
}

TEST_F(LinuxSession, ALockerIsBelievedFromItsComingToItsEnd) {
    constexpr char path[] = "/org/cinnamon/ScreenSaver", name[] = "org.cinnamon.ScreenSaver";
    const auto isActive = [](auto&&...) { return g_variant_new("(b)", TRUE); };
    auto saver = std::make_unique<BusProgram>(isActive);
    saver->own(name);
    ASSERT_TRUE(lockChangesAre({true})) << "asked whether it is locked already";
    BusProgram(isActive).emit(path, name, "ActiveChanged", g_variant_new("(b)", FALSE)); // not the locker
    saver->emit(path, name, "ActiveChanged", g_variant_new("(s)", "no"));
    for (const int isLocked : {1, 0, 1})
        saver->emit(path, name, "ActiveChanged", g_variant_new("(b)", isLocked));
    EXPECT_TRUE(lockChangesAre({true, false, true}));
    saver.reset();
    EXPECT_TRUE(lockChangesAre({true, false, true, false})) << "a locker that died";
}

TEST_F(LinuxSession, TheLoginManagersHintCountsAndItsRequestsForAWhile) {
    constexpr char session[] = "/org/freedesktop/login1/session/_31";
    constexpr char interface[] = "org.freedesktop.login1.Session";
    std::atomic<bool> isHinted = true;
    BusProgram logind([&](const std::string&, const std::string& member, GVariant*) {
        return member == "GetSession" ? g_variant_new("(o)", session)
                                      : g_variant_new("(v)", g_variant_new_boolean(isHinted));
    });
    const auto hint = [&](bool isLocked) {
        isHinted = isLocked;
        logind.emit(session, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                    g_variant_new("(sa{sv}as)", interface, nullptr, nullptr));
    };
    logind.own("org.freedesktop.login1");
    ASSERT_TRUE(lockChangesAre({true}));
    hint(false);
    ASSERT_TRUE(lockChangesAre({true, false}));
    logind.emit("/org/freedesktop/login1/session/_32", interface, "Lock", nullptr); // another person's
    logind.emit(session, interface, "Lock", nullptr);
    ASSERT_TRUE(lockChangesAre({true, false, true}));
    hint(true);
    logind.emit(session, interface, "Unlock", nullptr);
    hint(false);
    EXPECT_TRUE(lockChangesAre({true, false, true, false}));
    logind.emit(session, interface, "Lock", nullptr); // and no locker obeys
    EXPECT_TRUE(lockChangesAre({true, false, true, false, true, false}));
}

TEST_F(LinuxSession, AWarningIsANotificationWithoutMarkup) {
    std::promise<std::string> told;
    BusProgram server([&](const std::string&, const std::string&, GVariant* arguments) {
        const char *summary = nullptr, *body = nullptr;
        g_variant_get_child(arguments, 3, "&s", &summary);
        g_variant_get_child(arguments, 4, "&s", &body);
        told.set_value(std::string(summary) + "|" + body);
        return g_variant_new("(u)", 7U);
    });
    server.own("org.freedesktop.Notifications");
    showWarningBox(u"Rotika", u"Skrót '<' jest zajęty.");
    auto text = told.get_future();
    ASSERT_TRUE(
        pumpUntil([&] { return text.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(text.get(), "Rotika|Skrót '&lt;' jest zajęty.");
}

// Roles and states of the AT-SPI protocol.
constexpr guint32 frame = 23, menuItem = 35, panel = 39, button = 43, popup = 69, application = 75, link = 88,
                  webDocument = 95;
constexpr guint32 active = 1U << 1;
constexpr guint32 usualStates = 1U << 24 | 1U << 25 | 1U << 30; // sensitive, showing, visible

struct Published {
    guint32 role = button;
    Rect place = {};
    std::vector<int> children = {}; // numbers among the program's objects
    std::string name = {};
    bool isActive = false;
};
using Objects = std::vector<Published>; // number 0 is the application

class Publisher {
public:
    explicit Publisher(Objects published, int answersBeforeItStops = 1 << 30)
        : objects(std::move(published)), answersLeft(answersBeforeItStops) {
        bus.call("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root", "org.a11y.atspi.Socket",
                 "Embed", g_variant_new("(@(so))", reference(0)));
    }
    /// Of an application with one window, which holds the others, or what it says itself.
    Publisher(Published window, const Objects& others, int answersBeforeItStops = 1 << 30)
        : Publisher(applicationWith(std::move(window), others), answersBeforeItStops) {}

    std::atomic<int> asked = 0;

private:
    static Objects applicationWith(Published window, const Objects& others) {
        Objects all{{application, {}, {1}}, std::move(window)};
        const bool isFilled = !all[1].children.empty();
        for (const Published& object : others) {
            if (!isFilled)
                all[1].children.push_back(static_cast<int>(all.size()));
            all.push_back(object);
        }
        return all;
    }

    static std::string accessibilityBus() {
        return BusProgram(nullptr).call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                                        nullptr);
    }

    GVariant* reference(int object) const {
        return g_variant_new("(so)", bus.name().c_str(),
                             ("/org/a11y/atspi/accessible/" + std::to_string(object)).c_str());
    }

    GVariant* valueOf(const Published& object, const std::string& member, GVariant* arguments) const {
        const Rect& place = object.place;
        if (member == "GetRole")
            return g_variant_new("(u)", object.role);
        if (member == "GetExtents")
            return g_variant_new("((iiii))", place.left, place.top, place.width(), place.height());
        if (member == "GetState")
            return g_variant_new_parsed("([%u, 0],)", usualStates | (object.isActive ? active : 0));
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
                                        ? g_variant_new_string(object.name.c_str())
                                        : g_variant_new_int32(static_cast<gint32>(object.children.size())));
    }

    const Objects objects;
    std::atomic<int> answersLeft;
    BusProgram bus{[this](const std::string& path, const std::string& member, GVariant* arguments) {
                       ++asked;
                       return answersLeft-- > 0
                                  ? valueOf(objects.at(std::stoul(path.substr(path.rfind('/') + 1))), member,
                                            arguments)
                                  : nullptr;
                   },
                   accessibilityBus()};
};

/// The left edges of what was found below each root.
using Lefts = std::vector<std::vector<int>>;

class LinuxElements : public ContractTest {
protected:
    ~LinuxElements() override {
        setNumbers(DefaultRootWindow(other), "_NET_ACTIVE_WINDOW", {0});
        XCloseDisplay(other);
    }

    /// In front, as far as the window manager's word goes.
    Window openFront(long process) {
        const Window front = show(place, process);
        setNumbers(DefaultRootWindow(other), "_NET_ACTIVE_WINDOW", {static_cast<long>(front)});
        return front;
    }

    /// Out of the window manager's hands, like a menu.
    Window show(const Rect& where, long process) {
        XSetWindowAttributes values{};
        values.override_redirect = 1;
        const Window made = XCreateWindow(
            other, DefaultRootWindow(other), where.left, where.top, static_cast<unsigned>(where.width()),
            static_cast<unsigned>(where.height()), 0, 0, InputOutput, nullptr, CWOverrideRedirect, &values);
        XStoreName(other, made, "In front");
        XMapRaised(other, made);
        setNumbers(made, "_NET_WM_PID", {process});
        return made;
    }

    void setNumbers(Window of, const char* name, const std::vector<long>& values) {
        XChangeProperty(other, of, XInternAtom(other, name, 0), XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values.data()),
                        static_cast<int>(values.size()));
        XSync(other, 0);
    }

    FoundElements search(ElementScope scope = ElementScope::windowAndTaskbar, std::size_t enough = 1 << 20) {
        const auto begin = watchMs();
        const ElementSearch wanted{scope, {}, [enough](const FoundElements& beginning) {
                                       return !beginning.roots.empty() && beginning.roots[0].size() >= enough;
                                   }};
        FoundElements found = std::async(std::launch::async, findElements, wanted).get();
        tookMs = watchMs() - begin;
        return found;
    }

    static Lefts leftsOf(const FoundElements& found) {
        Lefts lefts;
        for (const auto& root : found.roots) {
            lefts.emplace_back();
            for (const ScreenElement& element : root)
                if (element.isEnabled && !element.isOffscreen)
                    lefts.back().push_back(element.rect.left);
        }
        return lefts;
    }

    static constexpr Rect place{200, 200, 800, 600}, elsewhere{0, 0, 200, 100};
    const Published something{button, {300, 300, 350, 320}};
    Display* const other = XOpenDisplay(nullptr);
    std::uint64_t tookMs = 0;
};

TEST_F(LinuxElements, ManySearchesOfATreeThatBitesItsTailLeaveNothingBehind) {
    openFront(getpid());
    const Publisher program({frame, place, {2, 3}}, {{panel, place, {1, 2, 3}}, something});
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    ASSERT_EQ(leftsOf(search()), (Lefts{{300}}));
    const auto before = descriptors();
    const std::size_t bytesBefore = mallinfo2().uordblks;
    for (int i = 0; i < 100; ++i)
        search();
    EXPECT_LE(descriptors(), before + 2);
    EXPECT_LT(mallinfo2().uordblks, bytesBefore + 300'000);
}

TEST_F(LinuxElements, NoOtherWindowIsTakenForTheOneInFront) {
    openFront(getpid()); // a film over the whole screen
    const Window behind = show(place, getpid());
    XStoreName(other, behind, "Library - Player");
    XUnmapWindow(other, behind);
    setNumbers(DefaultRootWindow(other), "_NET_CLIENT_LIST", {static_cast<long>(behind)});
    {
        const Publisher program({frame, place, {}, "Library"}, {something});
        EXPECT_EQ(leftsOf(search()), Lefts{}) << "of the same program";
    }
    setNumbers(DefaultRootWindow(other), "_NET_CLIENT_LIST", {});
    openFront(1); // a game's, a terminal's: their programs publish nothing
    const Publisher stopped({}, 0);
    const std::pair<Published, Lefts> cases[] = {
        {{frame, elsewhere, {}, "Other", true}, {}},
        {{frame, place, {}, "Other", false}, {}}, // windows that fill the screen
        {{frame, elsewhere, {}, "In front", false}, {}},
        {{frame, place, {}, "In front", false}, {{300}}}, // a program in a container
        {{frame, elsewhere, {}, "In front", true}, {{300}}},
    };
    for (const auto& [published, expected] : cases) {
        const Publisher program(published, {something});
        EXPECT_EQ(leftsOf(search()), expected) << published.name << published.isActive;
        EXPECT_LT(tookMs, 1200U) << "held up by the stopped one";
    }
}

TEST_F(LinuxElements, AnOpenMenuComesFirstAndHidesWhatLiesBelow) {
    openFront(getpid());
    const Rect menu{300, 300, 400, 400};
    const Published item{menuItem, {310, 310, 390, 330}};
    show(menu, getpid());
    {
        const Publisher program({{application, {}, {1, 2}},
                                 {frame, place, {4, 5}},
                                 {popup, menu, {3}},
                                 item,
                                 {button, {320, 320, 380, 380}},
                                 {button, {500, 300, 550, 320}}});
        EXPECT_EQ(leftsOf(search()), (Lefts{{310}, {500}}));
    }
    const Publisher program({popup, menu}, {item}); // over a window that nobody publishes
    EXPECT_EQ(leftsOf(search()), (Lefts{{310}}));
}

TEST_F(LinuxElements, OfAWindowOfThousandsTheFirstAreFoundSoonAndWithoutTheRest) {
    openFront(getpid());
    Objects rows(50'000);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i].place = {static_cast<int>(i), 300, static_cast<int>(i) + 20, 320};
    for (const int answers : {1 << 30, 300}) { // the second stops on the way
        const Publisher program({frame, place}, rows, answers);
        const Lefts lefts = leftsOf(search(ElementScope::windowAndTaskbar, 99));
        ASSERT_EQ(lefts.size(), 1U);
        ASSERT_GE(lefts[0].size(), answers == 300 ? 20U : 99U);
        for (std::size_t i = 0; i < 20; ++i)
            EXPECT_EQ(lefts[0][i], static_cast<int>(i));
        EXPECT_LT(program.asked, 4000);
        EXPECT_LT(tookMs, 4000U);
    }
}

TEST_F(LinuxElements, APageIsTheLargestWebDocumentNotTheSideBar) {
    openFront(getpid());
    const Rect side{place.left, place.top, place.left + 210, place.bottom};
    const Rect page{side.right, place.top, place.right, place.bottom};
    const Publisher program({frame, place, {2, 3}}, {{webDocument, side, {4}},
                                                     {webDocument, page, {5}},
                                                     {link, {side.left, 300, side.left + 50, 320}},
                                                     {link, {page.left, 300, page.left + 50, 320}}});
    const FoundElements found = search(ElementScope::page);
    EXPECT_EQ(leftsOf(found), (Lefts{{page.left}}));
    EXPECT_EQ(found.area, page);
}

TEST_F(LinuxElements, AScaledFrameIsComparedWithTheFrame) {
    setNumbers(openFront(getpid()), "_NET_FRAME_EXTENTS", {2, 2, 40, 10});
    const Publisher program({frame, {99, 80, 401, 305}}, {{button, {150, 160, 200, 180}}});
    const FoundElements found = search();
    ASSERT_EQ(leftsOf(found).size(), 1U);
    EXPECT_NEAR(found.roots[0][0].rect.left, 300, 2);
    EXPECT_NEAR(found.roots[0][0].rect.top, 320, 2);
}

} // namespace
