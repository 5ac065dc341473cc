#include "platform/pointer_capture.h"

#include "platform/linux/connection.h"
#include "platform/linux/cursor_pin.h"
#include "platform/linux/input_devices.h"
#include "platform/linux/input_guard.h"
#include "platform/linux/owner_loop.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace rotika {

// A grabbed slave pointer is detached from its master: the cursor stays where it is and no other client
// receives the device's events. Events injected by XTest come from a slave of their own and are not affected.
// Raw motion of a grabbed device is sent to the grabbing client alone, and only if the grab's own mask
// selects it.

namespace {

using Clock = std::chrono::steady_clock;

constexpr int axisCount = 2;
constexpr std::chrono::milliseconds heartbeatPeriod{250};
constexpr guint releasePollMs = 15;
constexpr std::chrono::milliseconds longestWaitForRelease{3000}; // a button may be stuck
// Well below the guard's limit: in doubt the mice count as released.
constexpr std::chrono::milliseconds staleAfter{captureSilenceLimitMs * 3 / 4};

struct GrabbedMouse {
    bool isRelative[axisCount] = {false, false};
    double remainder[axisCount] = {0, 0}; // fractions of a count not reported yet
    int master = 0;                       // before the grab
    ButtonStates downBefore;              // buttons
};

struct Capture {
    bool isActive = false;
    PointerCaptureHandlers handlers{};
    std::map<int, GrabbedMouse> mice; // by device id
    std::set<std::size_t> heldBefore; // buttons that were down on a mouse when it was grabbed
    int primaryButton = 1;            // of the device, before the user's mapping
    Clock::time_point lastRenewal;
    Clock::time_point lastHeartbeat;
    Clock::time_point endedAt;
    bool isWaitingForRelease = false; // of mice that stay grabbed after the capture
};
Capture capture;

/// Grabbed mice float; other floating devices do not belong to the desktop.
bool isMouse(const XIDeviceInfo& info) {
    const bool isOurs = info.use == XIFloatingSlave && capture.mice.contains(info.deviceid);
    return info.enabled != 0 && (info.use == XISlavePointer || isOurs) &&
           !isXTestDevice(ownerDisplay(), info.deviceid);
}

GrabbedMouse describe(const XIDeviceInfo& info) {
    GrabbedMouse mouse;
    mouse.master = info.attachment;
    for (int i = 0; i < info.num_classes; ++i) {
        if (info.classes[i]->type != XIValuatorClass)
            continue;
        const auto* axis = reinterpret_cast<const XIValuatorClassInfo*>(info.classes[i]);
        if (axis->number < axisCount)
            mouse.isRelative[axis->number] = axis->mode == XIModeRelative;
    }
    return mouse;
}

/// The guard and any replacement have records of them for as long as they may have to be released.
void rememberHeldButtons(const ButtonStates& states) {
    for (std::size_t button = 1; button < states.size(); ++button)
        if (states[button] && capture.heldBefore.insert(button).second)
            notifyInputGuard(GuardedThing::heldButton, true, static_cast<std::uint32_t>(button));
}

void releaseHeldButtons() {
    releaseForgottenButtons(ownerDisplay(), capture.heldBefore);
    XFlush(ownerDisplay()); // before the guard removes its records
    for (const std::size_t button : std::exchange(capture.heldBefore, {}))
        notifyInputGuard(GuardedThing::heldButton, false, static_cast<std::uint32_t>(button));
}

/// Includes presses between the first query and the grab: programs have received them too.
GrabbedMouse describeGrabbed(const XIDeviceInfo& before) {
    GrabbedMouse mouse = describe(before);
    mouse.downBefore = slaveButtonStates(ownerDisplay(), before.deviceid);
    rememberHeldButtons(mouse.downBefore);
    return mouse;
}

void grabMouse(const XIDeviceInfo& info) {
    const bool isNew = !capture.mice.contains(info.deviceid);
    rememberHeldButtons(slaveButtonStates(ownerDisplay(), info.deviceid));
    // The guard is notified first: if this process is killed in between, the mouse is released once too often
    // instead of not at all.
    if (isNew)
        notifyInputGuard(GuardedThing::pointerPin, true, codeOfPinnedDevice(info.deviceid, info.attachment));
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawMotion);
    XISetMask(bits, XI_RawButtonPress);
    XIEventMask mask{info.deviceid, sizeof bits, bits};
    const ErrorTrap trap;
    const int refused = XIGrabDevice(ownerDisplay(), info.deviceid, rootWindow(), CurrentTime, noXid,
                                     GrabModeAsync, GrabModeAsync, 0, &mask);
    if (isNew && refused == 0)
        capture.mice[info.deviceid] = describeGrabbed(info);
    else if (isNew)
        notifyInputGuard(GuardedThing::pointerPin, false, codeOfPinnedDevice(info.deviceid, info.attachment));
}

/// Also called after devices were added, removed, enabled or disabled: an enabled device is attached again
/// even if it was grabbed.
void grabAllMice() {
    int count = 0;
    const DeviceInfos infos = queryDevices(ownerDisplay(), XIAllDevices, count);
    std::erase_if(capture.mice, [&](const auto& entry) { // unplugged; another device may get its id
        const bool isUnplugged =
            std::none_of(infos.get(), infos.get() + count,
                         [&](const XIDeviceInfo& info) { return info.deviceid == entry.first; });
        if (isUnplugged)
            notifyInputGuard(GuardedThing::pointerPin, false,
                             codeOfPinnedDevice(entry.first, entry.second.master));
        return isUnplugged;
    });
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
    if (raw.detail == capture.primaryButton && capture.mice.contains(raw.deviceid))
        capture.handlers.leftPressed();
}

