#include "platform/linux/accessible_roles.h"

#include <atspi/atspi-constants.h>
#include <glib.h>

namespace rotika {

namespace {

bool hasState(std::uint64_t states, AtspiStateType state) {
    return (states >> state & 1) != 0;
}

} // namespace

ControlType AccessibleTraits::type() const {
    // A bullet of a text list is not clickable, a selectable item is.
    const bool canBeChosen =
        hasState(states, ATSPI_STATE_SELECTABLE) || hasState(states, ATSPI_STATE_EXPANDABLE) || isFocusable();
    switch (role) {
    case ATSPI_ROLE_PUSH_BUTTON:
    case ATSPI_ROLE_TOGGLE_BUTTON:
    case ATSPI_ROLE_PUSH_BUTTON_MENU:
    case ATSPI_ROLE_TABLE_COLUMN_HEADER:
        return ControlType::button;
    case ATSPI_ROLE_CHECK_BOX:
        return ControlType::checkBox;
    case ATSPI_ROLE_RADIO_BUTTON:
        return ControlType::radioButton;
    case ATSPI_ROLE_COMBO_BOX:
        return ControlType::comboBox;
    case ATSPI_ROLE_ENTRY:
    case ATSPI_ROLE_PASSWORD_TEXT:
    case ATSPI_ROLE_AUTOCOMPLETE:
    case ATSPI_ROLE_DATE_EDITOR:
        return ControlType::edit;
    case ATSPI_ROLE_LINK:
        return ControlType::hyperlink;
    case ATSPI_ROLE_LIST_ITEM:
    case ATSPI_ROLE_TABLE_CELL:
    case ATSPI_ROLE_ICON:
        return canBeChosen ? ControlType::listItem : ControlType::unknown;
    case ATSPI_ROLE_TREE_ITEM:
        return ControlType::treeItem;
    case ATSPI_ROLE_TABLE_ROW:
        return canBeChosen ? ControlType::treeItem : ControlType::unknown;
    case ATSPI_ROLE_MENU_ITEM:
    case ATSPI_ROLE_CHECK_MENU_ITEM:
    case ATSPI_ROLE_RADIO_MENU_ITEM:
    case ATSPI_ROLE_TEAROFF_MENU_ITEM:
        return ControlType::menuItem;
    case ATSPI_ROLE_MENU: // an entry that opens a submenu, or a whole menu
        return canBeChosen ? ControlType::menuItem : ControlType::pane;
    case ATSPI_ROLE_PAGE_TAB:
        return ControlType::tabItem;
    case ATSPI_ROLE_SLIDER:
        return ControlType::slider;
    case ATSPI_ROLE_SPIN_BUTTON:
        return ControlType::spinner;
    case ATSPI_ROLE_DOCUMENT_FRAME:
    case ATSPI_ROLE_DOCUMENT_SPREADSHEET:
    case ATSPI_ROLE_DOCUMENT_PRESENTATION:
    case ATSPI_ROLE_DOCUMENT_TEXT:
    case ATSPI_ROLE_DOCUMENT_WEB:
    case ATSPI_ROLE_DOCUMENT_EMAIL:
        return ControlType::document;
    case ATSPI_ROLE_FRAME:
    case ATSPI_ROLE_WINDOW:
    case ATSPI_ROLE_DIALOG:
    case ATSPI_ROLE_ALERT:
    case ATSPI_ROLE_FILE_CHOOSER:
    case ATSPI_ROLE_COLOR_CHOOSER:
    case ATSPI_ROLE_FONT_CHOOSER:
        return ControlType::window;
    case ATSPI_ROLE_PANEL:
    case ATSPI_ROLE_FILLER:
    case ATSPI_ROLE_SCROLL_PANE:
    case ATSPI_ROLE_SPLIT_PANE:
    case ATSPI_ROLE_LAYERED_PANE:
    case ATSPI_ROLE_ROOT_PANE:
    case ATSPI_ROLE_GLASS_PANE:
    case ATSPI_ROLE_OPTION_PANE:
    case ATSPI_ROLE_DIRECTORY_PANE:
    case ATSPI_ROLE_INTERNAL_FRAME:
    case ATSPI_ROLE_VIEWPORT:
    case ATSPI_ROLE_PAGE_TAB_LIST:
    case ATSPI_ROLE_POPUP_MENU:
        return ControlType::pane;
    default:
        return ControlType::unknown;
    }
}

/// Not ATSPI_STATE_ENABLED: GTK clears that for a half-checked box.
bool AccessibleTraits::isEnabled() const {
    return hasState(states, ATSPI_STATE_SENSITIVE);
}

bool AccessibleTraits::isShowing() const {
    return hasState(states, ATSPI_STATE_SHOWING) && hasState(states, ATSPI_STATE_VISIBLE);
}

bool AccessibleTraits::isFocusable() const {
    return hasState(states, ATSPI_STATE_FOCUSABLE);
}

bool AccessibleTraits::isActive() const {
    return hasState(states, ATSPI_STATE_ACTIVE);
}

bool AccessibleTraits::isWebPage() const {
    return role == ATSPI_ROLE_DOCUMENT_WEB;
}

bool AccessibleTraits::mayHaveManyChildren() const {
    return hasState(states, ATSPI_STATE_MANAGES_DESCENDANTS) || role == ATSPI_ROLE_TABLE ||
           role == ATSPI_ROLE_TREE_TABLE || role == ATSPI_ROLE_TREE;
}

bool AccessibleTraits::isLeaf() const {
    switch (role) {
    case ATSPI_ROLE_PUSH_BUTTON:
    case ATSPI_ROLE_CHECK_BOX:
    case ATSPI_ROLE_RADIO_BUTTON:
    case ATSPI_ROLE_PASSWORD_TEXT:
    case ATSPI_ROLE_LINK:
    case ATSPI_ROLE_MENU_ITEM:
    case ATSPI_ROLE_CHECK_MENU_ITEM:
    case ATSPI_ROLE_RADIO_MENU_ITEM:
    case ATSPI_ROLE_TEAROFF_MENU_ITEM:
    case ATSPI_ROLE_SLIDER:
    case ATSPI_ROLE_PROGRESS_BAR:
    case ATSPI_ROLE_LEVEL_BAR:
    case ATSPI_ROLE_SEPARATOR:
    case ATSPI_ROLE_STATIC:
    case ATSPI_ROLE_IMAGE:
        return true;
    default:
        return false;
    }
}

bool AccessibleTraits::clipsDescendants() const {
    return role == ATSPI_ROLE_SCROLL_PANE || role == ATSPI_ROLE_VIEWPORT || mayHaveManyChildren() ||
           type() == ControlType::document;
}

bool AccessibleTraits::opensOwnWindow() const {
    return role == ATSPI_ROLE_COMBO_BOX || role == ATSPI_ROLE_MENU || role == ATSPI_ROLE_POPUP_MENU ||
           type() == ControlType::window;
}

bool AccessibleTraits::opensMenu() const {
    return role == ATSPI_ROLE_COMBO_BOX || role == ATSPI_ROLE_WINDOW || isPopupMenu() ||
           type() == ControlType::menuItem;
}

bool AccessibleTraits::isPopupMenu() const {
    return role == ATSPI_ROLE_POPUP_MENU || role == ATSPI_ROLE_MENU;
}

} // namespace rotika
