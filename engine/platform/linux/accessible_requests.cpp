#include "platform/linux/accessible_requests.h"

#include <utility>

namespace rotika {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* component = "org.a11y.atspi.Component";
constexpr std::uint32_t screenCoordinates = 0; // of AtspiCoordType

void requestProperty(BusConnection& bus, const BusObject& object, const char* name,
                     std::function<void(GVariant* value)> handler) {
    bus.call(object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", accessible, name), "(v)",
             [handler = std::move(handler)](GVariant* values) {
                 GVariant* value = nullptr;
                 if (values != nullptr)
                     g_variant_get(values, "(v)", &value);
                 handler(value);
                 if (value != nullptr)
                     g_variant_unref(value);
             });
}

BusConnection::ReplyHandler objectHandler(ChildHandler handler) {
    return [handler = std::move(handler)](GVariant* values) {
        const char* program = "";
        const char* path = "";
        if (values != nullptr)
            g_variant_get(values, "((&s&o))", &program, &path);
        if (*program == '\0')
            handler(std::nullopt);
        else
            handler(BusObject{program, path});
    };
}

} // namespace

void requestRole(BusConnection& bus, const BusObject& object, std::function<void(std::uint32_t)> handler) {
    bus.call(object, accessible, "GetRole", nullptr, "(u)", [handler = std::move(handler)](GVariant* values) {
        guint32 role = 0;
        if (values != nullptr)
            g_variant_get(values, "(u)", &role);
        handler(role);
    });
}

void requestStates(BusConnection& bus, const BusObject& object, std::function<void(std::uint64_t)> handler) {
    bus.call(object, accessible, "GetState", nullptr, "(au)",
             [handler = std::move(handler)](GVariant* values) {
                 std::uint64_t states = 0;
                 GVariantIter* words = nullptr;
                 if (values != nullptr)
                     g_variant_get(values, "(au)", &words);
                 guint32 word = 0;
                 for (int shift = 0; words != nullptr && shift < 64 && g_variant_iter_next(words, "u", &word);
                      shift += 32)
                     states |= std::uint64_t{word} << shift;
                 if (words != nullptr)
                     g_variant_iter_free(words);
                 handler(states);
             });
}

void requestPlace(BusConnection& bus, const BusObject& object,
                  std::function<void(const std::optional<Rect>&)> handler) {
    bus.call(object, component, "GetExtents", g_variant_new("(u)", screenCoordinates), "((iiii))",
             [handler = std::move(handler)](GVariant* values) {
                 gint32 x = 0;
                 gint32 y = 0;
                 gint32 width = 0;
                 gint32 height = 0;
                 if (values != nullptr)
                     g_variant_get(values, "((iiii))", &x, &y, &width, &height);
                 constexpr gint32 farthest = 1 << 20; // some report INT_MIN for hidden objects
                 if (width <= 0 || height <= 0 || width > farthest || height > farthest || x < -farthest ||
                     y < -farthest || x > farthest || y > farthest)
                     handler(std::nullopt);
                 else
                     handler(Rect{x, y, x + width, y + height});
             });
}

void requestName(BusConnection& bus, const BusObject& object,
                 std::function<void(const std::string&)> handler) {
    requestProperty(bus, object, "Name", [handler = std::move(handler)](GVariant* value) {
        const bool isText = value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != 0;
        handler(isText ? g_variant_get_string(value, nullptr) : "");
    });
}

void requestChildCount(BusConnection& bus, const BusObject& object,
                       std::function<void(std::int32_t)> handler) {
    requestProperty(bus, object, "ChildCount", [handler = std::move(handler)](GVariant* value) {
        const bool isNumber = value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE_INT32) != 0;
        handler(isNumber ? g_variant_get_int32(value) : -1);
    });
}

void requestChildren(BusConnection& bus, const BusObject& object,
                     std::function<void(const std::vector<BusObject>&)> handler) {
    bus.call(object, accessible, "GetChildren", nullptr, "(a(so))",
             [handler = std::move(handler)](GVariant* values) {
                 std::vector<BusObject> children;
                 GVariantIter* pairs = nullptr;
                 if (values != nullptr)
                     g_variant_get(values, "(a(so))", &pairs);
                 const char* program = nullptr;
                 const char* path = nullptr;
                 while (pairs != nullptr && g_variant_iter_next(pairs, "(&s&o)", &program, &path))
                     children.push_back({program, path});
                 if (pairs != nullptr)
                     g_variant_iter_free(pairs);
                 handler(children);
             });
}

void requestChildAt(BusConnection& bus, const BusObject& object, Point point, ChildHandler handler) {
    bus.call(object, component, "GetAccessibleAtPoint",
             g_variant_new("(iiu)", point.x, point.y, screenCoordinates), "((so))",
             objectHandler(std::move(handler)));
}

void requestChildAtIndex(BusConnection& bus, const BusObject& object, std::int32_t index,
                         ChildHandler handler) {
    bus.call(object, accessible, "GetChildAtIndex", g_variant_new("(i)", index), "((so))",
             objectHandler(std::move(handler)));
}

void requestProcess(BusConnection& bus, const std::string& program, std::function<void(pid_t)> handler) {
    bus.call({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
             "GetConnectionUnixProcessID", g_variant_new("(s)", program.c_str()), "(u)",
             [handler = std::move(handler)](GVariant* values) {
                 guint32 process = 0;
                 if (values != nullptr)
                     g_variant_get(values, "(u)", &process);
                 handler(static_cast<pid_t>(process));
             });
}

} // namespace rotika
