#include "screen.h"

#include "platform/windows/handles.h"

#include <cstddef>

std::vector<PictureColor> screenPixels(const Rect& part) {
    const ScreenDc screen(GetDC(nullptr));
    const MemoryDc memory(CreateCompatibleDC(screen.get()));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = part.width();
    info.bmiHeader.biHeight = -part.height();
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const BitmapHandle bitmap(CreateDIBSection(screen.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const SelectedObject selected(memory.get(), bitmap.get());
    BitBlt(memory.get(), 0, 0, part.width(), part.height(), screen.get(), part.left, part.top, SRCCOPY);
    GdiFlush();

    const auto* const pixels = static_cast<const RGBQUAD*>(bits);
    const std::size_t count =
        static_cast<std::size_t>(part.width()) * static_cast<std::size_t>(part.height());
    std::vector<PictureColor> colors;
    for (std::size_t i = 0; i < count; ++i) {
        colors.push_back({255, pixels[i].rgbRed, pixels[i].rgbGreen, pixels[i].rgbBlue});
    }
    return colors;
}
