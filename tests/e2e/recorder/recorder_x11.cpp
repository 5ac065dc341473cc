// A window in front that writes down every event it gets: the program that a person works in while the wheel
// lies over it. A plain core-protocol client, as most programs are.

#include "recorder/pattern.h"
#include "recorder/record.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <array>
#include <set>

namespace {

const char* buttonName(unsigned button) {
    switch (button) {
    case 1:
        return "left";
    case 2:
        return "middle";
    case 3:
        return "right";
    case 8:
        return "side1";
    case 9:
        return "side2";
    default:
        return "other";
    }
}

Window makeWindow(Display* display, const RecorderArguments& arguments) {
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), arguments.left,
                                              arguments.top, static_cast<unsigned>(arguments.width),
                                              static_cast<unsigned>(arguments.height), 0, 0, 0);
    XStoreName(display, window, "recorder");
    const std::array<char, 8> title{'r', 'e', 'c', 'o', 'r', 'd', 'e', 'r'};
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_NAME", False),
                    XInternAtom(display, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(title.data()), static_cast<int>(title.size()));
    // No frame: the second word of these hints says that the third, "no decorations", counts.
    const std::array<long, 5> motifHints{2, 0, 0, 0, 0};
    const Atom hintsName = XInternAtom(display, "_MOTIF_WM_HINTS", False);
    XChangeProperty(display, window, hintsName, hintsName, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(motifHints.data()),
                    static_cast<int>(motifHints.size()));
    XSizeHints place{};
    place.flags = USPosition | USSize;
    XSetWMNormalHints(display, window, &place);
    XSelectInput(display, window,
                 KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                     FocusChangeMask | StructureNotifyMask);
    return window;
}

/// As the window's background, so that the server itself repairs whatever was over it.
void showPattern(Display* display, Window window, const RecorderArguments& arguments) {
    const auto depth = static_cast<unsigned>(DefaultDepth(display, 0));
    const Pixmap pattern = XCreatePixmap(display, window, static_cast<unsigned>(arguments.width),
                                         static_cast<unsigned>(arguments.height), depth);
    const GC context = XCreateGC(display, pattern, 0, nullptr);
    for (int y = 0; y < arguments.height; y += patternCell) {
        for (int x = 0; x < arguments.width; x += patternCell) {
            const PatternColor color = patternColor(arguments.left + x, arguments.top + y);
            XSetForeground(display, context,
                           static_cast<unsigned long>(color.red << 16 | color.green << 8 | color.blue));
            XFillRectangle(display, pattern, context, x, y, patternCell, patternCell);
        }
    }
    XSetWindowBackgroundPixmap(display, window, pattern);
    XFreeGC(display, context);
    XFreePixmap(display, pattern);
}

class Recorder {
public:
    Recorder(Display* opened, const std::string& logFile) : display(opened), log(logFile) {}

    void handle(XEvent& event) {
        switch (event.type) {
        case MapNotify:
            log.write(0, "ready");
            break;
        case KeyPress:
        case KeyRelease:
            handleKey(event.xkey);
            break;
        case ButtonPress:
        case ButtonRelease:
            log.write(event.xbutton.time, event.type == ButtonPress ? "button-down" : "button-up",
                      buttonName(event.xbutton.button), event.xbutton.x_root, event.xbutton.y_root);
            break;
        case MotionNotify:
            log.write(event.xmotion.time, "motion", "-", event.xmotion.x_root, event.xmotion.y_root);
            break;
        case FocusIn:
        case FocusOut:
            // A grab of somebody's hot key takes the focus for its length and is no change of window.
            if (event.xfocus.mode == NotifyNormal || event.xfocus.mode == NotifyWhileGrabbed)
                log.write(0, event.type == FocusIn ? "focus-in" : "focus-out");
            break;
        case MappingNotify:
            XRefreshKeyboardMapping(&event.xmapping);
            break;
        default:
            break;
        }
    }

private:
    void handleKey(XKeyEvent& event) {
        const char* symbol = XKeysymToString(XLookupKeysym(&event, 0));
        const std::string name = symbol != nullptr ? symbol : "-";
        const char* kind = "key-up";
        if (event.type == KeyPress)
            kind = down.insert(event.keycode).second ? "key-down" : "key-repeat";
        else
            down.erase(event.keycode);
        log.write(event.time, kind, name, event.x_root, event.y_root);
    }

    Display* display;
    EventLog log;
    std::set<unsigned> down;
};

} // namespace

int main(int argc, char** argv) {
    if (noteOpening(argc, argv))
        return 0;
    const RecorderArguments arguments = RecorderArguments::parse(argc, argv);
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return 1;
    // A held key then repeats as presses alone, without the releases between them.
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    const Window window = makeWindow(display, arguments);
    showPattern(display, window, arguments);
    XMapWindow(display, window);
    Recorder recorder(display, arguments.logFile);
    while (true) {
        XEvent event;
        XNextEvent(display, &event);
        recorder.handle(event);
    }
}
