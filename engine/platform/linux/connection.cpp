#include "platform/linux/connection.h"

#include "platform/linux/owner_loop.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace rotika {

namespace {

struct Connection {
    Display* display = nullptr;
    int xinputOpcode = 0;
    int fixesEventBase = 0;
    std::vector<EventHandler> handlers;
};
Connection connection;
thread_local unsigned long errorCount = 0; // an error is delivered to the thread that waits for the server

struct DisplaySource {
    GSource base;
    GPollFD descriptor;
};

// Xlib may have read events during a round trip, with nothing left on the descriptor: the queue must be
// checked too.
gboolean prepareDisplaySource(GSource*, gint* timeoutMs) {
    *timeoutMs = -1;
    return XPending(connection.display) > 0;
}

gboolean checkDisplaySource(GSource* source) {
    const bool isReadable = reinterpret_cast<DisplaySource*>(source)->descriptor.revents != 0;
    return isReadable || XPending(connection.display) > 0;
}

gboolean dispatchDisplaySource(GSource*, GSourceFunc, gpointer) {
    while (XPending(connection.display) > 0) {
        XEvent event;
        XNextEvent(connection.display, &event);
        const bool hasCookie =
            event.type == GenericEvent && XGetEventData(connection.display, &event.xcookie) != 0;
        if (event.type == MappingNotify)
            XRefreshKeyboardMapping(&event.xmapping);
        for (std::size_t i = 0; i < connection.handlers.size(); ++i) // a handler may add another
            if (connection.handlers[i](event))
                break;
        if (hasCookie)
            XFreeEventData(connection.display, &event.xcookie);
    }
    return G_SOURCE_CONTINUE;
}

GSourceFuncs displaySourceFunctions{
    prepareDisplaySource, checkDisplaySource, dispatchDisplaySource, nullptr, nullptr, nullptr};

void attachDisplaySource() {
    GSource* source = g_source_new(&displaySourceFunctions, sizeof(DisplaySource));
    auto* displaySource = reinterpret_cast<DisplaySource*>(source);
    displaySource->descriptor = {ConnectionNumber(connection.display), G_IO_IN | G_IO_HUP | G_IO_ERR, 0};
    g_source_add_poll(source, &displaySource->descriptor);
    g_source_set_can_recurse(source, TRUE); // a handler may open a modal box
    g_source_attach(source, ownerContext());
    g_source_unref(source);
}

int countError(Display*, XErrorEvent*) {
    ++errorCount;
    return 0;
}

/// Without the display the program cannot continue; the stack cannot be unwound from here.
int endOnLostDisplay(Display*) {
    constexpr char message[] = "Rotika: utracono połączenie z serwerem X, program kończy działanie.\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, message, sizeof message - 1);
    _exit(1);
}

bool queryExtensions() {
    Display* display = connection.display;
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 2;
    if (XQueryExtension(display, "XInputExtension", &connection.xinputOpcode, &event, &error) == 0 ||
        XIQueryVersion(display, &major, &minor) != 0)
        return false;
    if (XTestQueryExtension(display, &event, &error, &major, &minor) == 0)
        return false;
    if (XFixesQueryExtension(display, &connection.fixesEventBase, &error) == 0 ||
        XFixesQueryVersion(display, &major, &minor) == 0)
        return false;
    if (XRRQueryVersion(display, &major, &minor) == 0 || major * 100 + minor < 105)
        return false;
    int opcode = 0;
    major = XkbMajorVersion;
    minor = XkbMinorVersion;
    return XShapeQueryExtension(display, &event, &error) != 0 &&
           XkbQueryExtension(display, &opcode, &event, &error, &major, &minor) != 0;
}

} // namespace

bool openConnection() {
    XInitThreads();
    ownerContext(); // first called here, so it is the owner thread's
    connection.display = XOpenDisplay(nullptr);
    if (connection.display == nullptr)
        return false;
    if (!queryExtensions()) {
        XCloseDisplay(connection.display);
        connection.display = nullptr;
        return false;
    }
    XSetErrorHandler(countError);
    XSetIOErrorHandler(endOnLostDisplay);
    attachDisplaySource();
    return true;
}

Display* ownerDisplay() {
    return connection.display;
}
Window rootWindow() {
    return DefaultRootWindow(connection.display);
}
Atom atomNamed(const char* name) {
    return XInternAtom(connection.display, name, 0);
}
void addEventHandler(EventHandler handler) {
    if (std::ranges::find(connection.handlers, handler) == connection.handlers.end())
        connection.handlers.push_back(handler);
}
int xinputOpcode() {
    return connection.xinputOpcode;
}
int fixesEventBase() {
    return connection.fixesEventBase;
}

ErrorTrap::ErrorTrap(Display* watched) : display(watched), before(errorCount) {}
ErrorTrap::~ErrorTrap() {
    XSync(display, 0);
}

bool ErrorTrap::hasFailed() const {
    XSync(display, 0);
    return errorCount != before;
}

unsigned long windowProperty(Window window, Atom property, Atom type, unsigned long missing) {
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int failure = XGetWindowProperty(connection.display, window, property, 0, 1, 0, type, &actualType,
                                           &format, &count, &left, &data);
    const XOwned<unsigned char> owned(data);
    if (failure != 0 || actualType != type || format != 32 || count == 0)
        return missing;
    return *reinterpret_cast<unsigned long*>(data);
}

} // namespace rotika
