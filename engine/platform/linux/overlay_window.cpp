#include "platform/overlay_window.h"

#include "platform/linux/connection.h"
#include "platform/linux/layer_image.h"
#include "platform/linux/layer_keys.h"
#include "platform/linux/messages.h"
#include "platform/linux/picture_drawing.h"
#include "platform/linux/root_events.h"

#include <cairo-xlib.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace rotika {

// A layer is an override-redirect window whose background is the picture: the server itself paints it when
// the window is mapped or uncovered, so no stale or empty content is ever visible.

namespace {

struct Layer {
    OverlayKind kind = OverlayKind::wheel;
    OverlayWindowHandlers handlers{};
    Rect place;
    bool isShown = false;
    std::unique_ptr<LayerImage> image; // null if the server draws
    Pixmap background = noXid;
    int backgroundWidth = 0;
    int backgroundHeight = 0;
    GC gc = nullptr;
    Picture shown; // the content of image and background
    int raisesLeft = 0;
};

struct LayerVisual {
    Visual* visual = nullptr;
    int depth = 0;
    Colormap colormap = noXid;
};

// Guard against an endless loop with another program that also keeps raising its window.
constexpr int maxRaisesPerShow = 20;

std::map<Window, Layer> layers;
std::vector<Window> shownLayers; // in order of showing
bool hasCompositor = false;

Atom compositorSelection() {
    return atomNamed(("_NET_WM_CM_S" + std::to_string(DefaultScreen(ownerDisplay()))).c_str());
}

const LayerVisual& layerVisual() {
    static const LayerVisual found = [] {
        Display* display = ownerDisplay();
        XVisualInfo info;
        if (XMatchVisualInfo(display, DefaultScreen(display), 32, TrueColor, &info) == 0) {
            // No alpha channel: only the window's shape is left.
            return LayerVisual{DefaultVisual(display, DefaultScreen(display)),
                               DefaultDepth(display, DefaultScreen(display)),
                               DefaultColormap(display, DefaultScreen(display))};
        }
        const Colormap colormap = XCreateColormap(display, rootWindow(), info.visual, AllocNone);
        return LayerVisual{info.visual, info.depth, colormap};
    }();
    return found;
}

Layer* layerOf(WindowHandle window) {
    const auto known = layers.find(windowOf(window));
    return known == layers.end() ? nullptr : &known->second;
}

// Grid and labels tint the content below them with alpha 0x16 and 0x1C; made opaque, that would hide it. The
// least alpha of anything else is 0x82.
constexpr std::uint32_t minOpaqueAlpha = 0x40;

std::vector<XRectangle> visibleSpans(const LayerImage& image, std::uint32_t leastAlpha) {
    std::vector<XRectangle> spans;
    for (int y = 0; y < image.height(); ++y) {
        const std::uint32_t* row = image.row(y);
        for (int x = 0; x < image.width();) {
            if (row[x] >> 24 < leastAlpha) {
                ++x;
                continue;
            }
            const int start = x;
            while (x < image.width() && row[x] >> 24 >= leastAlpha)
                ++x;
            spans.push_back({static_cast<short>(start), static_cast<short>(y),
                             static_cast<unsigned short>(x - start), 1});
        }
    }
    return spans;
}

/// Without a compositor transparent pixels would be black: the window is shaped to its visible pixels
/// instead.
void shapeBounding(Window window, const Layer& layer) {
    if (hasCompositor || layer.image == nullptr) {
        XShapeCombineMask(ownerDisplay(), window, ShapeBounding, 0, 0, noXid, ShapeSet);
        return;
    }
    std::vector<XRectangle> spans =
        visibleSpans(*layer.image, layer.kind == OverlayKind::grid ? minOpaqueAlpha : 1);
    XShapeCombineRectangles(ownerDisplay(), window, ShapeBounding, 0, 0, spans.data(),
                            static_cast<int>(spans.size()), ShapeSet, YXBanded);
}

/// Clicks pass through the grid everywhere and through the wheel where it is transparent, as on Windows.
void shapeInput(Window window, const Layer& layer) {
    std::vector<XRectangle> spans;
    if (layer.kind == OverlayKind::wheel && layer.image != nullptr)
        spans = visibleSpans(*layer.image, 1);
    XShapeCombineRectangles(ownerDisplay(), window, ShapeInput, 0, 0, spans.data(),
                            static_cast<int>(spans.size()), ShapeSet, YXBanded);
}

/// The grid covers a whole monitor with few shapes, which the server draws faster than it copies pixels. The
/// wheel has many antialiased shapes, and a layer's window shape is computed from its pixels.
bool isDrawnByServer(const Layer& layer) {
    return layer.kind == OverlayKind::grid && hasCompositor;
}

/// Makes image and background fit the layer's size; true if one of them is new and still empty.
bool makeSurfaces(Window window, Layer& layer) {
    const int width = layer.place.width();
    const int height = layer.place.height();
    const bool fits =
        layer.background != noXid && layer.backgroundWidth == width && layer.backgroundHeight == height;
    if (fits && isDrawnByServer(layer) == (layer.image == nullptr))
        return false;
    const LayerVisual& visual = layerVisual();
    layer.image.reset();
    if (!isDrawnByServer(layer))
        layer.image = std::make_unique<LayerImage>(visual.visual, visual.depth, width, height);
    if (fits)
        return true;
    if (layer.background != noXid)
        XFreePixmap(ownerDisplay(), layer.background);
    layer.background =
        XCreatePixmap(ownerDisplay(), window, static_cast<unsigned int>(width),
                      static_cast<unsigned int>(height), static_cast<unsigned int>(visual.depth));
    layer.backgroundWidth = width;
    layer.backgroundHeight = height;
    if (layer.gc == nullptr)
        layer.gc = XCreateGC(ownerDisplay(), layer.background, 0, nullptr);
    XSetWindowBackgroundPixmap(ownerDisplay(), window, layer.background);
    return true;
}

void drawRegion(Layer& layer, const Picture& picture, const cairo_region_t* region) {
    if (layer.image == nullptr) {
        cairo_surface_t* surface =
            cairo_xlib_surface_create(ownerDisplay(), layer.background, layerVisual().visual,
                                      layer.backgroundWidth, layer.backgroundHeight);
        drawPicture(surface, picture, region);
        cairo_surface_destroy(surface);
        return;
    }
    layer.image->waitUntilRead();
    drawPicture(layer.image->surface(), picture, region);
    for (int i = 0; i < cairo_region_num_rectangles(region); ++i) {
        cairo_rectangle_int_t part;
        cairo_region_get_rectangle(region, i, &part);
        layer.image->putTo(layer.background, layer.gc, part.x, part.y, part.width, part.height);
    }
}

void showRegion(Window window, const cairo_region_t* region) {
    for (int i = 0; i < cairo_region_num_rectangles(region); ++i) {
        cairo_rectangle_int_t part;
        cairo_region_get_rectangle(region, i, &part);
        XClearArea(ownerDisplay(), window, part.x, part.y, static_cast<unsigned int>(part.width),
                   static_cast<unsigned int>(part.height), 0);
    }
}

/// Makes the picture the layer's background and returns the region that has changed.
PixelRegion drawLayer(Window window, Layer& layer, const Picture& picture) {
    const bool isNew = makeSurfaces(window, layer);
    PixelRegion region;
    if (isNew || layer.shown.width != picture.width || layer.shown.height != picture.height) {
        const cairo_rectangle_int_t whole{0, 0, layer.backgroundWidth, layer.backgroundHeight};
        region.reset(cairo_region_create_rectangle(&whole));
    } else {
        region = changedPixels(layer.shown, picture);
    }
    drawRegion(layer, picture, region.get());
    if (&layer.shown != &picture)
        layer.shown = picture;
    return region;
}

void present(Window window, Layer& layer, const Picture& picture) {
    const PixelRegion region = drawLayer(window, layer, picture);
    if (layer.isShown)
        showRegion(window, region.get());
    if (layer.isShown && !hasCompositor)
        shapeBounding(window, layer);
    XFlush(ownerDisplay());
}

/// The compositor may have started or stopped since the picture was drawn.
void followCompositorOnLayer(Window window, Layer& layer) {
    if (isDrawnByServer(layer) != (layer.image == nullptr))
        present(window, layer, layer.shown);
    shapeBounding(window, layer);
}

void watchStackingWhileShown() {
    if (shownLayers.empty())
        unselectRootEvents(SubstructureNotifyMask);
    else
        selectRootEvents(SubstructureNotifyMask);
}

bool areOnTop() {
    Window root = noXid;
    Window parent = noXid;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(ownerDisplay(), rootWindow(), &root, &parent, &children, &count) == 0)
        return true;
    const XOwned<Window> owned(children);
    if (count < shownLayers.size())
        return true;
    return std::all_of(children + count - shownLayers.size(), children + count, [](Window child) {
        return std::find(shownLayers.begin(), shownLayers.end(), child) != shownLayers.end();
    });
}

