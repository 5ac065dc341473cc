#include "platform/picture_image.h"

#include "base/text.h"

#include "platform/linux/glib_handles.h"
#include "platform/linux/picture_image.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace rotika {

struct PictureImage {
    cairo_surface_t* pixels;
};

namespace {

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

/// A regular file of limited size, open for reading. O_NONBLOCK: opening a pipe must not block.
class ImageFile {
public:
    explicit ImageFile(const char* path) : file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
        struct stat status = {};
        isGood = file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
                 static_cast<std::uint64_t>(status.st_size) <= largestImageBytes;
    }
    ~ImageFile() {
        if (file >= 0)
            close(file);
    }
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    bool isUsable() const { return isGood; }
    /// Opens the file that was checked, even if its path has been replaced meanwhile.
    std::string path() const { return "/proc/self/fd/" + std::to_string(file); }

private:
    int file;
    bool isGood = false;
};

} // namespace

const PictureImage* loadPictureImage(const std::u16string& path, std::int32_t sidePx) {
    const ImageFile file(utf8FromUtf16(path).c_str());
    int width = 0;
    int height = 0;
    if (!file.isUsable() || gdk_pixbuf_get_file_info(file.path().c_str(), &width, &height) == nullptr ||
        width > largestImageSidePx || height > largestImageSidePx)
        return nullptr;
    // Not an incremental loader: that would accept a truncated file.
    const GObjectPointer<GdkPixbuf> whole(gdk_pixbuf_new_from_file(file.path().c_str(), nullptr));
    if (whole == nullptr)
        return nullptr;
    const GObjectPointer<GdkPixbuf> square(
        gdk_pixbuf_scale_simple(whole.get(), sidePx, sidePx, GDK_INTERP_BILINEAR));
    return square == nullptr ? nullptr : new PictureImage{surfaceOf(*square)};
}

cairo_surface_t* imagePixels(const PictureImage& image) {
    return image.pixels;
}

} // namespace rotika
