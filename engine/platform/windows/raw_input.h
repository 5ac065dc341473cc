#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// The wheel window's share of a pointer capture: WM_INPUT has arrived. Owner thread.
void rawInputArrived(HRAWINPUT record) noexcept;

/// The capture stands and the owner thread has not renewed it for so long that the guard may have given the
/// mouse back: what arrives then was not meant for the wheel. Owner thread.
bool captureIsSilent() noexcept;

} // namespace rotika
