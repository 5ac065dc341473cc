#include "platform/linux/layer_keys.h"

#include "platform/overlay_window.h"

#include "platform/linux/connection.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <algorithm>
#include <bitset>
#include <cstddef>

namespace rotika {

namespace {

constexpr std::size_t keycodeCount = 256;

struct LayerKeys {
    bool hasFocus = false;
    std::bitset<keycodeCount> down; // as far as the layer knows
};
LayerKeys keys;
KeyCode lastPressed = 0;

constexpr std::uint16_t keypadDigitBase = 0x60;

/// The keypad's other keys, in the state without Num Lock as those of the main block.
std::uint16_t virtualKeyOfKeypad(KeySym keysym) {
    switch (keysym) {
    case XK_KP_Enter:
        return 0x0D;
    case XK_KP_Prior:
        return 0x21;
    case XK_KP_Next:
        return 0x22;
    case XK_KP_Left:
        return 0x25;
    case XK_KP_Up:
        return 0x26;
    case XK_KP_Right:
        return 0x27;
    case XK_KP_Down:
        return 0x28;
    default:
        return keysym >= XK_KP_0 && keysym <= XK_KP_9
                   ? static_cast<std::uint16_t>(keysym - XK_KP_0 + keypadDigitBase)
                   : std::uint16_t{0};
    }
}

/// Only the keypad depends on the modifiers: elsewhere a digit needs no Shift on any layout.
std::uint16_t virtualKeyOf(XKeyEvent& event) {
    KeySym typed = NoSymbol;
    XLookupString(&event, nullptr, 0, &typed, nullptr);
    const std::uint16_t keypad = virtualKeyOfKeypad(typed);
    return keypad != 0 ? keypad : virtualKeyOfKeycode(ownerDisplay(), static_cast<KeyCode>(event.keycode));
}

bool isInjectedHere(const XKeyEvent& event) {
    return std::ranges::count(heldKeycodes(), static_cast<KeyCode>(event.keycode)) > 0;
}

void handleKey(XKeyEvent& event, const OverlayWindowHandlers& handlers) {
    const bool isPress = event.type == KeyPress;
    const bool wasDown = keys.down[event.keycode % keycodeCount];
    keys.down[event.keycode % keycodeCount] = isPress;
    if (!keys.hasFocus || (isPress && isInjectedHere(event)))
        return;
    const std::uint16_t virtualKey = virtualKeyOf(event);
    if (virtualKey == 0)
        return;
    if (isPress)
        lastPressed = static_cast<KeyCode>(event.keycode);
    const KeyChange ofPress = wasDown ? KeyChange::repeated : KeyChange::pressed;
    handlers.keyChanged(virtualKey, isPress ? ofPress : KeyChange::released);
}

/// The pointer's focus, without the window's own, also gives the window keys: those that no other gets.
void handleFocus(const XFocusChangeEvent& event, const OverlayWindowHandlers& handlers) {
    if (event.detail == NotifyPointer)
        return;
    keys.hasFocus = event.type == FocusIn;
    if (!keys.hasFocus && handlers.focusLost != nullptr)
        handlers.focusLost();
}

/// Follows the window's FocusIn: keys that were down before.
void handleKeymap(const XKeymapEvent& event) {
    for (std::size_t code = 0; code < keycodeCount; ++code)
        keys.down[code] = (static_cast<unsigned char>(event.key_vector[code / 8]) >> (code % 8) & 1) != 0;
}

} // namespace

void prepareLayerKeys() {
    // A held key then repeats as presses only, and each release is one.
    XkbSetDetectableAutoRepeat(ownerDisplay(), 1, nullptr);
}

bool overlayKeyIsDown() {
    return ownerDisplay() != nullptr && lastPressed != 0 && isKeyDown(ownerDisplay(), lastPressed);
}

bool handleLayerKeyEvent(XEvent& event, const OverlayWindowHandlers& handlers) {
    switch (event.type) {
    case KeyPress:
    case KeyRelease:
        if (handlers.keyChanged != nullptr)
            handleKey(event.xkey, handlers);
        return true;
    case FocusIn:
    case FocusOut:
        handleFocus(event.xfocus, handlers);
        return true;
    case KeymapNotify:
        handleKeymap(event.xkeymap);
        return true;
    default:
        return false;
    }
}

} // namespace rotika
