#pragma once

#include "base/geometry.h"

#include "platform/windows/held_things.h"
#include "platform/windows/windows_api.h"

#include <optional>
#include <vector>

namespace rotika {

// The cursor's clip rectangle: ours, and the one that a program (usually a game) had set before. Shared by
// the program and its guard. Any thread.

/// The current clip; nullopt if the cursor is free, and for a clip of about one pixel, which must never be
/// restored.
std::optional<RECT> cursorClip();

void pinCursor(Point pinned);

/// Restores `before`; nullopt frees the cursor. A clip that has replaced the pin meanwhile is kept: the
/// system removes the pin when the foreground changes, and a game may then set its own again.
void unpinCursor(const std::optional<RECT>& before);

// In the guard's pipe a pin is one record with 0 in `extended`, repeated as a heartbeat of the owner thread,
// and before it, if there was a clip, one record for each of its sides.

GuardRecord pinRecord(bool pinned);
std::vector<GuardRecord> clipRecords(const RECT& clip);
bool isPinRecord(const GuardRecord& record);
std::optional<RECT> clipBefore(const HeldThings& held);

} // namespace rotika
