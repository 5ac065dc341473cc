#include "wheel/icons.h"

#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/paths.h"
#include "platform/picture_image.h"
#include "platform/threads.h"
#include "workers/posted_record.h"

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace rotika {

namespace {

constexpr std::size_t maxIcons = 2000; // the fields of 83 full wheels; images are never freed

std::u16string iconPath(const std::u16string& written) {
    const bool isAbsolute =
        written.size() >= 2 && (written[1] == u':' || written[0] == u'\\' || written[0] == u'/');
    return isAbsolute ? written : programFilePath(written);
}

IconCacheEntry* cachedIcon(const std::u16string& path) {
    auto& cache = engineState.iconCache;
    const auto known = std::find_if(cache.begin(), cache.end(),
                                    [&](const IconCacheEntry& entry) { return entry.path == path; });
    return known == cache.end() ? nullptr : &*known;
}

/// One message per icon: a file that hangs must not delay the icons before it.
void readIcons(const std::vector<std::u16string>& paths, WindowHandle mainWindow) noexcept {
    for (const std::u16string& path : paths)
        postRecord(mainWindow, MsgIconLoaded,
                   std::make_unique<IconCacheEntry>(
                       IconCacheEntry{path, loadPictureImage(iconPath(path), iconSizePx)}));
}

} // namespace

void loadNewIcons() {
    std::unordered_set<std::u16string> known;
    for (const IconCacheEntry& entry : engineState.iconCache)
        known.insert(entry.path);
    std::vector<std::u16string> paths;
    for (const Wheel& wheel : engineState.wheels) {
        for (const WheelAction& action : wheel.actions) {
            if (action.icon.empty() || engineState.iconCache.size() >= maxIcons ||
                !known.insert(action.icon).second)
                continue;
            engineState.iconCache.push_back({action.icon, nullptr});
            paths.push_back(action.icon);
        }
    }
    if (paths.empty())
        return;
    // Without a thread the fields show no icons.
    static_cast<void>(startDetachedThread(
        [paths = std::move(paths), main = engineState.mainWindow] { readIcons(paths, main); }));
}

bool takeIcon(std::intptr_t payload) {
    const auto loaded = takeRecord<IconCacheEntry>(MsgIconLoaded, payload);
    IconCacheEntry* const entry = loaded == nullptr ? nullptr : cachedIcon(loaded->path);
    if (entry == nullptr || loaded->image == nullptr)
        return false;
    entry->image = loaded->image;
    return true;
}

const PictureImage* iconFor(const WheelAction& action) {
    const IconCacheEntry* const entry = action.icon.empty() ? nullptr : cachedIcon(action.icon);
    return entry == nullptr ? nullptr : entry->image;
}

} // namespace rotika
