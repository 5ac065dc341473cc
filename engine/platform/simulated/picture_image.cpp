#include "platform/picture_image.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

const PictureImage* loadPictureImage(const std::u16string& path, std::int32_t /*sidePx*/) {
    SimulatedDesktop& desktop = simulatedDesktop();
    const std::lock_guard lock(desktop.guard);
    desktop.imageLoads.push_back(path);
    return desktop.loadableImages.contains(path) ? &desktop.images.emplace_back(PictureImage{path}) : nullptr;
}

} // namespace rotika