bool isCaptureEvent(const XEvent& event) {
    return event.type == GenericEvent && event.xcookie.extension == xinputOpcode() &&
           event.xcookie.data != nullptr &&
           (event.xcookie.evtype == XI_RawMotion || event.xcookie.evtype == XI_RawButtonPress ||
            event.xcookie.evtype == XI_HierarchyChanged);
}

/// No tick came for so long that the guard may have released the mice.
bool isStale() {
    return Clock::now() - capture.lastRenewal > staleAfter;
}

bool handleCaptureEvent(XEvent& event) {
    if (!isCaptureEvent(event))
        return false;
    // A late event, or one from a time when this process did not respond: such a press is meant for the
    // programs, and a mouse that the guard has released must not be grabbed again.
    if (!capture.isActive || isStale())
        return true;
    if (event.xcookie.evtype == XI_RawMotion)
        handleRawMotion(*static_cast<const XIRawEvent*>(event.xcookie.data));
    else if (event.xcookie.evtype == XI_RawButtonPress)
        handleRawPress(*static_cast<const XIRawEvent*>(event.xcookie.data));
    else
        grabAllMice();
    return true;
}

/// Buttons of the device that were pressed while it was detached and are still down.
std::vector<unsigned int> pressesOfCapture(int deviceId, const GrabbedMouse& mouse) {
    std::vector<unsigned int> pressed;
    int count = 0;
    const DeviceInfos info = queryDevices(ownerDisplay(), deviceId, count);
    // A mouse that the guard has released is attached, and presses on it are meant for the programs.
    if (info == nullptr || info->use != XIFloatingSlave)
        return pressed;
    const ButtonStates now = slaveButtonStates(ownerDisplay(), deviceId);
    for (std::size_t button = 1; button < now.size(); ++button)
        if (now[button] && !isDownIn(mouse.downBefore, button))
            pressed.push_back(static_cast<unsigned int>(button));
    return pressed;
}

/// Releases all mice, or only those on which every button pressed during the capture is up.
void releaseMice(bool all) {
    const ErrorTrap trap; // a mouse may have been unplugged
    std::erase_if(capture.mice, [all](const auto& entry) {
        const auto& [deviceId, mouse] = entry;
        const std::vector<unsigned int> pressed = pressesOfCapture(deviceId, mouse);
        if (!pressed.empty() && !all)
            return false;
        releaseDeviceButtons(ownerDisplay(), deviceId, pressed);
        XIUngrabDevice(ownerDisplay(), deviceId, CurrentTime);
        notifyInputGuard(GuardedThing::pointerPin, false, codeOfPinnedDevice(deviceId, mouse.master));
        return true;
    });
    // A button pressed before the capture may still be held on a detached mouse, where no attached slave
    // reports it.
    if (capture.mice.empty())
        releaseHeldButtons();
}

gboolean releaseMiceWithoutPresses(gpointer) {
    const bool isOver = Clock::now() - capture.endedAt > longestWaitForRelease;
    if (!capture.isActive)
        releaseMice(isOver);
    if (!capture.isActive && !capture.mice.empty()) {
        notifyInputGuard(GuardedThing::heartbeat, false, 0);
        return G_SOURCE_CONTINUE;
    }
    capture.isWaitingForRelease = false;
    return G_SOURCE_REMOVE;
}

/// The button that chose a field may still be down. If its mouse were attached now, the server would not
/// deliver an injected release of that button, and its own release would end a press that a function has
/// injected. So the mouse is released when the button is up.
void waitForReleases() {
    if (capture.mice.empty() || std::exchange(capture.isWaitingForRelease, true))
        return;
    callOwnerAfter(releasePollMs, releaseMiceWithoutPresses, nullptr);
}

/// The device's number of the button that is the first one after the user's mapping.
int primaryButton() {
    unsigned char mapping[32] = {};
    const int count = XGetPointerMapping(ownerDisplay(), mapping, sizeof mapping);
    const unsigned char* const end = mapping + std::clamp<int>(count, 0, sizeof mapping);
    const auto* const first = std::find(static_cast<const unsigned char*>(mapping), end, 1);
    return first == end ? 1 : static_cast<int>(first - mapping) + 1;
}

} // namespace

void beginPointerCapture(WindowHandle, Point pinned, const PointerCaptureHandlers& handlers) {
    if (ownerDisplay() == nullptr)
        return;
    addEventHandler(handleCaptureEvent);
    capture.handlers = handlers;
    capture.primaryButton = primaryButton();
    capture.isActive = true;
    capture.lastRenewal = capture.lastHeartbeat = Clock::now();
    selectHierarchyChanges(true); // first, so that no mouse plugged in between is missed
    grabAllMice();
    pinCursor(pinned);
    // A detached slave accumulates its motion, and its first motion afterwards would move the cursor by the
    // whole sum unless another slave has sent an event to the master since. Done now and not at the end
    // because the process may be killed.
    XTestFakeRelativeMotionEvent(ownerDisplay(), 0, 0, CurrentTime);
    XFlush(ownerDisplay());
}

bool renewPointerCapture() {
    if (!capture.isActive)
        return true;
    if (isStale())
        return false;
    capture.lastRenewal = Clock::now();
    if (capture.lastRenewal - capture.lastHeartbeat >= heartbeatPeriod) {
        capture.lastHeartbeat = capture.lastRenewal;
        notifyInputGuard(GuardedThing::heartbeat, false, 0);
    }
    keepCursorPinned();
    return true;
}

void endPointerCapture() {
    if (!capture.isActive)
        return;
    capture.isActive = false;
    capture.endedAt = Clock::now();
    unpinCursor();
    selectHierarchyChanges(false);
    releaseMice(false);
    waitForReleases();
}

} // namespace rotika
