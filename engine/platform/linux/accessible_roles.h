#pragma once

#include "platform/elements.h"

#include <cstdint>

namespace rotika {

/// Role as AtspiRole, states as bits numbered by AtspiStateType.
struct AccessibleTraits {
    std::uint32_t role = 0;
    std::uint64_t states = 0;

    /// By what a person would do with it: what merely holds or tells is unknown.
    ControlType type() const;
    bool isEnabled() const;
    bool isShowing() const;
    bool isFocusable() const;
    bool isActive() const;
    /// A page in a browser, as against any document.
    bool isWebPage() const;
    /// Whether it may hold more than can be asked for one by one.
    bool mayHoldVeryMany() const;
    /// Whether nothing below it can be clicked apart from itself.
    bool isLeaf() const;
    /// Whether what is below it shows only within its bounds.
    bool cutsOff() const;
    /// Whether what is below it comes up in a window of its own.
    bool popsUp() const;
    /// Whether the entries of an open menu or list may be below it.
    bool opensMenu() const;
    /// A menu by itself, as against one that hangs on an entry.
    bool isPopupMenu() const;
};

} // namespace rotika
