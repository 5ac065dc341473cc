#pragma once

#include "base/color.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace rotika {

// A picture is a list of draw commands in painting order, in layer pixels. The platform executes it, so that
// geometry, order and colours can be tested without rendering. Angles are degrees, clockwise from three
// o'clock.

struct PicturePoint {
    float x = 0;
    float y = 0;

    bool operator==(const PicturePoint&) const = default;
};

struct PictureBox {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;

    bool operator==(const PictureBox&) const = default;
};

struct FilledPie {
    PictureBox box; // of the whole ellipse
    float startAngle = 0;
    float sweepAngle = 0;
    PictureColor color;

    bool operator==(const FilledPie&) const = default;
};

/// Arc and both radii.
struct OutlinedPie {
    PictureBox box;
    float startAngle = 0;
    float sweepAngle = 0;
    PictureColor color;
    float penWidth = 1;

    bool operator==(const OutlinedPie&) const = default;
};

struct OutlinedArc {
    PictureBox box;
    float startAngle = 0;
    float sweepAngle = 0;
    PictureColor color;
    float penWidth = 1;

    bool operator==(const OutlinedArc&) const = default;
};

/// Makes everything below it fully transparent.
struct CutOutEllipse {
    PictureBox box;

    bool operator==(const CutOutEllipse&) const = default;
};

struct OutlinedEllipse {
    PictureBox box;
    PictureColor color;
    float penWidth = 1;

    bool operator==(const OutlinedEllipse&) const = default;
};

struct FilledRectangle {
    PictureBox box;
    PictureColor color;

    bool operator==(const FilledRectangle&) const = default;
};

struct OutlinedRectangle {
    PictureBox box;
    PictureColor color;
    float penWidth = 1;

    bool operator==(const OutlinedRectangle&) const = default;
};

/// A closed polygon of the first `count` points, even-odd filled; with `penWidth` above 0 its outline
/// instead.
struct Polygon {
    std::array<PicturePoint, 7> points;
    std::size_t count = 0;
    PictureColor color;
    float penWidth = 0;

    bool operator==(const Polygon&) const = default;
};

/// Text in the interface's sans-serif family ("Segoe UI" where there is one), centred both ways in `box`,
/// wrapped between words, clipped to the box.
struct TextInBox {
    std::u16string text;
    PictureBox box;
    float sizePx = 0;
    bool bold = false;
    PictureColor color;

    bool operator==(const TextInBox&) const = default;
};

/// Decoded by the platform; never freed, since the icon cache keeps images until the process ends.
struct PictureImage;

/// The whole image stretched into `box`, its alpha multiplied by `opacity`.
struct ImageInBox {
    const PictureImage* image = nullptr;
    PictureBox box;
    float opacity = 1;

    bool operator==(const ImageInBox&) const = default;
};

using DrawCommand = std::variant<FilledPie, OutlinedPie, OutlinedArc, CutOutEllipse, OutlinedEllipse,
                                 FilledRectangle, OutlinedRectangle, Polygon, TextInBox, ImageInBox>;

struct Picture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<DrawCommand> commands;
};

} // namespace rotika