void stayOnTop() {
    if (shownLayers.empty() || areOnTop())
        return;
    for (const Window window : shownLayers) {
        Layer& layer = layers[window];
        if (layer.raisesLeft-- > 0)
            XRaiseWindow(ownerDisplay(), window);
    }
    XFlush(ownerDisplay());
}

void followCompositor() {
    hasCompositor = XGetSelectionOwner(ownerDisplay(), compositorSelection()) != noXid;
    for (const Window window : shownLayers)
        followCompositorOnLayer(window, layers[window]);
    XFlush(ownerDisplay());
}

bool isLayer(Window window) {
    return layers.contains(window);
}

/// Of no layer: none.
OverlayWindowHandlers handlersOf(Window window) {
    const auto known = layers.find(window);
    return known == layers.end() ? OverlayWindowHandlers{} : known->second.handlers;
}

/// The server has freed the window's own resources; pixmap and graphics context belong to the connection.
void onLayerDestroyed(Window window) {
    const auto destroyed = layers[window].handlers.destroyed;
    if (destroyed != nullptr)
        destroyed();
    std::erase(shownLayers, window);
    watchStackingWhileShown();
    const Layer& layer = layers[window];
    if (layer.background != noXid)
        XFreePixmap(ownerDisplay(), layer.background);
    if (layer.gc != nullptr)
        XFreeGC(ownerDisplay(), layer.gc);
    layers.erase(window);
}

