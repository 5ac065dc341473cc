#pragma once

#include "platform/main_window.h"
#include "platform/overlay_window.h"

// The engine's switchboard: what arrives at its two windows, always on the owner thread.

MainWindowHandlers mainWindowHandlers();
OverlayWindowHandlers wheelWindowHandlers();
OverlayWindowHandlers gridWindowHandlers();
