#include "pointing/element_labels.h"

#include "base/color.h"
#include "base/text.h"
#include "layers/drawing.h"
#include "layers/grid_window.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "platform/threads.h"
#include "pointing/element_filter.h"
#include "run/function_run.h"
#include "workers/posted_record.h"

#include <memory>
#include <utility>

namespace rotika {

namespace {

constexpr std::uint8_t elementAlpha = 0x16;
constexpr std::uint8_t outlineAlpha = 0xD7;
constexpr float outlineWidthPx = 2;
constexpr std::uint8_t badgeAlpha = 0xEB;
constexpr float badgeHeightPx = 18;
constexpr PictureColor numberColor = white(0xFF);
constexpr float numberSizePx = 13;

/// Body of the scan thread.
void scanElements(const ElementSearch& search, WindowHandle mainWindow) noexcept {
    postRecord(mainWindow, MsgElementsReady,
               std::make_unique<ElementScanResult>(filterElements(findElements(search), search.scope)));
}

void addLabel(Picture& picture, const Rect& rect, std::size_t number) {
    const RgbColor color = engineConfig.segmentColor;
    const Rect& origin = engineState.elementsOrigin;
    const PictureBox box = pictureBox(
        {rect.left - origin.left, rect.top - origin.top, rect.right - origin.left, rect.bottom - origin.top});
    const std::u16string text = decimalText(static_cast<std::int64_t>(number));
    const PictureBox badge{box.x, box.y, static_cast<float>(text.size()) * 9 + 14, badgeHeightPx};
    picture.commands.push_back(FilledRectangle{box, withAlpha(color, elementAlpha)});
    picture.commands.push_back(OutlinedRectangle{box, withAlpha(color, outlineAlpha), outlineWidthPx});
    picture.commands.push_back(FilledRectangle{badge, withAlpha(color, badgeAlpha)});
    picture.commands.push_back(TextInBox{text, badge, numberSizePx, true, numberColor});
}

} // namespace

Picture elementLabelsPicture() {
    Picture picture{engineState.elementsOrigin.width(), engineState.elementsOrigin.height(), {}};
    std::size_t number = 0;
    for (const Rect& rect : engineState.elementRects)
        addLabel(picture, rect, ++number);
    return picture;
}

void startElementScan(ElementScope scope) {
    if (engineState.elementScanBusy.exchange(1) != 0)
        return;
    // elementsVisible stays set: the old numbers are valid until the new labels replace them.
    hideGrid();
    const ElementSearch search{scope,
                               {engineState.mainWindow, engineState.gridWindow, engineState.wheelWindow},
                               [scope](const FoundElements& found) {
                                   return filterElements(found, scope).rects.size() >= maxLabels;
                               }};
    // Without a thread the scan counts as running until it is cancelled.
    static_cast<void>(
        startDetachedThread([search, main = engineState.mainWindow] { scanElements(search, main); }));
}

void cancelElementLabels() {
    engineState.elementScanBusy.exchange(0);
    hideElementLabels();
}

void takeScanResult(std::intptr_t payload) {
    const auto result = takeRecord<ElementScanResult>(MsgElementsReady, payload);
    // Posted by another process: must not end a running scan. Null stands for an empty result.
    if (result == nullptr && payload != 0)
        return;
    if (engineState.elementScanBusy.exchange(0) == 0 || engineState.isStopped)
        return;
    if (result != nullptr) {
        engineState.elementRects = std::move(result->rects);
        engineState.elementsOrigin = result->area;
    }
    if (engineState.elementRects.empty())
        return;
    hideGrid();
    paintGridWindow(engineState.elementsOrigin, elementLabelsPicture());
    showOverlayWindow(engineState.gridWindow);
    engineState.elementsVisible = true;
}

void clickElement(std::int32_t number, std::uint32_t button, std::int32_t count) {
    if (!engineState.elementsVisible || number < 1 ||
        static_cast<std::size_t>(number) > engineState.elementRects.size())
        return;
    const Rect rect = engineState.elementRects[static_cast<std::size_t>(number) - 1];
    hideElementLabels();
    setCursorPosition({(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2});
    startMouseClick(button, count);
}

} // namespace rotika
