#pragma once

#include <string>

namespace rotika {

// The function editor's modal boxes. Owner thread.

/// Shown when adding a step or applying the form without a field.
inline constexpr char16_t noFieldText[] = u"Najpierw wybierz lub dodaj funkcję.";

/// A yes-or-no question; true for yes.
bool askInEditor(const std::u16string& text);
void warnInEditor(const std::u16string& text);
void informInEditor(const std::u16string& text);

} // namespace rotika
