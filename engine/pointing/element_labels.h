#pragma once

#include "base/picture.h"
#include "platform/elements.h"

#include <cstdint>

namespace rotika {

// Numbered labels on the clickable elements of the foreground window. Owner thread.

/// Searches for elements on its own thread and then shows the labels. Hides the grid and the current labels.
/// No effect while a scan is running.
void startElementScan(ElementScope scope);

/// Hides the labels; the result of a running scan will be discarded.
void cancelElementLabels();

/// MsgElementsReady: takes ownership of the result, which may be null, and shows it unless the scan has been
/// cancelled.
void takeScanResult(std::intptr_t payload);

/// Hides the labels and clicks the middle of element `number`, counted from 1. No effect without visible
/// labels or with an unknown number.
void clickElement(std::int32_t number, std::uint32_t button, std::int32_t count);

/// The picture of engineState's labels, of the size of elementsOrigin.
Picture elementLabelsPicture();

} // namespace rotika
