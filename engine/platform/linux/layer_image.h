#pragma once

#include "platform/linux/x11.h"

#include <cairo.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstdint>

namespace rotika {

/// A 32-bit image for Cairo to draw on, in memory shared with the X server where possible. Owner thread.
class LayerImage {
public:
    LayerImage(Visual* visual, int depth, int width, int height);
    ~LayerImage();
    LayerImage(const LayerImage&) = delete;
    LayerImage& operator=(const LayerImage&) = delete;

    cairo_surface_t* surface() const { return cairoSurface; }
    int width() const { return image->width; }
    int height() const { return image->height; }
    /// Alpha is the highest byte.
    const std::uint32_t* row(int y) const {
        return reinterpret_cast<const std::uint32_t*>(image->data + y * image->bytes_per_line);
    }

    /// Blocks until the server has processed earlier puts: then the pixels may be changed.
    void waitUntilRead();

    /// Makes the server copy a part to the same position of `target`.
    void putTo(Drawable target, GC gc, int x, int y, int partWidth, int partHeight);

private:
    bool attachSharedMemory(Visual* visual, int depth, int width, int height);

    XImage* image = nullptr;
    XShmSegmentInfo segment{};
    bool isShared = false;
    bool hasUnreadPuts = false;
    cairo_surface_t* cairoSurface = nullptr;
};

} // namespace rotika
