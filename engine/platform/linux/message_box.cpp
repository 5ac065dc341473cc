#include "platform/message_box.h"

#include "base/text.h"
#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"

#include "platform/linux/connection.h"
#include "platform/linux/owner_loop.h"
#include "platform/linux/warning_window.h"

#include <memory>
#include <utility>

namespace rotika {

// Desktop notifications are read out by screen readers and do not cover the screen; without a notification
// server the warning is shown in a window.

namespace {

// The call may start the server first.
constexpr guint replyLimitMs = 3000;
constexpr guchar criticalUrgency = 2; // stays until the user dismisses it

struct Warning {
    std::string title;
    std::string text;
    bool isShown = false;
};
using SharedWarning = std::shared_ptr<Warning>;

void showInWindow(Warning& warning) {
    if (!std::exchange(warning.isShown, true))
        openWarningWindow(warning.title, warning.text);
}

/// Some servers parse the body as markup, others show it as it is: only characters that would be lost are
/// escaped.
std::string bodyOf(const std::string& text) {
    std::string body;
    for (const char c : text) {
        if (c == '&')
            body += "&amp;";
        else if (c == '<')
            body += "&lt;";
        else
            body += c;
    }
    return body;
}

GVariant* notificationOf(const Warning& warning) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(criticalUrgency));
    constexpr gint32 neverExpires = 0;
    return g_variant_new("(susssasa{sv}i)", "Rotika", 0U, "dialog-warning", warning.title.c_str(),
                         bodyOf(warning.text).c_str(), nullptr, &hints, neverExpires);
}

/// `bus` may be null.
void showAsNotification(GDBusConnection* bus, const SharedWarning& warning) {
    if (bus == nullptr) {
        showInWindow(*warning);
        return;
    }
    const BusCall call{"org.freedesktop.Notifications",
                       "/org/freedesktop/Notifications",
                       "org.freedesktop.Notifications",
                       "Notify",
                       "(u)",
                       G_DBUS_CALL_FLAGS_NONE,
                       replyLimitMs};
    callOnOwnerBus(bus, call, notificationOf(*warning), [warning](GVariant* identifier) {
        if (identifier != nullptr)
            warning->isShown = true;
        else
            showInWindow(*warning);
    });
}

gboolean onReplyLimit(gpointer data) noexcept {
    const std::unique_ptr<SharedWarning> warning(static_cast<SharedWarning*>(data));
    showInWindow(**warning);
    return G_SOURCE_REMOVE;
}

/// A bus that accepts the connection but never replies must not lose the warning.
void limitReplyTime(const SharedWarning& warning) {
    callOwnerAfter(replyLimitMs, onReplyLimit, std::make_unique<SharedWarning>(warning).release());
}

} // namespace

void showWarningBox(const std::u16string& title, const std::u16string& text) {
    if (ownerDisplay() == nullptr)
        return;
    const auto warning = std::make_shared<Warning>(Warning{utf8FromUtf16(title), utf8FromUtf16(text)});
    const std::string address = sessionBusAddress();
    if (address.empty()) {
        showInWindow(*warning);
        return;
    }
    limitReplyTime(warning);
    openOwnerBus(address, [warning](GDBusConnection* bus) { showAsNotification(bus, warning); });
}

} // namespace rotika
