#pragma once

#include "base/picture.h"
#include "platform/elements.h"

#include <cstdint>

namespace rotika {

// Numbered labels on what can be clicked in the window in front. All on the owner thread.

/// Looks for elements on a thread of its own; the labels appear when it is done. Takes the grid, and the
/// labels on show, off the screen. One scan at a time: during one, nothing happens.
void startElementScan(ElementScope scope);

/// Takes the labels off the screen; the result of a scan under way will be dropped.
void cancelElementLabels();

/// MsgElementsReady: shows the result, which is owned and may be null, unless the scan has been cancelled.
void takeScanResult(std::intptr_t payload);

/// Ends the labels with a click on the middle of element `number`, counted from 1. Nothing without labels on
/// show or without that one.
void clickElement(std::int32_t number, std::uint32_t button, std::int32_t count);

/// The picture of engineState's labels, as large as elementsOrigin.
Picture elementLabelsPicture();

} // namespace rotika
