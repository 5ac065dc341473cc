#include "platform/linux/accessible_questions.h"

#include <utility>

namespace rotika {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* component = "org.a11y.atspi.Component";
constexpr std::uint32_t screenCoordinates = 0; // of AtspiCoordType

void askForProperty(BusConnection& bus, const BusObject& object, const char* name,
                    std::function<void(GVariant* value)> taker) {
    bus.ask(object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", accessible, name), "(v)",
            [taker = std::move(taker)](GVariant* values) {
                GVariant* value = nullptr;
                if (values != nullptr)
                    g_variant_get(values, "(v)", &value);
                taker(value);
                if (value != nullptr)
                    g_variant_unref(value);
            });
}

BusConnection::AnswerHandler objectTaker(ChildTaker taker) {
    return [taker = std::move(taker)](GVariant* values) {
        const char* program = "";
        const char* path = "";
        if (values != nullptr)
            g_variant_get(values, "((&s&o))", &program, &path);
        if (*program == '\0')
            taker(std::nullopt);
        else
            taker(BusObject{program, path});
    };
}

} // namespace

void askForRole(BusConnection& bus, const BusObject& object, std::function<void(std::uint32_t)> taker) {
    bus.ask(object, accessible, "GetRole", nullptr, "(u)", [taker = std::move(taker)](GVariant* values) {
        guint32 role = 0;
        if (values != nullptr)
            g_variant_get(values, "(u)", &role);
        taker(role);
    });
}

void askForStates(BusConnection& bus, const BusObject& object, std::function<void(std::uint64_t)> taker) {
    bus.ask(object, accessible, "GetState", nullptr, "(au)", [taker = std::move(taker)](GVariant* values) {
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
        taker(states);
    });
}

void askForPlace(BusConnection& bus, const BusObject& object,
                 std::function<void(const std::optional<Rect>&)> taker) {
    bus.ask(object, component, "GetExtents", g_variant_new("(u)", screenCoordinates), "((iiii))",
            [taker = std::move(taker)](GVariant* values) {
                gint32 x = 0;
                gint32 y = 0;
                gint32 width = 0;
                gint32 height = 0;
                if (values != nullptr)
                    g_variant_get(values, "((iiii))", &x, &y, &width, &height);
                constexpr gint32 farthest = 1 << 20; // some give the least integer for what is not on show
                if (width <= 0 || height <= 0 || width > farthest || height > farthest || x < -farthest ||
                    y < -farthest || x > farthest || y > farthest)
                    taker(std::nullopt);
                else
                    taker(Rect{x, y, x + width, y + height});
            });
}

void askForName(BusConnection& bus, const BusObject& object, std::function<void(const std::string&)> taker) {
    askForProperty(bus, object, "Name", [taker = std::move(taker)](GVariant* value) {
        const bool isText = value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != 0;
        taker(isText ? g_variant_get_string(value, nullptr) : "");
    });
}

void askForChildCount(BusConnection& bus, const BusObject& object, std::function<void(std::int32_t)> taker) {
    askForProperty(bus, object, "ChildCount", [taker = std::move(taker)](GVariant* value) {
        const bool isNumber = value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE_INT32) != 0;
        taker(isNumber ? g_variant_get_int32(value) : -1);
    });
}

void askForChildren(BusConnection& bus, const BusObject& object,
                    std::function<void(const std::vector<BusObject>&)> taker) {
    bus.ask(object, accessible, "GetChildren", nullptr, "(a(so))",
            [taker = std::move(taker)](GVariant* values) {
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
                taker(children);
            });
}

void askForChildAt(BusConnection& bus, const BusObject& object, Point point, ChildTaker taker) {
    bus.ask(object, component, "GetAccessibleAtPoint",
            g_variant_new("(iiu)", point.x, point.y, screenCoordinates), "((so))",
            objectTaker(std::move(taker)));
}

void askForChildAtIndex(BusConnection& bus, const BusObject& object, std::int32_t index, ChildTaker taker) {
    bus.ask(object, accessible, "GetChildAtIndex", g_variant_new("(i)", index), "((so))",
            objectTaker(std::move(taker)));
}

void askForProcess(BusConnection& bus, const std::string& program, std::function<void(pid_t)> taker) {
    bus.ask({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
            "GetConnectionUnixProcessID", g_variant_new("(s)", program.c_str()), "(u)",
            [taker = std::move(taker)](GVariant* values) {
                guint32 process = 0;
                if (values != nullptr)
                    g_variant_get(values, "(u)", &process);
                taker(static_cast<pid_t>(process));
            });
}

} // namespace rotika
