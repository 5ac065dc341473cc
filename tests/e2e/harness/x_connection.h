#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct _XDisplay;

namespace e2e {

struct PixelColor {
    int red = 0;
    int green = 0;
    int blue = 0;

    friend bool operator==(const PixelColor&, const PixelColor&) = default;
};

/// The largest difference of a channel.
int differenceOf(const PixelColor& a, const PixelColor& b);
std::string textOf(const PixelColor& color);

/// What the screen shows in a rectangle.
struct ScreenPart {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    std::vector<PixelColor> pixels; // row by row

    /// In coordinates of the screen; inside the part.
    const PixelColor& at(int x, int y) const;
};

struct ScreenPoint {
    int x = 0;
    int y = 0;

    friend bool operator==(const ScreenPoint&, const ScreenPoint&) = default;
};

struct ShownWindow {
    unsigned long id = 0;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    std::string title;
};

/// The test's own eyes on an X server.
class XConnection {
public:
    explicit XConnection(const std::string& display);
    XConnection(XConnection&&) noexcept = default;
    XConnection& operator=(XConnection&&) noexcept = default;
    ~XConnection() = default;

    _XDisplay* raw() const { return display.get(); }
    int width() const;
    int height() const;

    ScreenPart look(int left, int top, int width, int height) const;
    PixelColor pixel(int x, int y) const;
    /// The middle of a plain area of this colour, at least so large that a button may be one; none: no such
    /// area.
    std::optional<ScreenPoint> findPlain(const ShownWindow& window, const PixelColor& color) const;
    void savePicture(const std::filesystem::path& file) const;

    /// Every viewable window of the tree, frames and the windows in them alike.
    std::vector<ShownWindow> shownWindows() const;
    std::optional<ShownWindow> shownWindow(int width, int height) const;
    std::optional<ShownWindow> shownWindow(const std::string& title) const;
    /// Of the window that has the keyboard, or the nearest around it that has a title.
    std::string titleOfFocusedWindow() const;
    /// The window manager's idea of it, which may lag behind the focus; empty if there is none.
    std::string titleOfActiveWindow() const;
    /// Keys go to this window. The window manager calls a window active before that is so.
    bool hasFocus(const ShownWindow& window) const;
    /// As by a click on its name in a list of windows.
    void activate(const ShownWindow& window) const;
    void close(const ShownWindow& window) const;

    ScreenPoint pointer() const;
    /// Buttons that the server holds to be down, as bits, button 1 the lowest.
    unsigned pressedButtons() const;
    std::vector<unsigned> pressedKeycodes() const;
    bool autoRepeats(unsigned keycode) const;
    unsigned keycodeOf(const std::string& keysymName) const;

    bool hasWindowManager() const;
    /// Waits until the window manager shows new windows. One that has just announced itself may still lose
    /// the first.
    void waitUntilWindowsAreShown() const;
    bool hasCompositor() const;
    /// Somebody shows the icons of programs that run in the background.
    bool hasTray() const;

private:
    struct Closer {
        void operator()(_XDisplay* open) const;
    };
    std::unique_ptr<_XDisplay, Closer> display;
};

} // namespace e2e
