#pragma once

#include "platform/elements.h"

#include <cstdint>

namespace rotika {

/// Role as AtspiRole, states as bits numbered by AtspiStateType.
struct AccessibleTraits {
    std::uint32_t role = 0;
    std::uint64_t states = 0;

    /// Containers without a use of their own and static texts are unknown.
    ControlType type() const;
    bool isEnabled() const;
    bool isShowing() const;
    bool isFocusable() const;
    bool isActive() const;
    /// A page in a browser, not any document.
    bool isWebPage() const;
    /// Whether it may have too many children to request each.
    bool mayHaveManyChildren() const;
    /// Whether no descendant can be clicked separately.
    bool isLeaf() const;
    /// Whether its descendants are clipped to its bounds.
    bool clipsDescendants() const;
    /// Whether its descendants appear in a window of their own.
    bool opensOwnWindow() const;
    /// Whether the entries of an open menu or list may be its descendants.
    bool opensMenu() const;
    bool isPopupMenu() const;
};

} // namespace rotika
