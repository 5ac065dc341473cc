#include "platform/pointer_capture.h"

#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/hot_key_events.h"

#include <algorithm>
#include <map>
#include <vector>

// A grabbed slave pointer leaves its master: the cursor stays where it is and no other client sees the
// device's events, while what XTest injects comes from a slave of its own and passes. Raw motion of a grabbed
// device comes to the grabbing client alone, and only if the grab's own mask asks for it.

namespace {

constexpr int axisCount = 2;

struct GrabbedMouse {
    bool isRelative[axisCount] = {false, false};
    double remainder[axisCount] = {0, 0}; // fractions of a count that have not moved the cursor yet
};

struct Capture {
    bool isActive = false;
    PointerCaptureHandlers handlers{};
    std::map<int, GrabbedMouse> mice; // by device id
    bool primaryIsRight = false;      // the user has swapped the buttons
};
Capture capture;

struct DeviceInfosDeleter {
    void operator()(XIDeviceInfo* infos) const noexcept {
        if (infos != nullptr)
            XIFreeDeviceInfo(infos);
    }
};
using DeviceInfos = std::unique_ptr<XIDeviceInfo, DeviceInfosDeleter>;

DeviceInfos queryDevices(int& count) {
    count = 0;
    return DeviceInfos(XIQueryDevice(ownerDisplay(), XIAllDevices, &count));
}

bool isXTestDevice(int deviceId) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const ErrorTrap trap; // the device may be gone by now
    XIGetProperty(ownerDisplay(), deviceId, atomNamed("XTEST Device"), 0, 1, 0, XA_INTEGER, &type, &format,
                  &count, &left, &data);
    const XOwned<unsigned char> owned(data);
    return type == XA_INTEGER && count > 0 && *data != 0;
}

/// Ours float while we hold them; others that float are none of the desktop's business.
bool isMouse(const XIDeviceInfo& info) {
    const bool isOurs = info.use == XIFloatingSlave && capture.mice.contains(info.deviceid);
    return info.enabled != 0 && (info.use == XISlavePointer || isOurs) && !isXTestDevice(info.deviceid);
}

GrabbedMouse describe(const XIDeviceInfo& info) {
    GrabbedMouse mouse;
    for (int i = 0; i < info.num_classes; ++i) {
        if (info.classes[i]->type != XIValuatorClass)
            continue;
        const auto* axis = reinterpret_cast<const XIValuatorClassInfo*>(info.classes[i]);
        if (axis->number < axisCount)
            mouse.isRelative[axis->number] = axis->mode == XIModeRelative;
    }
    return mouse;
}

void grabMouse(const XIDeviceInfo& info) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawMotion);
    XISetMask(bits, XI_RawButtonPress);
    XIEventMask mask{info.deviceid, sizeof bits, bits};
    const ErrorTrap trap;
    const int refused = XIGrabDevice(ownerDisplay(), info.deviceid, rootWindow(), CurrentTime, noXid,
                                     GrabModeAsync, GrabModeAsync, 0, &mask);
    if (refused == 0 && !capture.mice.contains(info.deviceid))
        capture.mice[info.deviceid] = describe(info);
}

/// Also after devices have come, gone or been switched: a device enabled again is attached again, grab or no
/// grab.
void grabAllMice() {
    int count = 0;
    const DeviceInfos infos = queryDevices(count);
    for (int i = 0; i < count; ++i)
        if (isMouse(infos.get()[i]))
            grabMouse(infos.get()[i]);
}

void selectHierarchyChanges(bool isOn) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (isOn)
        XISetMask(bits, XI_HierarchyChanged);
    XIEventMask mask{XIAllDevices, sizeof bits, bits};
    XISelectEvents(ownerDisplay(), rootWindow(), &mask, 1);
}

void handleRawMotion(const XIRawEvent& raw) {
    const auto mouse = capture.mice.find(raw.deviceid);
    if (mouse == capture.mice.end())
        return;
    std::int32_t moved[axisCount] = {0, 0};
    const double* value = raw.raw_values; // device counts, before the server's acceleration
    for (int axis = 0; axis < raw.valuators.mask_len * 8; ++axis) {
        if (XIMaskIsSet(raw.valuators.mask, axis) == 0)
            continue;
        if (axis < axisCount && mouse->second.isRelative[axis]) {
            double& remainder = mouse->second.remainder[axis];
            remainder += std::clamp(*value, -1e6, 1e6);
            moved[axis] = static_cast<std::int32_t>(remainder);
            remainder -= moved[axis];
        }
        ++value;
    }
    if (moved[0] != 0 || moved[1] != 0)
        capture.handlers.moved(moved[0], moved[1]);
}

