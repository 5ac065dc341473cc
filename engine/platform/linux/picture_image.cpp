#include "platform/linux/picture_image.h"

#include "core/text.h"

#include "platform/linux/glib_handles.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <map>
#include <utility>

struct PictureImage {
    GObjectPointer<GdkPixbuf> pixels;
    mutable std::map<std::pair<int, int>, cairo_surface_t*> scaled;
};

namespace {

constexpr int largestKeptSidePx = 256; // a field shows 42: a photograph need not stay in memory

std::uint32_t premultiplied(const guchar* pixel, int channels) {
    const std::uint32_t alpha = channels == 4 ? pixel[3] : 255;
    const auto scale = [alpha](std::uint32_t value) { return (value * alpha + 127) / 255; };
    return alpha << 24 | scale(pixel[0]) << 16 | scale(pixel[1]) << 8 | scale(pixel[2]);
}

cairo_surface_t* surfaceOf(const GdkPixbuf& pixels) {
    const int width = gdk_pixbuf_get_width(&pixels);
    const int height = gdk_pixbuf_get_height(&pixels);
    const int channels = gdk_pixbuf_get_n_channels(&pixels);
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_surface_flush(surface);
    unsigned char* target = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const guchar* source = gdk_pixbuf_read_pixels(&pixels);
    for (int y = 0; target != nullptr && y < height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(target + y * stride);
        const guchar* from = source + static_cast<std::ptrdiff_t>(y) * gdk_pixbuf_get_rowstride(&pixels);
        for (int x = 0; x < width; ++x, from += channels)
            row[x] = premultiplied(from, channels);
    }
    cairo_surface_mark_dirty(surface);
    return surface;
}

} // namespace

const PictureImage* loadPictureImage(const std::u16string& path, std::int32_t /*sidePx*/) {
    const std::string file = utf8FromUtf16(path);
    int width = 0;
    int height = 0;
    if (gdk_pixbuf_get_file_info(file.c_str(), &width, &height) == nullptr)
        return nullptr;
    const bool isLarge = width > largestKeptSidePx || height > largestKeptSidePx;
    GdkPixbuf* pixels = isLarge ? gdk_pixbuf_new_from_file_at_size(file.c_str(), largestKeptSidePx,
                                                                   largestKeptSidePx, nullptr)
                                : gdk_pixbuf_new_from_file(file.c_str(), nullptr);
    if (pixels == nullptr)
        return nullptr;
    return new PictureImage{GObjectPointer<GdkPixbuf>(pixels), {}};
}

cairo_surface_t* scaledImage(const PictureImage& image, int width, int height) {
    cairo_surface_t*& known = image.scaled[{width, height}];
    if (known == nullptr) {
        const GObjectPointer<GdkPixbuf> pixels(
            gdk_pixbuf_scale_simple(image.pixels.get(), width, height, GDK_INTERP_BILINEAR));
        known = surfaceOf(*pixels);
    }
    return known;
}
