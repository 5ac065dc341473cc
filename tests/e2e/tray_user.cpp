#include "tray_user.h"

#include "harness/waiting.h"

#include <set>

namespace e2e {

namespace {

constexpr int traySize = 40; // px: one icon fills it
constexpr int trayWidth = 200;
constexpr int tallestToolTip = 40;
constexpr std::chrono::milliseconds clickPatience{3000};

} // namespace

/// In the corner where no window comes up by itself.
void TrayUser::startTray() {
    tray = Process({{"trayer", "--edge", "bottom", "--align", "right", "--widthtype", "pixel", "--width",
                     std::to_string(trayWidth), "--heighttype", "pixel", "--height", std::to_string(traySize),
                     "--SetDockType", "true", "--expand", "false"},
                    stage.screen.environment(),
                    stage.screen.folder(),
                    stage.screen.folder() / "trayer.log"});
    waitFor("the tray", [this] { return stage.screen.eyes().hasTray(); });
}

ScreenPoint TrayUser::icon() const {
    const XConnection& eyes = stage.screen.eyes();
    std::optional<ShownWindow> found;
    waitFor("the icon in the tray", [&] {
        for (const ShownWindow& shown : eyes.shownWindows()) {
            const bool isInTray =
                shown.left >= eyes.width() - trayWidth - 10 && shown.left + shown.width <= eyes.width() &&
                shown.top >= eyes.height() - traySize - 10 && shown.top + shown.height <= eyes.height();
            if (isInTray && shown.width <= traySize && shown.height <= traySize && shown.width >= 16)
                found = shown;
        }
        return found.has_value();
    });
    return {found->left + found->width / 2, found->top + found->height / 2};
}

ShownWindow TrayUser::openMenu() const {
    const XConnection& eyes = stage.screen.eyes();
    placePointer(eyes, icon());
    std::set<unsigned long> before;
    for (const ShownWindow& shown : eyes.shownWindows())
        before.insert(shown.id);
    std::optional<ShownWindow> menu;
    const auto isMenuShown = [&] {
        for (const ShownWindow& shown : eyes.shownWindows()) {
            if (!before.contains(shown.id) && shown.height > tallestToolTip)
                menu = shown;
        }
        return menu.has_value();
    };
    waitFor("the menu", [&] {
        stage.mouse->click(MouseButton::right);
        return holdsWithin(clickPatience, isMenuShown);
    });
    user.waitForRest();
    return *menu;
}

void TrayUser::doubleClickUntil(const std::function<bool()>& outcome) const {
    placePointer(stage.screen.eyes(), icon());
    waitFor("the double click to be heard", [&] {
        stage.mouse->click(MouseButton::left);
        stage.mouse->click(MouseButton::left);
        return holdsWithin(clickPatience, outcome);
    });
}

void TrayUser::chooseUntil(double share, const std::function<bool()>& outcome) const {
    waitFor("the menu to do as told", [&] {
        const ShownWindow menu = openMenu();
        whenMenuIsOpen();
        const int down = static_cast<int>(menu.height * share);
        placePointer(stage.screen.eyes(), {menu.left + menu.width / 2, menu.top + down});
        user.waitForRest();
        stage.mouse->click(MouseButton::left);
        return holdsWithin(clickPatience, outcome);
    });
}

} // namespace e2e
