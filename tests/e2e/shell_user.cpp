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

ShownWindow ShellUser::waitForDialog(const std::string& title) const {
    waitFor("the dialog " + title, [&] { return stage.screen.eyes().titleOfActiveWindow() == title; });
    std::optional<ShownWindow> dialog;
    waitFor("the dialog " + title + " being shown",
            [&] { return (dialog = stage.screen.eyes().shownWindow(title)).has_value(); });
    return *dialog;
}

void ShellUser::waitUntilInFront() const {
    waitFor("the program's window to be in front",
            [&] { return stage.screen.eyes().titleOfActiveWindow() == "Rotika" && stage.mainWindow(); });
}

void ShellUser::clickPlain(const PixelColor& color) const {
    std::optional<ScreenPoint> place;
    waitFor("an area of colour " + textOf(color),
            [&] { return (place = stage.screen.eyes().findPlain(*stage.mainWindow(), color)).has_value(); });
    clickAt(*place);
}

void ShellUser::clickAt(ScreenPoint place) const {
    placePointer(stage.screen.eyes(), place);
    stage.mouse->click(MouseButton::left);
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
