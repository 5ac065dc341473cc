#include "harness/x_connection.h"

#include "harness/waiting.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <cairo.h>

#include <algorithm>
#include <cstdlib>

namespace e2e {

namespace {

constexpr int deepestFrame = 4;

/// A window may go between being listed and being asked about: such errors are no fault of anybody.
int ignoreError(Display* /*display*/, XErrorEvent* /*error*/) {
    return 0;
}

struct XFreeing {
    void operator()(void* memory) const { XFree(memory); }
};

std::string propertyText(Display* display, Window window, const char* property) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display, window, XInternAtom(display, property, False), 0, 256, False, AnyPropertyType,
                       &type, &format, &count, &left, &bytes);
    const std::unique_ptr<unsigned char, XFreeing> owned(bytes);
    return bytes != nullptr && format == 8 ? std::string(reinterpret_cast<char*>(bytes), count)
                                           : std::string();
}

/// A window that a property of the root names, or None.
Window rootWindowProperty(Display* display, const char* property) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display, DefaultRootWindow(display), XInternAtom(display, property, False), 0, 1,
                       False, XA_WINDOW, &type, &format, &count, &left, &bytes);
    const std::unique_ptr<unsigned char, XFreeing> owned(bytes);
    return count == 1 ? *reinterpret_cast<Window*>(bytes) : None;
}

void collectShown(Display* display, Window window, int depth, std::vector<ShownWindow>& found) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    if (XQueryTree(display, window, &root, &parent, &children, &count) == 0)
        return;
    const std::unique_ptr<Window, XFreeing> owned(children);
    for (unsigned i = 0; i < count; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(display, children[i], &attributes) == 0 ||
            attributes.map_state != IsViewable)
            continue;
        ShownWindow shown{children[i],
                          0,
                          0,
                          attributes.width,
                          attributes.height,
                          propertyText(display, children[i], "_NET_WM_NAME")};
        Window ignored = 0;
        XTranslateCoordinates(display, children[i], root, 0, 0, &shown.left, &shown.top, &ignored);
        found.push_back(shown);
        if (depth < deepestFrame)
            collectShown(display, children[i], depth + 1, found);
    }
}

} // namespace

int differenceOf(const PixelColor& a, const PixelColor& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

std::string textOf(const PixelColor& color) {
    return "(" + std::to_string(color.red) + ", " + std::to_string(color.green) + ", " +
           std::to_string(color.blue) + ")";
}

const PixelColor& ScreenPart::at(int x, int y) const {
    return pixels.at(static_cast<std::size_t>(y - top) * static_cast<std::size_t>(width) +
                     static_cast<std::size_t>(x - left));
}

void XConnection::Closer::operator()(_XDisplay* open) const {
    XCloseDisplay(open);
}

XConnection::XConnection(const std::string& name) : display(XOpenDisplay(name.c_str())) {
    if (!display)
        throw ScenarioError("no X server at " + name);
    XSetErrorHandler(ignoreError);
}

int XConnection::width() const {
    return DisplayWidth(raw(), 0);
}
int XConnection::height() const {
    return DisplayHeight(raw(), 0);
}

ScreenPart XConnection::look(int left, int top, int width, int height) const {
    XImage* image = XGetImage(raw(), DefaultRootWindow(raw()), left, top, static_cast<unsigned>(width),
                              static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (image == nullptr)
        throw ScenarioError("the screen could not be read");
    ScreenPart part{left, top, width, height, {}};
    part.pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned long value = XGetPixel(image, x, y);
            part.pixels.push_back({static_cast<int>(value >> 16 & 0xFF), static_cast<int>(value >> 8 & 0xFF),
                                   static_cast<int>(value & 0xFF)});
        }
    }
    XDestroyImage(image);
    return part;
}

PixelColor XConnection::pixel(int x, int y) const {
    return look(x, y, 1, 1).pixels.front();
}

std::optional<ScreenPoint> XConnection::findPlain(const ShownWindow& window, const PixelColor& color) const {
    constexpr int plainWidth = 40;
    constexpr int plainHeight = 12;
    const ScreenPart part = look(window.left, window.top, window.width, window.height);
    const auto isPlainFrom = [&](int left, int top) {
        for (int y = top; y < top + plainHeight; ++y) {
            for (int x = left; x < left + plainWidth; ++x) {
                if (!(part.at(x, y) == color))
                    return false;
            }
        }
        return true;
    };
    for (int y = part.top; y + plainHeight <= part.top + part.height; ++y) {
        for (int x = part.left; x + plainWidth <= part.left + part.width; ++x) {
            if (isPlainFrom(x, y))
                return ScreenPoint{x + plainWidth / 2, y + plainHeight / 2};
        }
    }
    return std::nullopt;
}

void XConnection::savePicture(const std::filesystem::path& file) const {
    const ScreenPart part = look(0, 0, width(), height());
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, part.width, part.height);
    unsigned char* bytes = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < part.height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(bytes + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < part.width; ++x) {
            const PixelColor& color = part.at(x, y);
            row[x] = static_cast<std::uint32_t>(color.red << 16 | color.green << 8 | color.blue);
        }
    }
    cairo_surface_mark_dirty(surface);
    std::filesystem::create_directories(file.parent_path());
    cairo_surface_write_to_png(surface, file.c_str());
    cairo_surface_destroy(surface);
}

