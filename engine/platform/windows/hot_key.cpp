#include "platform/hot_key.h"

#include "platform/windows/hot_key_modifiers.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <vector>

namespace rotika {

namespace {

struct Modifier {
    int virtualKey;
    UINT hotKeyFlag;
};

constexpr std::array<Modifier, 11> modifiers{{
    {VK_SHIFT, MOD_SHIFT},
    {VK_LSHIFT, MOD_SHIFT},
    {VK_RSHIFT, MOD_SHIFT},
    {VK_CONTROL, MOD_CONTROL},
    {VK_LCONTROL, MOD_CONTROL},
    {VK_RCONTROL, MOD_CONTROL},
    {VK_MENU, MOD_ALT},
    {VK_LMENU, MOD_ALT},
    {VK_RMENU, MOD_ALT},
    {VK_LWIN, MOD_WIN},
    {VK_RWIN, MOD_WIN},
}};

/// A bit for each of them.
std::atomic<unsigned> heldModifiers{0};

struct HotKey {
    HWND window;
    int id;
    std::uint16_t virtualKey;
    UINT withModifiers; // registered once more with these; 0: not
};

std::vector<HotKey> hotKeys;
/// Of all hot keys; null while there are none.
std::atomic<HWND> hotKeyWindow{nullptr};

/// The same key with modifiers, as the system counts it. A program's own numbers end below 0xC000.
constexpr int modifiedIdOffset = 0x4000;

constexpr UINT_PTR modifierTimerId = 2;

UINT heldHotKeyFlags() {
    const unsigned held = heldModifiers;
    UINT flags = 0;
    for (std::size_t i = 0; i < modifiers.size(); ++i) {
        if ((held >> i & 1U) != 0) {
            flags |= modifiers[i].hotKeyFlag;
        }
    }
    return flags;
}

void forgetModified(HotKey& key) {
    if (key.withModifiers != 0) {
        UnregisterHotKey(key.window, key.id + modifiedIdOffset);
        key.withModifiers = 0;
    }
}

/// Another program may have the combination: then the wheel has to wait for the modifiers' release.
void takeWith(HotKey& key, UINT flags) {
    forgetModified(key);
    if (flags != 0 &&
        RegisterHotKey(key.window, key.id + modifiedIdOffset, MOD_NOREPEAT | flags, key.virtualKey) != 0) {
        key.withModifiers = flags;
    }
}

/// The person lets go of a modifier that a function holds by a tap of it. Nobody tells, and from then on the
/// combination is the person's own.
void CALLBACK lookForReleases(HWND, UINT, UINT_PTR, DWORD) noexcept {
    for (std::size_t i = 0; i < modifiers.size(); ++i) {
        if (GetAsyncKeyState(modifiers[i].virtualKey) >= 0) {
            heldModifiers &= ~(1U << i);
        }
    }
    followHeldModifiers();
}

void lookForReleasesWhile(UINT flags) {
    constexpr UINT periodMs = 200;
    if (flags != 0) {
        SetTimer(hotKeyWindow, modifierTimerId, periodMs, lookForReleases);
    } else {
        KillTimer(hotKeyWindow, modifierTimerId);
    }
}

} // namespace

bool registerHotKey(WindowHandle mainWindow, int id, std::uint16_t virtualKey) {
    const HWND window = nativeWindow(mainWindow);
    if (RegisterHotKey(window, id, MOD_NOREPEAT, virtualKey) == 0) {
        return false;
    }
    hotKeys.push_back({window, id, virtualKey, 0});
    hotKeyWindow = window;
    followHeldModifiers();
    return true;
}

void unregisterHotKey(WindowHandle mainWindow, int id) {
    UnregisterHotKey(nativeWindow(mainWindow), id);
    std::erase_if(hotKeys, [id](HotKey& key) {
        if (key.id == id) {
            forgetModified(key);
        }
        return key.id == id;
    });
    if (hotKeys.empty()) {
        lookForReleasesWhile(0);
        hotKeyWindow = nullptr;
    }
}

void noteInjectedKey(std::uint16_t virtualKey, bool down) {
    for (std::size_t i = 0; i < modifiers.size(); ++i) {
        if (modifiers[i].virtualKey != virtualKey) {
            continue;
        }
        const unsigned bit = 1U << i;
        const unsigned before = down ? heldModifiers.fetch_or(bit) : heldModifiers.fetch_and(~bit);
        const HWND window = hotKeyWindow;
        if (((before & bit) != 0) != down && window != nullptr) {
            PostMessageW(window, heldModifiersMessage, 0, 0);
        }
    }
}

void followHeldModifiers() noexcept {
    const UINT flags = heldHotKeyFlags();
    for (HotKey& key : hotKeys) {
        if (key.withModifiers != flags) {
            takeWith(key, flags);
        }
    }
    if (!hotKeys.empty()) {
        lookForReleasesWhile(flags);
    }
}

int registeredHotKeyId(WPARAM wParam) noexcept {
    const int id = static_cast<int>(wParam);
    return id >= modifiedIdOffset ? id - modifiedIdOffset : id;
}

} // namespace rotika
