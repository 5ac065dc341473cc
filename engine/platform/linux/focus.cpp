#include "platform/focus.h"

#include "platform/linux/connection.h"

namespace rotika {

namespace {

bool isViewable(Window window) {
    XWindowAttributes attributes;
    const ErrorTrap trap;
    return XGetWindowAttributes(ownerDisplay(), window, &attributes) != 0 &&
           attributes.map_state == IsViewable;
}

/// Override-redirect windows are unknown to the window manager: they get the focus only directly.
bool isManaged(Window window) {
    XWindowAttributes attributes;
    const ErrorTrap trap;
    const bool isKnown = XGetWindowAttributes(ownerDisplay(), window, &attributes) != 0;
    return isKnown && attributes.override_redirect == 0 &&
           windowProperty(rootWindow(), atomNamed("_NET_SUPPORTING_WM_CHECK"), XA_WINDOW, noXid) != noXid;
}

void requestActivation(Window window) {
    XEvent request{};
    request.xclient.type = ClientMessage;
    request.xclient.window = window;
    request.xclient.message_type = atomNamed("_NET_ACTIVE_WINDOW");
    request.xclient.format = 32;
    request.xclient.data.l[0] = 2; // a direct user action, so that no focus-stealing guard refuses it
    request.xclient.data.l[1] = CurrentTime;
    XSendEvent(ownerDisplay(), rootWindow(), 0, SubstructureRedirectMask | SubstructureNotifyMask, &request);
}

} // namespace

WindowHandle foregroundWindow() {
    if (ownerDisplay() == nullptr)
        return nullptr;
    Window focused = noXid;
    int revertTo = 0;
    XGetInputFocus(ownerDisplay(), &focused, &revertTo);
    // One of our layers with the focus is unknown to the window manager, whose property still names the
    // program below.
    XWindowAttributes attributes;
    {
        const ErrorTrap trap;
        if (focused > PointerRoot && XGetWindowAttributes(ownerDisplay(), focused, &attributes) != 0 &&
            attributes.override_redirect != 0)
            return handleOf(focused);
    }
    const auto active =
        static_cast<Window>(windowProperty(rootWindow(), atomNamed("_NET_ACTIVE_WINDOW"), XA_WINDOW, noXid));
    if (active != noXid)
        return handleOf(active);
    return focused > PointerRoot ? handleOf(focused) : nullptr;
}

bool windowExists(WindowHandle window) {
    if (ownerDisplay() == nullptr || window == nullptr)
        return false;
    XWindowAttributes attributes;
    const ErrorTrap trap;
    return XGetWindowAttributes(ownerDisplay(), windowOf(window), &attributes) != 0;
}

void bringToForeground(WindowHandle window) {
    if (ownerDisplay() == nullptr || window == nullptr)
        return;
    if (isManaged(windowOf(window)))
        requestActivation(windowOf(window));
    const ErrorTrap trap;
    if (isViewable(windowOf(window)))
        XSetInputFocus(ownerDisplay(), windowOf(window), RevertToParent, CurrentTime);
}

} // namespace rotika
