#include "wheel/painter.h"

#include "base/color.h"
#include "base/text.h"
#include "layers/drawing.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/overlay_window.h"
#include "wheel/icons.h"
#include "wheel/wheel_layout.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr PictureBox ringBox{70, 6, 2 * outerPaintedRadiusPx, 2 * outerPaintedRadiusPx};
constexpr PictureBox holeBox{248, 184, 2 * innerRadiusPx, 2 * innerRadiusPx};
constexpr PictureBox pageIndicatorBox{248, 210, 92, 22};
constexpr PictureBox wheelNameBox{248, 232, 92, 18};
constexpr std::uint8_t restingAlpha = 0x87; // 53 percent: only the hovered field is opaque
constexpr float shadowOffsetPx = 1.5F;
constexpr float dwellRingThreshold = 0.03F;

void addPies(Picture& picture, const Wheel& wheel, float span) {
    for (std::size_t i = 0; i < wheel.actions.size(); ++i) {
        const WheelAction& action = wheel.actions[i];
        const bool isHovered = static_cast<std::int32_t>(i) == engineState.hoveredField;
        const RgbColor color = action.hasColor ? action.color : engineConfig.segmentColor;
        const float start = static_cast<float>(i) * span - 90;
        picture.commands.push_back(
            FilledPie{ringBox, start, span, withAlpha(color, isHovered ? 0xFF : restingAlpha)});
        picture.commands.push_back(OutlinedPie{ringBox, start, span, white(isHovered ? 0xFF : 0xB4), 2.5F});
    }
}

void addFieldText(Picture& picture, const std::u16string& text, const PictureBox& box, float sizePx,
                  bool isHovered) {
    addShadowedText(picture, text, box,
                    {sizePx, white(isHovered ? 0xFF : 0xD7), black(isHovered ? 0xC8 : 0x78), shadowOffsetPx});
}

void addLabel(Picture& picture, const WheelAction& action, std::size_t field, std::size_t fieldCount,
              float span) {
    const PicturePoint centre = labelCentre(field, span);
    const bool isHovered = static_cast<std::int32_t>(field) == engineState.hoveredField;
    const PictureImage* image = iconFor(action);
    if (image == nullptr) {
        const std::u16string& text =
            action.name.empty() ? decimalText(static_cast<std::int64_t>(field) + 1) : action.name;
        const PictureBox box{centre.x - 62, centre.y - 34, 124, 68};
        addFieldText(picture, text, box, fieldCount <= 8 ? 19.0F : 16.0F, isHovered);
        return;
    }
    const float iconY = action.name.empty() ? centre.y : centre.y - 11;
    constexpr float side = iconSizePx;
    const PictureBox iconBox{centre.x - side / 2, iconY - side / 2, side, side};
    picture.commands.push_back(ImageInBox{image, iconBox, isHovered ? 1.0F : 135.0F / 255.0F});
    if (!action.name.empty())
        addFieldText(picture, action.name, {centre.x - 62, centre.y + 11, 124, 34}, 14, isHovered);
}

void addPageIndicator(Picture& picture) {
    const std::u16string text = decimalText(engineState.activeWheel + 1) + u"/" +
                                decimalText(static_cast<std::int64_t>(engineState.wheels.size()));
    picture.commands.push_back(TextInBox{text, pageIndicatorBox, 15, true, white(0xEB)});
}

void addArrow(Picture& picture, std::int32_t arrow) {
    const bool isHovered = arrow == engineState.hoveredArrow;
    const PictureBox box = pictureBox(arrowBoxes[arrow]);
    picture.commands.push_back(
        FilledRectangle{box, withAlpha(engineConfig.segmentColor, isHovered ? 0xFF : restingAlpha)});
    picture.commands.push_back(OutlinedRectangle{box, white(isHovered ? 0xFF : 0xB4), 2});
    const float centre = box.x + 22;
    const float outward = arrow == 0 ? -1.0F : 1.0F;
    Polygon triangle;
    triangle.points = {PicturePoint{centre - 8 * outward, 214}, PicturePoint{centre - 8 * outward, 246},
                       PicturePoint{centre + 10 * outward, 230}};
    triangle.count = 3;
    triangle.color = white(isHovered ? 0xFF : 0xDC);
    picture.commands.push_back(triangle);
}

void addVirtualCursor(Picture& picture) {
    constexpr PicturePoint outline[] = {{0, 0},      {0, 23}, {5.5F, 18.5F}, {9.5F, 27},
                                        {13, 25.5F}, {9, 17}, {16, 17}};
    Polygon arrow;
    arrow.count = std::size(outline);
    for (std::size_t i = 0; i < arrow.count; ++i)
        arrow.points[i] = {outline[i].x + static_cast<float>(engineState.cursorX),
                           outline[i].y + static_cast<float>(engineState.cursorY)};
    arrow.color = white(0xFF);
    picture.commands.push_back(arrow);
    arrow.color = black(0xFF);
    arrow.penWidth = 1.5F;
    picture.commands.push_back(arrow);
}

void addDwellRing(Picture& picture) {
    if (engineState.dwellProgress <= dwellRingThreshold)
        return;
    const PictureBox box{static_cast<float>(engineState.cursorX - 17),
                         static_cast<float>(engineState.cursorY - 17), 34, 34};
    picture.commands.push_back(OutlinedEllipse{box, white(0x5A), 3.5F});
    const float sweep = std::min(engineState.dwellProgress, 1.0F) * 360;
    picture.commands.push_back(OutlinedArc{box, -90, sweep, white(0xEB), 3.5F});
}

} // namespace

Picture buildWheelPicture() {
    const Wheel& wheel = activeWheelRecord();
    const std::size_t fieldCount = wheel.actions.size();
    const float span = 360.0F / static_cast<float>(fieldCount);
    Picture picture{layerWidthPx, layerHeightPx, {}};
    picture.commands.reserve(fieldCount * 5 + 16);
    addPies(picture, wheel, span);
    // All pies are painted before the labels, so that no outline crosses a label.
    for (std::size_t i = 0; i < fieldCount; ++i)
        addLabel(picture, wheel.actions[i], i, fieldCount, span);
    picture.commands.push_back(CutOutEllipse{holeBox});
    if (engineState.wheels.size() >= 2) {
        addPageIndicator(picture);
        addArrow(picture, 0);
        addArrow(picture, 1);
    }
    if (!wheel.name.empty())
        picture.commands.push_back(TextInBox{wheel.name, wheelNameBox, 13, false, white(0xD7)});
    addVirtualCursor(picture);
    addDwellRing(picture);
    return picture;
}

void paintWheel() {
    presentPicture(engineState.wheelWindow, buildWheelPicture());
}

void repaintOpenWheel() {
    if (engineState.wheelVisible)
        paintWheel();
}

} // namespace rotika
