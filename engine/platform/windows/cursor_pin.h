#pragma once

#include "base/geometry.h"

#include "platform/windows/held_things.h"
#include "platform/windows/windows_api.h"

#include <optional>
#include <vector>

namespace rotika {

// The rectangle that holds the cursor: ours, and the one that a program (a game, most often) had set before.
// Shared by the program and its guard. Any thread.

/// The clip in force; nothing when the cursor may go everywhere, and for one that lets it go nowhere, which
/// must never be put back.
std::optional<RECT> cursorClip();

void pinCursor(Point pinned);

/// Puts `before` back, nothing being everywhere. A clip that has taken the pin's place meanwhile stays: the
/// system drops the pin with a change of the foreground, and a game may set its own anew.
void unpinCursor(const std::optional<RECT>& before);

// In the records of the guard's pipe a pin is one record with 0 in `extended`, sent again as long as the
// owner thread lives, and before it, if there was a clip, one for each of its sides.

GuardRecord pinRecord(bool pinned);
std::vector<GuardRecord> clipRecords(const RECT& clip);
bool isPinRecord(const GuardRecord& record);
std::optional<RECT> clipBefore(const HeldThings& held);

} // namespace rotika
