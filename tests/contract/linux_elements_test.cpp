// The search for elements on Linux, among made-up programs on the real accessibility bus.

#include "contract_test.h"
#include "platform/elements.h"

#include "platform/linux/x11.h"

#include <gio/gio.h>
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <iterator>

namespace {

using Lefts = std::vector<std::vector<int>>;

// Roles and states of the AT-SPI protocol.
constexpr guint32 frame = 23, menuItem = 35, panel = 39, button = 43, popup = 69, application = 75, link = 88,
                  webDocument = 95;
constexpr guint32 active = 1U << 1;
constexpr guint32 usualStates =
    1U << 24 | 1U << 25 | 1U << 30; // sensitive, showing, visible; a half-checked box of GTK is not "enabled"

struct Published {
    guint32 role = button;
    Rect place = {};
    std::vector<int> children = {}; // numbers among the program's objects
    std::string name = {};
    bool isActive = false;
};

/// A program that publishes objects; number 0 is its root. Answers on a thread of GIO.
class Publisher {
public:
    explicit Publisher(std::vector<Published> published, int answersBeforeItStops = 1 << 30)
        : objects(std::move(published)), answersLeft(answersBeforeItStops) {
        GDBusConnection* session = connect(std::getenv("DBUS_SESSION_BUS_ADDRESS"));
        bus = connect(call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress", nullptr));
        g_object_unref(session);
        g_dbus_connection_add_filter(bus, answer, this, nullptr);
        call(bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root", "org.a11y.atspi.Socket.Embed",
             g_variant_new("(@(so))", reference(0)));
    }
    ~Publisher() {
        g_dbus_connection_close_sync(bus, nullptr, nullptr);
        g_object_unref(bus);
    }

    std::atomic<int> asked = 0;

private:
    static GDBusConnection* connect(const std::string& address) {
        const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        return g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr);
    }

