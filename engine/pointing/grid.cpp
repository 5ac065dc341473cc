#include "pointing/grid.h"

#include "core/colors.h"
#include "core/engine_config.h"
#include "core/engine_state.h"
#include "core/text.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "pointing/element_labels.h"

#include <algorithm>

namespace {

constexpr std::uint8_t cellAlpha = 0x1C;
constexpr PictureColor outlineColor{0xBE, 0xFF, 0xFF, 0xFF};
constexpr float outlineWidthPx = 2;
constexpr PictureColor numberColor{0xEB, 0xFF, 0xFF, 0xFF};
constexpr PictureColor shadowColor{0x82, 0, 0, 0};
constexpr float shadowOffsetPx = 2;

/// Cells a side.
std::int32_t division() {
    return engineState.gridLevel == 1 ? 4 : 2;
}

void addCell(Picture& picture, const PictureBox& cell, std::int32_t number) {
    const float sizePx = std::clamp(0.3F * std::min(cell.width, cell.height), 12.0F, 64.0F);
    const PictureBox shadow{cell.x + shadowOffsetPx, cell.y + shadowOffsetPx, cell.width, cell.height};
    const std::u16string text = decimalText(number);
    picture.commands.push_back(FilledRectangle{cell, withAlpha(engineConfig.segmentColor, cellAlpha)});
    picture.commands.push_back(OutlinedRectangle{cell, outlineColor, outlineWidthPx});
    picture.commands.push_back(TextInBox{text, shadow, sizePx, true, shadowColor});
    picture.commands.push_back(TextInBox{text, cell, sizePx, true, numberColor});
}

/// An area narrowed down to nothing leaves the last picture standing.
void paintGrid() {
    const Rect& area = engineState.gridRect;
    if (area.width() > 0 && area.height() > 0)
        presentPictureAt(engineState.gridWindow, {area.left, area.top}, gridPicture());
}

void putCursorAtCentre(const Rect& area) {
    setCursorPosition({(area.left + area.right) / 2, (area.top + area.bottom) / 2});
}

} // namespace

Picture gridPicture() {
    const Rect& area = engineState.gridRect;
    const std::int32_t side = division();
    Picture picture{area.width(), area.height(), {}};
    const float cellWidth = static_cast<float>(area.width()) / static_cast<float>(side);
    const float cellHeight = static_cast<float>(area.height()) / static_cast<float>(side);
    for (std::int32_t row = 0; row < side; ++row) {
        for (std::int32_t column = 0; column < side; ++column) {
            const PictureBox cell{static_cast<float>(column) * cellWidth,
                                  static_cast<float>(row) * cellHeight, cellWidth, cellHeight};
            addCell(picture, cell, row * side + column + 1);
        }
    }
    return picture;
}

void showGrid() {
    hideElementLabels();
    engineState.gridRect = monitorAt(cursorPosition());
    engineState.gridLevel = 1;
    paintGrid();
    showOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = true;
    putCursorAtCentre(engineState.gridRect);
}

void hideGrid() {
    hideOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = false;
}

void narrowGrid(std::int32_t number) {
    const std::int32_t side = division();
    if (number < 1 || number > side * side)
        return;
    const std::int32_t row = (number - 1) / side;
    const std::int32_t column = (number - 1) % side;
    const Rect old = engineState.gridRect;
    // Multiplied before divided, so that the cells tile the area without a gap.
    engineState.gridRect = {old.left + old.width() * column / side, old.top + old.height() * row / side,
                            old.left + old.width() * (column + 1) / side,
                            old.top + old.height() * (row + 1) / side};
    ++engineState.gridLevel;
    paintGrid();
    putCursorAtCentre(engineState.gridRect);
}
