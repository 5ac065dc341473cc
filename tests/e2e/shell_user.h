#pragma once

#include "harness/stage.h"

#include <string>
#include <vector>

namespace e2e {

/// Rows of the window's page list.
enum class Page { start, wheels, voice, gaze, settings };

/// Controls of the wheel page by how often Tab must be pressed to come to them from the page list.
enum class WheelControl {
    open = 1,
    save,
    saveAs,
    activate,
    tree,
    addWheel,
    addFunction,
    remove,
    name,
    phrase,
    icon,
    color,
    delay,
    steps,
    stepKind,
};

/// Somebody at the program's window, with mouse and keyboard. Input is queued in its order, so only what
/// opens or closes a window is waited for.
class ShellUser {
public:
    explicit ShellUser(Stage& hers) : stage(hers) {}

    void goTo(Page page);
    /// On the wheel page. With no function selected those beyond `remove` are off.
    void goTo(WheelControl control);
    void press(WheelControl control);

    /// To the next control of the window. Everything between the page list and here must stay as it is, on or
    /// off, until the next goTo().
    void tab(int times = 1);
    void key(const std::string& keysymName, int times = 1) const;
    /// ASCII.
    void type(const std::string& text) const;
    /// In place of what a field holds.
    void typeOver(const std::string& text) const;

    /// Until the box or dialog of this title has the focus and shows that it knows: keys that come sooner are
    /// nobody's.
    void waitForDialog(const std::string& title) const;
    /// The same of the program's window.
    void waitUntilInFront() const;

    /// The middle of the first square of this colour beside the page list, in reading order. Waits for it.
    ScreenPoint findSquare(const PixelColor& color, int side) const;

    /// Waits until nothing on the screen moves any more.
    void waitForRest() const;

private:
    /// A click would be quicker, but a window manager may hold it back until after the keys that follow.
    void tabBackTo(int tabs);

    Stage& stage;
    int tabsFromPageList = 0; // the program starts there
};

} // namespace e2e
