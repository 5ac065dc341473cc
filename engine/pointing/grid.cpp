#include "pointing/grid.h"

#include "base/color.h"
#include "base/text.h"
#include "layers/drawing.h"
#include "layers/grid_window.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr std::uint8_t cellAlpha = 0x1C;
constexpr PictureColor outlineColor = white(0xBE);
constexpr float outlineWidthPx = 2;
constexpr PictureColor numberColor = white(0xEB);
constexpr PictureColor shadowColor = black(0x82);
constexpr float shadowOffsetPx = 2;

/// Cells per side.
std::int32_t division() {
    return engineState.gridLevel == 1 ? 4 : 2;
}

void addCell(Picture& picture, const PictureBox& cell, std::int32_t number) {
    const float sizePx = std::clamp(0.3F * std::min(cell.width, cell.height), 12.0F, 64.0F);
    picture.commands.push_back(FilledRectangle{cell, withAlpha(engineConfig.segmentColor, cellAlpha)});
    picture.commands.push_back(OutlinedRectangle{cell, outlineColor, outlineWidthPx});
    addShadowedText(picture, decimalText(number), cell, {sizePx, numberColor, shadowColor, shadowOffsetPx});
}

/// An empty area keeps the last picture.
void paintGrid() {
    paintGridWindow(engineState.gridRect, gridPicture());
}

void moveCursorToCentre(const Rect& area) {
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
    moveCursorToCentre(engineState.gridRect);
}

void narrowGrid(std::int32_t number) {
    const std::int32_t side = division();
    if (number < 1 || number > side * side)
        return;
    const std::int32_t row = (number - 1) / side;
    const std::int32_t column = (number - 1) % side;
    const Rect old = engineState.gridRect;
    // Multiplies before dividing, so that the cells tile the area without gaps.
    engineState.gridRect = {old.left + old.width() * column / side, old.top + old.height() * row / side,
                            old.left + old.width() * (column + 1) / side,
                            old.top + old.height() * (row + 1) / side};
    ++engineState.gridLevel;
    paintGrid();
    moveCursorToCentre(engineState.gridRect);
}

} // namespace rotika
