#include "platform/message_box.h"

#include "base/text.h"

#include "platform/linux/bus_address.h"
#include "platform/linux/connection.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/owner_bus.h"
#include "platform/linux/warning_window.h"

#include <memory>
#include <utility>

namespace rotika {

// The desktop's notifications are read out by screen readers and cover nothing; a window of our own says it
// where no notification server answers.

namespace {

// A server may have to be started first.
constexpr guint answerLimitMs = 3000;
constexpr guchar criticalUrgency = 2; // stays until the person dismisses it

struct Warning {
    std::string title;
    std::string text;
    bool isTold = false;
};
using SharedWarning = std::shared_ptr<Warning>;

void tellByWindow(Warning& warning) {
    if (!std::exchange(warning.isTold, true))
        openWarningWindow(warning.title, warning.text);
}

/// The body of a notification is markup to the servers that know some. Those that know none show quotation
/// marks as they are, so only what would be lost is escaped.
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

/// `bus` is null where there is none.
void tellByNotification(GDBusConnection* bus, const SharedWarning& warning) {
    if (bus == nullptr) {
        tellByWindow(*warning);
        return;
    }
    const BusCall call{"org.freedesktop.Notifications",
                       "/org/freedesktop/Notifications",
                       "org.freedesktop.Notifications",
                       "Notify",
                       "(u)",
                       G_DBUS_CALL_FLAGS_NONE,
                       answerLimitMs};
    askOnOwnerBus(bus, call, notificationOf(*warning), [warning](GVariant* identifier) {
        if (identifier != nullptr)
            warning->isTold = true;
        else
            tellByWindow(*warning);
    });
}

gboolean onAnswerLimit(gpointer data) noexcept {
    const std::unique_ptr<SharedWarning> warning(static_cast<SharedWarning*>(data));
    tellByWindow(**warning);
    return G_SOURCE_REMOVE;
}

/// A bus that lets one connect and says nothing must not swallow the warning.
void limitAnswerTime(const SharedWarning& warning) {
    callOwnerAfter(answerLimitMs, onAnswerLimit, std::make_unique<SharedWarning>(warning).release());
}

} // namespace

void showWarningBox(const std::u16string& title, const std::u16string& text) {
    if (ownerDisplay() == nullptr)
        return;
    const auto warning = std::make_shared<Warning>(Warning{utf8FromUtf16(title), utf8FromUtf16(text)});
    const std::string address = sessionBusAddress();
    if (address.empty()) {
        tellByWindow(*warning);
        return;
    }
    limitAnswerTime(warning);
    openOwnerBus(address, [warning](GDBusConnection* bus) { tellByNotification(bus, warning); });
}

} // namespace rotika
