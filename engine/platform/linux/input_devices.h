#pragma once

#include "platform/linux/x11.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

namespace rotika {

// Input devices of the server, for the program and its guard, above all slave pointers that were detached
// from their master. Each on its own connection; a device that no longer exists is skipped.

struct DeviceInfosDeleter {
    void operator()(XIDeviceInfo* infos) const noexcept {
        if (infos != nullptr)
            XIFreeDeviceInfo(infos);
    }
};
using DeviceInfos = std::unique_ptr<XIDeviceInfo, DeviceInfosDeleter>;

/// `device` may be XIAllDevices. Null and 0 when there is no such device.
DeviceInfos queryDevices(Display* display, int device, int& count);

/// Whether the device's events are injected.
bool isXTestDevice(Display* display, int device);

/// Whether a button is down, by its number from 1 on; index 0 is unused.
using ButtonStates = std::vector<bool>;

/// Empty for a device without buttons. By the first version of the input extension: XIQueryDevice leaves a
/// device's last button out.
ButtonStates slaveButtonStates(Display* display, int device);

bool isDownIn(const ButtonStates& states, std::size_t button);

/// Releases buttons that are down on the device itself. Their later physical releases then do nothing.
void releaseDeviceButtons(Display* display, int device, const std::vector<unsigned int>& buttons);

/// Buttons that were released while their device was detached are still down for the programs, which did not
/// get the release. A press and release by XTest delivers it. Only for buttons that were held before: a click
/// that a window manager still delays looks the same, and would be doubled.
void releaseForgottenButtons(Display* display, const std::set<std::size_t>& heldBefore);

} // namespace rotika