std::vector<ShownWindow> XConnection::shownWindows() const {
    std::vector<ShownWindow> found;
    collectShown(raw(), DefaultRootWindow(raw()), 0, found);
    return found;
}

std::optional<ShownWindow> XConnection::shownWindow(int width, int height) const {
    for (const ShownWindow& shown : shownWindows()) {
        if (shown.width == width && shown.height == height)
            return shown;
    }
    return std::nullopt;
}

std::optional<ShownWindow> XConnection::shownWindow(const std::string& title) const {
    for (const ShownWindow& shown : shownWindows()) {
        if (shown.title == title)
            return shown;
    }
    return std::nullopt;
}

std::string XConnection::titleOfFocusedWindow() const {
    Window window = None;
    int revertTo = 0;
    XGetInputFocus(raw(), &window, &revertTo);
    std::string title;
    while (window > PointerRoot && (title = propertyText(raw(), window, "_NET_WM_NAME")).empty()) {
        Window root = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned count = 0;
        if (XQueryTree(raw(), window, &root, &parent, &children, &count) == 0)
            break;
        const std::unique_ptr<Window, XFreeing> owned(children);
        window = parent;
    }
    return title;
}

std::string XConnection::titleOfActiveWindow() const {
    const Window active = rootWindowProperty(raw(), "_NET_ACTIVE_WINDOW");
    return active != None ? propertyText(raw(), active, "_NET_WM_NAME") : std::string();
}

bool XConnection::hasFocus(const ShownWindow& window) const {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(raw(), &focused, &revert);
    return focused == window.id;
}

void XConnection::activate(const ShownWindow& window) const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window.id;
    event.xclient.message_type = XInternAtom(raw(), "_NET_ACTIVE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2; // asked by a person, not by the program
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(raw(), DefaultRootWindow(raw()), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(raw());
}

void XConnection::close(const ShownWindow& window) const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window.id;
    event.xclient.message_type = XInternAtom(raw(), "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(raw(), "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(raw(), window.id, False, NoEventMask, &event);
    XFlush(raw());
}

namespace {

struct PointerAnswer {
    ScreenPoint place;
    unsigned mask = 0;
};

PointerAnswer askPointer(Display* display) {
    PointerAnswer answer;
    Window root = 0;
    Window child = 0;
    int windowX = 0;
    int windowY = 0;
    XQueryPointer(display, DefaultRootWindow(display), &root, &child, &answer.place.x, &answer.place.y,
                  &windowX, &windowY, &answer.mask);
    return answer;
}

} // namespace

ScreenPoint XConnection::pointer() const {
    return askPointer(raw()).place;
}

unsigned XConnection::pressedButtons() const {
    return askPointer(raw()).mask >> 8 & 0x1F;
}

std::vector<unsigned> XConnection::pressedKeycodes() const {
    char bits[32];
    XQueryKeymap(raw(), bits);
    std::vector<unsigned> pressed;
    for (unsigned code = 0; code < 256; ++code) {
        if ((bits[code / 8] >> (code % 8) & 1) != 0)
            pressed.push_back(code);
    }
    return pressed;
}

bool XConnection::autoRepeats(unsigned keycode) const {
    XKeyboardState state;
    XGetKeyboardControl(raw(), &state);
    return (state.auto_repeats[keycode / 8] >> (keycode % 8) & 1) != 0;
}

unsigned XConnection::keycodeOf(const std::string& keysymName) const {
    const KeyCode code = XKeysymToKeycode(raw(), XStringToKeysym(keysymName.c_str()));
    if (code == 0)
        throw ScenarioError("the keyboard has no key " + keysymName);
    return code;
}

bool XConnection::hasWindowManager() const {
    return rootWindowProperty(raw(), "_NET_SUPPORTING_WM_CHECK") != None;
}

void XConnection::waitUntilWindowsAreShown() const {
    const Window probe = XCreateSimpleWindow(raw(), DefaultRootWindow(raw()), 0, 0, 20, 20, 0, 0, 0);
    int asked = 0;
    waitFor("windows being shown", [&] {
        constexpr int pollsForAnAnswer = 20;
        if (asked++ % pollsForAnAnswer == 0)
            XMapWindow(raw(), probe);
        XWindowAttributes attributes;
        XGetWindowAttributes(raw(), probe, &attributes);
        return attributes.map_state == IsViewable;
    });
    XDestroyWindow(raw(), probe);
    XSync(raw(), False);
}

bool XConnection::hasCompositor() const {
    return XGetSelectionOwner(raw(), XInternAtom(raw(), "_NET_WM_CM_S0", False)) != None;
}

bool XConnection::hasTray() const {
    return XGetSelectionOwner(raw(), XInternAtom(raw(), "_NET_SYSTEM_TRAY_S0", False)) != None;
}

} // namespace e2e
