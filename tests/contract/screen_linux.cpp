#include "screen.h"

#include "platform/linux/x11.h"

#include <cstddef>

std::vector<PictureColor> screenPixels(const Rect& part) {
    static Display* const display = XOpenDisplay(nullptr);
    const auto width = static_cast<unsigned>(part.width());
    const auto height = static_cast<unsigned>(part.height());
    XImage* const image = XGetImage(display, DefaultRootWindow(display), part.left, part.top, width, height,
                                    AllPlanes, ZPixmap);
    std::vector<PictureColor> colors;
    for (int y = 0; y < part.height(); ++y) {
        for (int x = 0; x < part.width(); ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            colors.push_back({255, static_cast<std::uint8_t>(pixel >> 16U),
                              static_cast<std::uint8_t>(pixel >> 8U), static_cast<std::uint8_t>(pixel)});
        }
    }
    XDestroyImage(image);
    return colors;
}
