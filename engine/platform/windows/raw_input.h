#pragma once

#include "platform/windows/windows_api.h"

/// The wheel window's share of a pointer capture: WM_INPUT has arrived. Owner thread.
void rawInputArrived(HRAWINPUT record) noexcept;
