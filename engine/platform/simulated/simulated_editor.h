#pragma once

#include "platform/editor_window.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace rotika {

/// The editor's window as the user operates it. Boxes and file dialogs are recorded in the journal; their
/// answers come from the queues here, or are "no" and "cancel".
class SimulatedEditor {
public:
    struct Control {
        EditorControlKind kind = EditorControlKind::label;
        std::u16string text;
        std::vector<std::u16string> rows;
        std::int32_t selection = -1;
    };

    bool isShown = false;
    std::map<std::int32_t, Control> controls; // those with an id
    std::deque<bool> answers;                 // to the next questions; true for yes
    std::deque<std::optional<std::u16string>> pickedFiles;

    // The user
    void press(std::int32_t id) const { handlers.controlUsed(id, false); }
    void type(std::int32_t id, const std::u16string& text) { controls.at(id).text = text; }
    /// Clicks a row of a list.
    void choose(std::int32_t id, std::int32_t row);
    void closeWindow() const { handlers.closeRequested(); }

    std::string text(std::int32_t id) const;
    /// The rows joined by "|".
    std::string rows(std::int32_t id) const;
    std::int32_t selection(std::int32_t id) const { return controls.at(id).selection; }

    // Only for the platform's functions
    EditorWindowHandlers handlers{};
};

} // namespace rotika
