#pragma once

#include "base/geometry.h"
#include "base/picture.h"

#include <cstddef>
#include <cstdint>

namespace rotika {

// One fixed layout for every wheel and monitor, in pixels of the wheel's layer: origin top left, y downward.

inline constexpr std::int32_t layerWidthPx = 588;
inline constexpr std::int32_t layerHeightPx = 460;
inline constexpr Point wheelCentre{294, 230};
inline constexpr std::int32_t innerRadiusPx = 46;
inline constexpr std::int32_t outerLiveRadiusPx = 226;    // hit-testing extends two pixels beyond
inline constexpr std::int32_t outerPaintedRadiusPx = 224; // the painted edge, deliberately
inline constexpr std::int32_t labelRadiusPx = 145;
inline constexpr Rect arrowBoxes[] = {{10, 186, 54, 274}, {534, 186, 578, 274}};

/// Index of the field of the active wheel at a layer point, or -1. Field 0 begins at twelve o'clock, fields
/// run clockwise. Owner thread, like the functions below.
std::int32_t hitTestField(std::int32_t x, std::int32_t y);

/// 0 left, 1 right, -1 none; always -1 with fewer than two wheels.
std::int32_t hitTestArrow(std::int32_t x, std::int32_t y);

/// Centre of a field's label: the middle of its span in degrees, at the label radius.
PicturePoint labelCentre(std::size_t field, float span);

/// The nearest pixel to the centre of the label of one of `fieldCount` fields, which is inside the field.
Point labelPoint(std::int32_t field, std::int32_t fieldCount);

/// The place of the wheel's window on a monitor.
Rect wheelRectOn(const Rect& monitor);

} // namespace rotika
