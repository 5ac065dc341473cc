#include "platform/linux/warning_window.h"

#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/glib_handles.h"

#include <cairo-xlib.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <map>

namespace rotika {

// Painted by the engine itself: it can appear before the shell has a window, and the engine has no toolkit.

namespace {

constexpr int textWidthPx = 420;
constexpr int marginPx = 20;
constexpr int buttonWidthPx = 96;
constexpr int buttonHeightPx = 32;

struct Box {
    int width = 0;
    int height = 0;
    std::string text;
};
std::map<Window, Box> openBoxes;

GObjectPointer<PangoLayout> layOutText(cairo_t* context, const std::string& text, int widthPx) {
    GObjectPointer<PangoLayout> layout(pango_cairo_create_layout(context));
    PangoFontDescription* font = pango_font_description_from_string("Noto Sans,DejaVu Sans,sans-serif 11");
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_width(layout.get(), widthPx * PANGO_SCALE);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
    return layout;
}

int textHeight(const std::string& text) {
    cairo_surface_t* scratch = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t* context = cairo_create(scratch);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(layOutText(context, text, textWidthPx).get(), &width, &height);
    cairo_destroy(context);
    cairo_surface_destroy(scratch);
    return height;
}

Rect buttonRect(const Box& box) {
    const int left = (box.width - buttonWidthPx) / 2;
    const int top = box.height - marginPx - buttonHeightPx;
    return {left, top, left + buttonWidthPx, top + buttonHeightPx};
}

void paintButton(cairo_t* context, const Rect& button) {
    cairo_rectangle(context, button.left + 0.5, button.top + 0.5, button.width() - 1, button.height() - 1);
    cairo_set_source_rgb(context, 0.10, 0.37, 0.65);
    cairo_fill(context);
    const auto label = layOutText(context, "OK", buttonWidthPx);
    pango_layout_set_alignment(label.get(), PANGO_ALIGN_CENTER);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(label.get(), &width, &height);
    cairo_set_source_rgb(context, 1, 1, 1);
    const int labelTop = button.top + (button.height() - height) / 2; // whole pixels keep the letters sharp
    cairo_move_to(context, button.left, labelTop);
    pango_cairo_show_layout(context, label.get());
}

void paintBox(Window window, const Box& box) {
    Display* display = ownerDisplay();
    cairo_surface_t* surface = cairo_xlib_surface_create(
        display, window, DefaultVisual(display, DefaultScreen(display)), box.width, box.height);
    cairo_t* context = cairo_create(surface);
    cairo_set_source_rgb(context, 0.97, 0.97, 0.98);
    cairo_paint(context);
    cairo_set_source_rgb(context, 0.11, 0.14, 0.20);
    cairo_move_to(context, marginPx, marginPx);
    pango_cairo_show_layout(context, layOutText(context, box.text, textWidthPx).get());
    paintButton(context, buttonRect(box));
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    XFlush(display);
}

bool dismisses(XEvent& event, const Box& box) {
    if (event.type == KeyPress) {
        const KeySym key = XLookupKeysym(&event.xkey, 0);
        return key == XK_Return || key == XK_KP_Enter || key == XK_space || key == XK_Escape;
    }
    if (event.type == ButtonRelease)
        return event.xbutton.button == Button1 &&
               buttonRect(box).contains({event.xbutton.x, event.xbutton.y});
    return event.type == ClientMessage &&
           static_cast<Atom>(event.xclient.data.l[0]) == atomNamed("WM_DELETE_WINDOW");
}

bool handleBoxEvent(XEvent& event) {
    const auto known = openBoxes.find(event.xany.window);
    if (known == openBoxes.end())
        return false;
    if (event.type == Expose) {
        paintBox(known->first, known->second);
    } else if (dismisses(event, known->second)) {
        XDestroyWindow(ownerDisplay(), known->first);
        XFlush(ownerDisplay());
        openBoxes.erase(known);
    }
    return true;
}

/// The title holds the whole text: window lists and screen readers see nothing else of a window without a
/// toolkit.
void nameBox(Window window, std::string title) {
    Display* display = ownerDisplay();
    std::replace(title.begin(), title.end(), '\n', ' ');
    XChangeProperty(display, window, atomNamed("_NET_WM_NAME"), atomNamed("UTF8_STRING"), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(title.c_str()), static_cast<int>(title.size()));
    XStoreName(display, window, title.c_str());
    const Atom type = atomNamed("_NET_WM_WINDOW_TYPE_DIALOG");
    XChangeProperty(display, window, atomNamed("_NET_WM_WINDOW_TYPE"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&type), 1);
    Atom deletion = atomNamed("WM_DELETE_WINDOW");
    XSetWMProtocols(display, window, &deletion, 1);
}

} // namespace

void openWarningWindow(const std::string& title, const std::string& text) {
    addEventHandler(handleBoxEvent);
    Display* display = ownerDisplay();
    const Box box{textWidthPx + 2 * marginPx, textHeight(text) + 3 * marginPx + buttonHeightPx, text};
    const Rect monitor = monitorAt(cursorPosition());
    const int left = monitor.left + (monitor.width() - box.width) / 2;
    const int top = monitor.top + (monitor.height() - box.height) / 2;
    const Window window = XCreateSimpleWindow(
        display, rootWindow(), left, top, static_cast<unsigned int>(box.width),
        static_cast<unsigned int>(box.height), 0, 0, WhitePixel(display, DefaultScreen(display)));
    nameBox(window, title + ": " + text);
    XSizeHints hints{};
    hints.flags = PPosition | PMinSize | PMaxSize;
    hints.min_width = hints.max_width = box.width;
    hints.min_height = hints.max_height = box.height;
    XSetWMNormalHints(display, window, &hints);
    XSelectInput(display, window, ExposureMask | KeyPressMask | ButtonPressMask | ButtonReleaseMask);
    openBoxes[window] = box;
    XMapRaised(display, window);
    XFlush(display);
}

} // namespace rotika
