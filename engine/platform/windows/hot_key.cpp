#include "platform/hot_key.h"

#include "platform/windows/hot_key.h"

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

/// A bit for each entry of `modifiers`.
std::atomic<unsigned> heldModifiers{0};

struct HotKey {
    HWND window;
    int id;
    std::uint16_t virtualKey;
    UINT withModifiers; // a second registration with these; 0: none
};

std::vector<HotKey> hotKeys;
/// The window of all hot keys; null while there are none.
std::atomic<HWND> hotKeyWindow{nullptr};

/// Id offset of the second registration, with modifiers. A program's own ids end below 0xC000.
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

void unregisterModified(HotKey& key) {
    if (key.withModifiers != 0) {
        UnregisterHotKey(key.window, key.id + modifiedIdOffset);
        key.withModifiers = 0;
    }
}

/// If another program has the combination, the hot key works only after the modifiers' release.
void registerModified(HotKey& key, UINT flags) {
    unregisterModified(key);
    if (flags != 0 &&
        RegisterHotKey(key.window, key.id + modifiedIdOffset, MOD_NOREPEAT | flags, key.virtualKey) != 0) {
        key.withModifiers = flags;
    }
}

/// The user can release a modifier that a function holds by tapping it. There is no notification, and from
/// then on the combination belongs to the user.
void CALLBACK checkReleases(HWND, UINT, UINT_PTR, DWORD) noexcept {
    for (std::size_t i = 0; i < modifiers.size(); ++i) {
        if (GetAsyncKeyState(modifiers[i].virtualKey) >= 0) {
            heldModifiers &= ~(1U << i);
        }
    }
    followHeldModifiers();
}

void checkReleasesWhile(UINT flags) {
    constexpr UINT periodMs = 200;
    if (flags != 0) {
        SetTimer(hotKeyWindow, modifierTimerId, periodMs, checkReleases);
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
            unregisterModified(key);
        }
        return key.id == id;
    });
    if (hotKeys.empty()) {
        checkReleasesWhile(0);
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
            registerModified(key, flags);
        }
    }
    if (!hotKeys.empty()) {
        checkReleasesWhile(flags);
    }
}

int registeredHotKeyId(WPARAM wParam) noexcept {
    const int id = static_cast<int>(wParam);
    return id >= modifiedIdOffset ? id - modifiedIdOffset : id;
}

} // namespace rotika
