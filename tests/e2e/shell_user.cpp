#include "shell_user.h"

#include "harness/waiting.h"

namespace e2e {

void ShellUser::goTo(Page page) {
    tabBackTo(0);
    key("Home");
    key("Down", static_cast<int>(page));
}

void ShellUser::goTo(WheelControl control) {
    tabBackTo(static_cast<int>(control));
    tab(static_cast<int>(control) - tabsFromPageList);
}

void ShellUser::press(WheelControl control) {
    goTo(control);
    key("space");
    if (control == WheelControl::addFunction)
        tabsFromPageList = static_cast<int>(WheelControl::name); // the program goes on there
}

void ShellUser::tab(int times) {
    key("Tab", times);
    tabsFromPageList += times;
}

void ShellUser::tabBackTo(int tabs) {
    if (tabsFromPageList <= tabs)
        return;
    setKey(stage.screen.eyes(), "Shift_L", true);
    key("Tab", tabsFromPageList - tabs);
    setKey(stage.screen.eyes(), "Shift_L", false);
    tabsFromPageList = tabs;
}

void ShellUser::key(const std::string& keysymName, int times) const {
    for (int i = 0; i < times; ++i)
        tapKey(stage.screen.eyes(), keysymName);
}

void ShellUser::type(const std::string& text) const {
    typeText(stage.screen.eyes(), text);
}

void ShellUser::typeOver(const std::string& text) const {
    setKey(stage.screen.eyes(), "Control_L", true);
    key("a");
    setKey(stage.screen.eyes(), "Control_L", false);
    type(text);
}

void ShellUser::waitForDialog(const std::string& title) const {
    waitFor("the dialog " + title, [&] {
        const std::optional<ShownWindow> dialog = stage.screen.eyes().shownWindow(title);
        return dialog && stage.screen.eyes().hasFocus(*dialog);
    });
    waitForRest();
}

void ShellUser::waitUntilInFront() const {
    waitFor("the program's window to have the focus", [&] {
        const std::optional<ShownWindow> window = stage.mainWindow();
        // After a dialog of the system's own Wine may leave no window in front.
        if (window && stage.screen.eyes().titleOfActiveWindow().empty())
            stage.screen.eyes().activate(*window);
        return window && stage.screen.eyes().hasFocus(*window);
    });
    waitForRest();
}

ScreenPoint ShellUser::findSquare(const PixelColor& color, int side) const {
    constexpr int besidePageList = 200;
    std::optional<ScreenPoint> found;
    waitFor("a square of colour " + textOf(color), [&] {
        const ShownWindow window = *stage.mainWindow();
        const ScreenPart part = stage.screen.eyes().look(window.left + besidePageList, window.top,
                                                         window.width - besidePageList, window.height);
        const auto isSquareAt = [&](int left, int top) {
            for (int i = 0; i < side * side; ++i) {
                if (!(part.at(left + i % side, top + i / side) == color))
                    return false;
            }
            return true;
        };
        for (int y = part.top; !found && y + side <= part.top + part.height; ++y) {
            for (int x = part.left; !found && x + side <= part.left + part.width; ++x) {
                if (isSquareAt(x, y))
                    found = ScreenPoint{x + side / 2, y + side / 2};
            }
        }
        return found.has_value();
    });
    return *found;
}

void ShellUser::waitForRest() const {
    const XConnection& eyes = stage.screen.eyes();
    constexpr int looksAlike = 4;
    int alike = 0;
    std::vector<PixelColor> before;
    waitFor("the screen to come to rest", [&] {
        const std::vector<PixelColor> now = eyes.look(0, 0, eyes.width(), eyes.height()).pixels;
        alike = now == before ? alike + 1 : 0;
        before = now;
        return alike == looksAlike;
    });
}

} // namespace e2e