bool handleLayerEvent(XEvent& event) {
    if (event.type == DestroyNotify && isLayer(event.xdestroywindow.window)) {
        onLayerDestroyed(event.xdestroywindow.window);
        return true;
    }
    if (event.type == fixesEventBase() + XFixesSelectionNotify) {
        followCompositor();
        return true;
    }
    if (isLayer(event.xany.window) || event.type == KeymapNotify) {
        const OverlayWindowHandlers handlers = handlersOf(event.xany.window); // a handler may add a layer
        if (handleLayerKeyEvent(event, handlers))
            return true;
    }
    if (event.type == ButtonPress && isLayer(event.xbutton.window)) {
        const Layer& layer = layers[event.xbutton.window];
        if (event.xbutton.button == Button1 && layer.handlers.leftPressed != nullptr)
            layer.handlers.leftPressed();
        return true;
    }
    const bool isRestack = event.type == ConfigureNotify || event.type == MapNotify;
    if (isRestack && event.xany.window == rootWindow() && !isLayer(event.xconfigure.window))
        stayOnTop();
    return false;
}

void watchCompositor() {
    XFixesSelectSelectionInput(ownerDisplay(), rootWindow(), compositorSelection(),
                               XFixesSetSelectionOwnerNotifyMask | XFixesSelectionWindowDestroyNotifyMask |
                                   XFixesSelectionClientCloseNotifyMask);
    followCompositor();
}

Window createLayerWindow(int width, int height, bool hearsKeys) {
    const LayerVisual& visual = layerVisual();
    XSetWindowAttributes attributes{};
    attributes.colormap = visual.colormap;
    attributes.border_pixel = 0;
    attributes.override_redirect = 1;
    attributes.event_mask = ButtonPressMask | StructureNotifyMask | (hearsKeys ? layerKeyEvents : 0);
    return XCreateWindow(ownerDisplay(), rootWindow(), 0, 0, static_cast<unsigned int>(width),
                         static_cast<unsigned int>(height), 0, visual.depth, InputOutput, visual.visual,
                         CWColormap | CWBorderPixel | CWOverrideRedirect | CWEventMask, &attributes);
}

