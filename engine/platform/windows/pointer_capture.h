#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// Handles WM_INPUT of the wheel window for a pointer capture. Owner thread.
void rawInputArrived(HRAWINPUT record) noexcept;

/// Whether the owner thread has not renewed an active capture for so long that the guard may have freed the
/// mouse: input then is not meant for the wheel. Owner thread.
bool captureIsStale() noexcept;

} // namespace rotika