    /// The answer, if it is a text.
    static std::string call(GDBusConnection* bus, const char* name, const char* path,
                            const std::string& method, GVariant* arguments) {
        const std::size_t dot = method.rfind('.');
        GVariant* values = g_dbus_connection_call_sync(bus, name, path, method.substr(0, dot).c_str(),
                                                       method.substr(dot + 1).c_str(), arguments, nullptr,
                                                       G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        const char* text = "";
        if (g_variant_is_of_type(values, G_VARIANT_TYPE("(s)")))
            g_variant_get(values, "(&s)", &text);
        const std::string answered = text;
        g_variant_unref(values);
        return answered;
    }

    static GDBusMessage* answer(GDBusConnection* bus, GDBusMessage* message, gboolean isIncoming,
                                gpointer data) {
        auto* publisher = static_cast<Publisher*>(data);
        if (isIncoming == 0 || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return message;
        ++publisher->asked;
        if (publisher->answersLeft-- > 0) {
            const std::string path = g_dbus_message_get_path(message);
            const Published& object = publisher->objects[std::stoul(path.substr(path.rfind('/') + 1))];
            GDBusMessage* reply = g_dbus_message_new_method_reply(message);
            g_dbus_message_set_body(reply, publisher->valueOf(object, g_dbus_message_get_member(message),
                                                              g_dbus_message_get_body(message)));
            g_dbus_connection_send_message(bus, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
            g_object_unref(reply);
        }
        g_object_unref(message);
        return nullptr;
    }

    GVariant* reference(int object) const {
        return g_variant_new("(so)", g_dbus_connection_get_unique_name(bus),
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
        if (std::string(property) == "Name")
            return g_variant_new("(v)", g_variant_new_string(object.name.c_str()));
        return g_variant_new("(v)", g_variant_new_int32(static_cast<gint32>(object.children.size())));
    }

    std::vector<Published> objects;
    std::atomic<int> answersLeft;
    GDBusConnection* bus = nullptr;
};

class LinuxElements : public ContractTest {
protected:
    LinuxElements() : other(XOpenDisplay(nullptr)) {}
    ~LinuxElements() override {
        setNumbers(DefaultRootWindow(other), "_NET_ACTIVE_WINDOW", {0});
        XCloseDisplay(other);
    }

    /// In front, as far as the window manager's word goes.
    void openFront(long process) {
        front = show(place, process);
        setNumbers(DefaultRootWindow(other), "_NET_ACTIVE_WINDOW", {static_cast<long>(front)});
    }

    /// Out of the window manager's hands, like a menu.
    Window show(const Rect& where, long process) {
        XSetWindowAttributes values{};
        values.override_redirect = 1;
        const Window made = XCreateSimpleWindow(other, DefaultRootWindow(other), where.left, where.top,
                                                where.width(), where.height(), 0, 0, 0);
        XChangeWindowAttributes(other, made, CWOverrideRedirect, &values);
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

    /// Of an application with one window, which holds what else there is.
    static std::vector<Published> programWith(Published window, const std::vector<Published>& others) {
        std::vector<Published> objects{{application, {}, {1}}, std::move(window)};
        for (const Published& object : others) {
            if (objects[1].children.size() < others.size())
                objects[1].children.push_back(static_cast<int>(objects.size()));
            objects.push_back(object);
        }
        return objects;
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

    const Published something{button, {300, 300, 350, 320}};
    Display* other;
    Window front = noXid;
    const Rect place{200, 200, 800, 600};
    std::uint64_t tookMs = 0;
};

TEST_F(LinuxElements, ManySearchesOfATreeThatBitesItsTailLeaveNothingBehind) {
    openFront(getpid());
    const Publisher program(programWith({frame, place}, {{panel, place, {1, 2, 3}}, something}));
    const auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
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
        const Publisher program(programWith({frame, place, {}, "Library"}, {something}));
        EXPECT_EQ(leftsOf(search()), Lefts{}) << "of the same program";
    }
    setNumbers(DefaultRootWindow(other), "_NET_CLIENT_LIST", {});
    openFront(1); // a game's, a terminal's: their programs publish nothing
    const Rect elsewhere{0, 0, 200, 100};
    const Publisher stopped({}, 0);
    const std::vector<std::pair<Published, bool>> cases{
        {{frame, elsewhere, {}, "Other", true}, false},
        {{frame, place, {}, "Other", false}, false}, // windows that fill the screen
        {{frame, elsewhere, {}, "In front", false}, false},
        {{frame, place, {}, "In front", false}, true}, // a program in a container
        {{frame, elsewhere, {}, "In front", true}, true},
    };
    for (const auto& [published, isTaken] : cases) {
        const Publisher program(programWith(published, {something}));
        EXPECT_EQ(leftsOf(search()), isTaken ? Lefts{{300}} : Lefts{})
            << published.name << published.isActive;
        EXPECT_LT(tookMs, 1200U) << "held up by the stopped one";
    }
}

TEST_F(LinuxElements, AnOpenMenuComesFirstAndHidesWhatLiesBelow) {
    openFront(getpid());
    const Rect menu{300, 300, 400, 400};
    show(menu, getpid());
    {
        const Publisher program({{application, {}, {1, 2}},
                                 {frame, place, {4, 5}},
                                 {popup, menu, {3}},
                                 {menuItem, {310, 310, 390, 330}},
                                 {button, {320, 320, 380, 380}},
                                 {button, {500, 300, 550, 320}}});
        EXPECT_EQ(leftsOf(search()), (Lefts{{310}, {500}}));
    }
    // Over a window that nobody publishes.
    const Publisher program({{application, {}, {1}}, {popup, menu, {2}}, {menuItem, {310, 310, 390, 330}}});
    EXPECT_EQ(leftsOf(search()), (Lefts{{310}}));
}

TEST_F(LinuxElements, OfAWindowOfThousandsTheFirstAreFoundSoonAndWithoutTheRest) {
    openFront(getpid());
    std::vector<Published> buttons(5000);
    for (std::size_t i = 0; i < buttons.size(); ++i)
        buttons[i].place = {static_cast<int>(i), 300, static_cast<int>(i) + 20, 320};
    for (const int answers : {1 << 30, 300}) { // the second stops on the way
        const Publisher program(programWith({frame, place}, buttons), answers);
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
    const Rect page{place.left + 210, place.top, place.right, place.bottom};
    auto objects = programWith({frame, place}, {{webDocument, side, {4}}, {webDocument, page, {5}}});
    objects.push_back({link, {side.left, 300, side.left + 50, 320}});
    objects.push_back({link, {page.left, 300, page.left + 50, 320}});
    const Publisher program(objects);
    const FoundElements found = search(ElementScope::page);
    EXPECT_EQ(leftsOf(found), (Lefts{{page.left}}));
    EXPECT_EQ(found.area, page);
}

TEST_F(LinuxElements, AScaledFrameIsComparedWithTheFrame) {
    openFront(getpid());
    setNumbers(front, "_NET_FRAME_EXTENTS", {2, 2, 40, 10});
    const Rect halved{99, 80, 401, 305};
    const Publisher program(programWith({frame, halved}, {{button, {150, 160, 200, 180}}}));
    const FoundElements found = search();
    ASSERT_EQ(leftsOf(found).size(), 1U);
    EXPECT_NEAR(found.roots[0][0].rect.left, 300, 2);
    EXPECT_NEAR(found.roots[0][0].rect.top, 320, 2);
}

} // namespace
