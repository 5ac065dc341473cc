#pragma once

#include "shell_user.h"

#include <functional>

namespace e2e {

/// Somebody at the notification area, which the private screen has only if this starts it.
class TrayUser {
public:
    explicit TrayUser(Stage& hers) : stage(hers), user(hers) {}

    void startTray();
    /// Where the program's icon is. Waits for it.
    ScreenPoint icon() const;
    /// Double-clicks the icon until `outcome` holds: Wine passes some clicks on it to nobody.
    void doubleClickUntil(const std::function<bool()>& outcome) const;
    /// Opens the icon's menu and clicks the entry that lies at this share of the menu's height; the same
    /// again until `outcome` holds.
    void chooseUntil(double share, const std::function<bool()>& outcome) const;

    /// For a picture of the menu.
    std::function<void()> whenMenuIsOpen = [] {};

private:
    ShownWindow openMenu() const;

    Stage& stage;
    ShellUser user;
    Process tray;
};

} // namespace e2e
