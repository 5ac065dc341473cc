#include "platform/linux/input_devices.h"

#include <X11/extensions/XInput.h>

#include <algorithm>

namespace rotika {

namespace {

/// XTest addresses devices by the first version of the input extension.
class OpenedDevice {
public:
    OpenedDevice(Display* display, int device)
        : connection(display), opened(XOpenDevice(display, static_cast<XID>(device))) {}
    OpenedDevice(const OpenedDevice&) = delete;
    OpenedDevice& operator=(const OpenedDevice&) = delete;
    ~OpenedDevice() {
        if (opened != nullptr)
            XCloseDevice(connection, opened);
    }
    XDevice* get() const { return opened; }

private:
    Display* connection;
    XDevice* opened;
};

/// Without the master's last button, which XIQueryDevice leaves out.
ButtonStates masterButtonStates(const XIDeviceInfo& info) {
    ButtonStates states;
    for (int i = 0; i < info.num_classes; ++i) {
        if (info.classes[i]->type != XIButtonClass)
            continue;
        const auto* buttons = reinterpret_cast<const XIButtonClassInfo*>(info.classes[i]);
        for (int bit = 0; bit < buttons->state.mask_len * 8; ++bit)
            states.push_back(XIMaskIsSet(buttons->state.mask, bit) != 0);
    }
    return states;
}

} // namespace

DeviceInfos queryDevices(Display* display, int device, int& count) {
    DeviceInfos infos(XIQueryDevice(display, device, &count));
    if (infos == nullptr)
        count = 0; // Xlib sets -1
    return infos;
}

bool isXTestDevice(Display* display, int device) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XIGetProperty(display, device, XInternAtom(display, "XTEST Device", 0), 0, 1, 0, XA_INTEGER, &type,
                  &format, &count, &left, &data);
    const XOwned<unsigned char> owned(data);
    return type == XA_INTEGER && count > 0 && *data != 0;
}

ButtonStates slaveButtonStates(Display* display, int device) {
    ButtonStates states;
    XDevice opened{}; // only the id is used; a device that is really opened and closed loses its grab
    opened.device_id = static_cast<XID>(device);
    XDeviceState* const state = XQueryDeviceState(display, &opened);
    if (state == nullptr)
        return states;
    const XInputClass* part = state->data;
    for (int i = 0; i < state->num_classes; ++i) {
        if (part->c_class == ButtonClass) {
            const auto* buttons = reinterpret_cast<const XButtonState*>(part);
            for (int button = 0; button <= buttons->num_buttons; ++button)
                states.push_back((buttons->buttons[button / 8] >> (button % 8) & 1) != 0);
        }
        part = reinterpret_cast<const XInputClass*>(reinterpret_cast<const char*>(part) + part->length);
    }
    XFreeDeviceState(state);
    return states;
}

bool isDownIn(const ButtonStates& states, std::size_t button) {
    return button < states.size() && states[button];
}

void releaseDeviceButtons(Display* display, int device, const std::vector<unsigned int>& buttons) {
    if (buttons.empty())
        return;
    const OpenedDevice opened(display, device);
    for (const unsigned int button : buttons)
        if (opened.get() != nullptr)
            XTestFakeDeviceButtonEvent(display, opened.get(), button, 0, nullptr, 0, CurrentTime);
}

void releaseForgottenButtons(Display* display, const std::set<std::size_t>& heldBefore) {
    if (heldBefore.empty())
        return;
    // The master has the buttons of the device that sent the last event, and XTest's has ten.
    XTestFakeRelativeMotionEvent(display, 0, 0, CurrentTime);
    int count = 0;
    const DeviceInfos infos = queryDevices(display, XIAllDevices, count);
    ButtonStates forMaster;
    std::vector<ButtonStates> forSlaves;
    for (int i = 0; i < count; ++i) {
        const XIDeviceInfo& info = infos.get()[i];
        if (info.use == XIMasterPointer && forMaster.empty())
            forMaster = masterButtonStates(info);
        else if (info.use == XISlavePointer)
            forSlaves.push_back(slaveButtonStates(display, info.deviceid));
    }
    for (const std::size_t button : heldBefore) {
        const bool isReallyDown =
            std::any_of(forSlaves.begin(), forSlaves.end(),
                        [button](const ButtonStates& slave) { return isDownIn(slave, button); });
        if (!isDownIn(forMaster, button) || isReallyDown)
            continue;
        XTestFakeButtonEvent(display, static_cast<unsigned int>(button), 1, CurrentTime);
        XTestFakeButtonEvent(display, static_cast<unsigned int>(button), 0, CurrentTime);
    }
}

} // namespace rotika
