// status_reader TITLE: writes the text of the status card of that title, as the program's window shows it to
// assistive programs. Exit status 1 when there is none.

#include <atspi/atspi.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

struct ObjectReleaser {
    void operator()(AtspiAccessible* object) const noexcept { g_object_unref(object); }
};
using Accessible = std::unique_ptr<AtspiAccessible, ObjectReleaser>;

std::string taken(gchar* text) {
    const std::string copy = text == nullptr ? "" : text;
    g_free(text);
    return copy;
}

/// The card's value is described by its title.
Accessible findValue(Accessible object, const std::string& title) {
    if (atspi_accessible_get_role(object.get(), nullptr) == ATSPI_ROLE_LABEL &&
        taken(atspi_accessible_get_description(object.get(), nullptr)) == title)
        return object;
    const int count = atspi_accessible_get_child_count(object.get(), nullptr);
    for (int i = 0; i < count; ++i) {
        Accessible child(atspi_accessible_get_child_at_index(object.get(), i, nullptr));
        if (child == nullptr)
            continue;
        if (Accessible found = findValue(std::move(child), title))
            return found;
    }
    return nullptr;
}

} // namespace

int main(int count, char** words) {
    if (count != 2 || atspi_init() != 0)
        return 2;
    const Accessible value = findValue(Accessible(atspi_get_desktop(0)), words[1]);
    if (value == nullptr)
        return 1;
    std::puts(taken(atspi_accessible_get_name(value.get(), nullptr)).c_str());
    return 0;
}
