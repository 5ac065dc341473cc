#pragma once

#include "harness/x_connection.h"

#include <optional>

namespace e2e {

/// A point of the wheel's layer.
struct LayerPoint {
    int x = 0;
    int y = 0;
};

constexpr int layerWidth = 588;
constexpr int layerHeight = 460;
constexpr LayerPoint layerCentre{294, 230};
constexpr LayerPoint leftArrow{32, 230};
constexpr LayerPoint rightArrow{556, 230};

/// A point of field `index` of `count`, at `radius` from the centre: fields start at twelve o'clock and run
/// clockwise. Its middle unless told otherwise.
LayerPoint fieldPoint(int index, int count, int radius = 145);

/// The wheel as it is seen on the screen.
class WheelView {
public:
    WheelView() = default;
    explicit WheelView(const XConnection& connection) : eyes(&connection) {}

    std::optional<ShownWindow> window() const;
    /// The virtual cursor's tip is drawn at this point of the layer.
    bool cursorIsAt(LayerPoint point) const;
    /// Where its tip is drawn; nothing while the wheel or the cursor is not to be seen.
    std::optional<LayerPoint> findCursor() const;
    PixelColor pixel(LayerPoint point) const;
    ScreenPoint onScreen(LayerPoint point) const;

private:
    const XConnection* eyes = nullptr;
};

} // namespace e2e