void describeToCompositors(Window window) {
    XStoreName(ownerDisplay(), window, "Rotika");
    const Atom type = atomNamed("_NET_WM_WINDOW_TYPE_NOTIFICATION");
    XChangeProperty(ownerDisplay(), window, atomNamed("_NET_WM_WINDOW_TYPE"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&type), 1);
    const unsigned long noShadow = 0; // a shadow would show the layer's rectangle
    XChangeProperty(ownerDisplay(), window, atomNamed("_COMPTON_SHADOW"), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&noShadow), 1);
}

} // namespace

WindowHandle createOverlayWindow(OverlayKind kind, std::int32_t width, std::int32_t height,
                                 const OverlayWindowHandlers& handlers) {
    if (ownerDisplay() == nullptr)
        return nullptr;
    addEventHandler(handleLayerEvent);
    if (layers.empty())
        watchCompositor();
    if (handlers.keyChanged != nullptr)
        prepareLayerKeys();
    const Window window = createLayerWindow(width, height, handlers.keyChanged != nullptr);
    describeToCompositors(window);
    Layer& layer = layers[window];
    layer.kind = kind;
    layer.handlers = handlers;
    layer.place = {0, 0, width, height};
    makeSurfaces(window, layer); // now, so that the first toggle is not delayed
    registerWindow(handleOf(window), handlers.messageArrived);
    return handleOf(window);
}

void placeOverlayWindow(WindowHandle window, const Rect& place) {
    Layer* layer = layerOf(window);
    if (layer == nullptr || place.width() < 1 || place.height() < 1)
        return;
    layer->place = place;
    XMoveResizeWindow(ownerDisplay(), windowOf(window), place.left, place.top,
                      static_cast<unsigned int>(place.width()), static_cast<unsigned int>(place.height()));
    XRaiseWindow(ownerDisplay(), windowOf(window));
}

Rect overlayWindowRect(WindowHandle window) {
    const Layer* layer = layerOf(window);
    return layer == nullptr ? Rect{} : layer->place;
}

void showOverlayWindow(WindowHandle window) {
    Layer* layer = layerOf(window);
    if (layer == nullptr)
        return;
    const Window xWindow = windowOf(window);
    followCompositorOnLayer(xWindow, *layer);
    shapeInput(xWindow, *layer);
    XMapRaised(ownerDisplay(), xWindow);
    layer->isShown = true;
    layer->raisesLeft = maxRaisesPerShow;
    std::erase(shownLayers, xWindow);
    shownLayers.push_back(xWindow);
    watchStackingWhileShown();
    XFlush(ownerDisplay());
}

void hideOverlayWindow(WindowHandle window) {
    Layer* layer = layerOf(window);
    if (layer == nullptr || !layer->isShown)
        return;
    layer->isShown = false;
    std::erase(shownLayers, windowOf(window));
    watchStackingWhileShown();
    XUnmapWindow(ownerDisplay(), windowOf(window));
    XFlush(ownerDisplay());
}

/// The new background is set before the server moves the window and paints the uncovered parts.
void presentPictureAt(WindowHandle window, Point corner, const Picture& picture) {
    Layer* layer = layerOf(window);
    if (layer == nullptr || picture.width < 1 || picture.height < 1)
        return;
    const Rect place{corner.x, corner.y, corner.x + picture.width, corner.y + picture.height};
    if (layer->place == place) {
        presentPicture(window, picture);
        return;
    }
    layer->place = place;
    drawLayer(windowOf(window), *layer, picture);
    XMoveResizeWindow(ownerDisplay(), windowOf(window), corner.x, corner.y,
                      static_cast<unsigned int>(picture.width), static_cast<unsigned int>(picture.height));
    if (layer->isShown) {
        shapeBounding(windowOf(window), *layer);
        XClearWindow(ownerDisplay(), windowOf(window)); // a window that keeps its size keeps its pixels too
    }
    XFlush(ownerDisplay());
}

void presentPicture(WindowHandle window, const Picture& picture) {
    Layer* layer = layerOf(window);
    if (layer != nullptr)
        present(windowOf(window), *layer, picture);
}

} // namespace rotika
