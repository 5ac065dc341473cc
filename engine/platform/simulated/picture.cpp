#include "platform/picture.h"

#include "platform/simulated/simulated_desktop.h"

const PictureImage* loadPictureImage(const std::u16string& path) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("image loaded on a worker");
    desktop.imageLoads.push_back(path);
    return desktop.loadableImages.contains(path) ? &desktop.images.emplace_back(PictureImage{path}) : nullptr;
}