void handleRawPress(const XIRawEvent& raw) {
    const bool isLeft = raw.detail == 1 || (capture.primaryIsRight && raw.detail == 3);
    if (isLeft && capture.mice.contains(raw.deviceid))
        capture.handlers.leftPressed();
}

bool handleCaptureEvent(XEvent& event) {
    if (event.type != GenericEvent || event.xcookie.extension != xinputOpcode() ||
        event.xcookie.data == nullptr)
        return false;
    if (!capture.isActive)
        return true; // sent before the capture ended
    switch (event.xcookie.evtype) {
    case XI_RawMotion:
        handleRawMotion(*static_cast<const XIRawEvent*>(event.xcookie.data));
        break;
    case XI_RawButtonPress:
        handleRawPress(*static_cast<const XIRawEvent*>(event.xcookie.data));
        break;
    case XI_HierarchyChanged:
        grabAllMice();
        break;
    default:
        break;
    }
    return true;
}

std::vector<bool> buttonsDown(const XIDeviceInfo& info) {
    std::vector<bool> down;
    for (int i = 0; i < info.num_classes; ++i) {
        if (info.classes[i]->type != XIButtonClass)
            continue;
        const auto* buttons = reinterpret_cast<const XIButtonClassInfo*>(info.classes[i]);
        for (int bit = 0; bit < buttons->state.mask_len * 8; ++bit)
            down.push_back(XIMaskIsSet(buttons->state.mask, bit) != 0);
    }
    return down;
}

bool isDownIn(const std::vector<bool>& down, std::size_t button) {
    return button < down.size() && down[button];
}

/// A button held when the capture began and let go inside it is still down for the programs, since the
/// release stayed with us. A press and release by XTest delivers it.
void releaseForgottenButtons() {
    int count = 0;
    const DeviceInfos infos = queryDevices(count);
    std::vector<bool> forMaster;
    std::vector<std::vector<bool>> forSlaves;
    for (int i = 0; i < count; ++i) {
        const XIDeviceInfo& info = infos.get()[i];
        if (info.use == XIMasterPointer && forMaster.empty())
            forMaster = buttonsDown(info);
        else if (info.use == XISlavePointer)
            forSlaves.push_back(buttonsDown(info));
    }
    for (std::size_t button = 1; button < forMaster.size(); ++button) {
        const bool isReallyDown =
            std::any_of(forSlaves.begin(), forSlaves.end(),
                        [button](const auto& slave) { return isDownIn(slave, button); });
        if (!forMaster[button] || isReallyDown)
            continue;
        XTestFakeButtonEvent(ownerDisplay(), static_cast<unsigned int>(button), 1, CurrentTime);
        XTestFakeButtonEvent(ownerDisplay(), static_cast<unsigned int>(button), 0, CurrentTime);
    }
}

void startListening() {
    static const bool isListening = (addEventHandler(handleCaptureEvent), true);
    (void)isListening;
}

} // namespace

void beginPointerCapture(WindowHandle, Point, const PointerCaptureHandlers& handlers) {
    if (ownerDisplay() == nullptr)
        return;
    startListening();
    capture.handlers = handlers;
    capture.primaryIsRight = mouseButtonsAreSwapped();
    capture.isActive = true;
    selectHierarchyChanges(true); // first, so that no mouse plugged in between is missed
    grabAllMice();
    XFlush(ownerDisplay());
}

bool renewPointerCapture() {
    return true;
}

void endPointerCapture() {
    if (!capture.isActive)
        return;
    capture.isActive = false;
    selectHierarchyChanges(false);
    {
        const ErrorTrap trap; // a mouse may have been unplugged
        for (const auto& [deviceId, mouse] : capture.mice)
            XIUngrabDevice(ownerDisplay(), deviceId, CurrentTime);
    }
    capture.mice.clear();
    releaseForgottenButtons();
    letGoOfHeldHotKey();
    XFlush(ownerDisplay());
}
