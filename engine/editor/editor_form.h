#pragma once

#include "base/window_handle.h"
#include "model/wheel_records.h"

#include <cstdint>
#include <string>

namespace rotika {

// The content of the function editor's form and lists. Owner thread.

/// Clears the form; it then belongs to no field.
void clearFieldForm();

/// Copies a field of the current wheel into the form; no effect for an index out of range. The controls for
/// entering a step are not changed.
void showFieldInForm(std::int32_t index);

void refreshWheelList();

/// A negative `selection` selects nothing.
void refreshFieldList(std::int32_t selection);

void refreshStepList();
void refreshPathLabel();

/// Refreshes form, lists and path for a new document; no field is selected.
void showNewDocument();

/// Text of a step in the list.
std::u16string stepRowText(const ActionStep& step);

/// Text of a control, silently truncated to 511 code units.
std::u16string readControlText(WindowHandle window, std::int32_t id);

} // namespace rotika
