#include "platform/linux/layer_image.h"

#include "platform/linux/connection.h"

#include <cstdlib>

namespace rotika {

LayerImage::LayerImage(Visual* visual, int depth, int width, int height) {
    isShared = attachSharedMemory(visual, depth, width, height);
    if (!isShared) {
        image = XCreateImage(ownerDisplay(), visual, static_cast<unsigned int>(depth), ZPixmap, 0, nullptr,
                             static_cast<unsigned int>(width), static_cast<unsigned int>(height), 32, 0);
        const auto size = static_cast<std::size_t>(image->bytes_per_line) * static_cast<std::size_t>(height);
        image->data = static_cast<char*>(std::calloc(size, 1)); // XDestroyImage frees it
    }
    cairoSurface =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(image->data),
                                            CAIRO_FORMAT_ARGB32, width, height, image->bytes_per_line);
}

LayerImage::~LayerImage() {
    waitUntilRead();
    cairo_surface_destroy(cairoSurface);
    if (isShared) {
        XShmDetach(ownerDisplay(), &segment);
        XSync(ownerDisplay(), 0);
        shmdt(segment.shmaddr);
        image->data = nullptr;
    }
    XDestroyImage(image);
}

/// False if the server is on another machine or lacks the extension.
bool LayerImage::attachSharedMemory(Visual* visual, int depth, int width, int height) {
    if (XShmQueryExtension(ownerDisplay()) == 0)
        return false;
    image = XShmCreateImage(ownerDisplay(), visual, static_cast<unsigned int>(depth), ZPixmap, nullptr,
                            &segment, static_cast<unsigned int>(width), static_cast<unsigned int>(height));
    if (image == nullptr)
        return false;
    const auto size = static_cast<std::size_t>(image->bytes_per_line) * static_cast<std::size_t>(height);
    segment.shmid = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    void* memory = segment.shmid < 0 ? nullptr : shmat(segment.shmid, nullptr, 0);
    bool isAttached = memory != nullptr && memory != reinterpret_cast<void*>(-1);
    if (isAttached) {
        segment.shmaddr = image->data = static_cast<char*>(memory);
        segment.readOnly = 0;
        const ErrorTrap trap;
        XShmAttach(ownerDisplay(), &segment);
        isAttached = !trap.hasFailed();
        if (!isAttached)
            shmdt(memory);
    }
    if (segment.shmid >= 0)
        shmctl(segment.shmid, IPC_RMID, nullptr); // freed once both sides detach, even if we are killed
    if (!isAttached) {
        image->data = nullptr;
        XDestroyImage(image);
        image = nullptr;
    }
    return isAttached;
}

void LayerImage::waitUntilRead() {
    if (!hasUnreadPuts)
        return;
    // A round trip, not completion events: the server sends none for a put that it refuses, and waiting for
    // them would block the owner thread forever.
    XSync(ownerDisplay(), 0);
    hasUnreadPuts = false;
}

void LayerImage::putTo(Drawable target, GC gc, int x, int y, int partWidth, int partHeight) {
    const auto width = static_cast<unsigned int>(partWidth);
    const auto height = static_cast<unsigned int>(partHeight);
    if (!isShared) {
        XPutImage(ownerDisplay(), target, gc, image, x, y, x, y, width, height);
        return;
    }
    XShmPutImage(ownerDisplay(), target, gc, image, x, y, x, y, width, height, 0);
    hasUnreadPuts = true;
}

} // namespace rotika
