#pragma once

#include "platform/linux/x11.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

namespace rotika {

// Devices of the server, as the program and its guard need them, above all slave pointers that were taken
// from their master. Each on its own connection; a device that is gone is passed over.

struct DeviceInfosDeleter {
    void operator()(XIDeviceInfo* infos) const noexcept {
        if (infos != nullptr)
            XIFreeDeviceInfo(infos);
    }
};
using DeviceInfos = std::unique_ptr<XIDeviceInfo, DeviceInfosDeleter>;

/// `device` may be XIAllDevices. Null and 0 when there is no such device.
DeviceInfos queryDevices(Display* display, int device, int& count);

/// Whether what the device sends was injected.
bool isXTestDevice(Display* display, int device);

/// Whether a button is down, by its number from 1 on; index 0 is unused.
using ButtonStates = std::vector<bool>;

/// The states as `info` tells them; empty for a device without buttons.
ButtonStates buttonStates(const XIDeviceInfo& info);

bool isDownIn(const ButtonStates& states, std::size_t button);

/// Lets go of buttons that are down on the device itself. Their later releases by the person then do nothing.
void releaseDeviceButtons(Display* display, int device, const std::vector<unsigned int>& buttons);

/// Buttons that were let go while their device was detached are still down for the programs, since the
/// release reached nobody. A press and release by XTest delivers it. Of those alone that were held before: a
/// click that a window manager still holds back looks the same, and would be doubled.
void releaseForgottenButtons(Display* display, const std::set<std::size_t>& heldBefore);

} // namespace rotika
