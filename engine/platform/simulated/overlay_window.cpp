#include "platform/overlay_window.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

namespace {
std::string describe(const Rect& place) {
    return std::to_string(place.left) + "," + std::to_string(place.top) + " " +
           std::to_string(place.width()) + "x" + std::to_string(place.height());
}
} // namespace

WindowHandle createOverlayWindow(OverlayKind kind, std::int32_t width, std::int32_t height,
                                 const OverlayWindowHandlers& handlers) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("overlay created on a worker");
    if (!desktop.hasDisplay)
        return nullptr;
    PlatformWindow& window =
        desktop.addWindow(kind == OverlayKind::wheel ? "wheel" : "grid", {0, 0, width, height});
    window.isClickThrough = kind == OverlayKind::grid;
    window.messageArrived = handlers.messageArrived;
    window.overlayHandlers = handlers;
    return &window;
}

void placeOverlayWindow(WindowHandle window, const Rect& place) {
    SimulatedDesktop& desktop = simulatedDesktop();
    PlatformWindow& moved = desktop.requireWindow(window, "a destroyed overlay placed");
    if (place.width() != moved.place.width() || place.height() != moved.place.height())
        moved.picture.reset();
    moved.place = place;
    desktop.raise(window);
    desktop.note(JournalKind::window, "place " + moved.name + " " + describe(place));
}

Rect overlayWindowRect(WindowHandle window) {
    return simulatedDesktop().requireWindow(window, "a destroyed overlay measured").place;
}

void showOverlayWindow(WindowHandle window) {
    SimulatedDesktop& desktop = simulatedDesktop();
    PlatformWindow& shown = desktop.requireWindow(window, "a destroyed overlay shown");
    shown.isShown = true;
    desktop.raise(window);
    desktop.note(JournalKind::window, "show " + shown.name);
}

void hideOverlayWindow(WindowHandle window) {
    SimulatedDesktop& desktop = simulatedDesktop();
    if (!desktop.hasDisplay)
        return;
    PlatformWindow& hidden = desktop.requireWindow(window, "a destroyed overlay hidden");
    hidden.isShown = false;
    if (desktop.foreground == window)
        desktop.foreground = desktop.topProgram();
    desktop.note(JournalKind::window, "hide " + hidden.name);
}

bool overlayKeyIsDown() {
    return simulatedDesktop().overlayKeyIsDown();
}

void presentPicture(WindowHandle window, const Picture& picture) {
    SimulatedDesktop& desktop = simulatedDesktop();
    PlatformWindow& painted = desktop.requireWindow(window, "a destroyed overlay painted");
    painted.picture = picture;
    desktop.note(JournalKind::picture, "paint " + painted.name);
}

void presentPictureAt(WindowHandle window, Point corner, const Picture& picture) {
    PlatformWindow& painted = simulatedDesktop().requireWindow(window, "a destroyed overlay painted");
    painted.place = {corner.x, corner.y, corner.x + picture.width, corner.y + picture.height};
    presentPicture(window, picture);
}

} // namespace rotika
