#pragma once

#include "base/window_handle.h"
#include "model/wheel_records.h"

#include <cstdint>
#include <string>

namespace rotika {

// What the form and the lists of the function editor show. Owner thread.

/// The form then belongs to no field.
void clearFieldForm();

/// Copies a field of the current wheel into the form; an index outside changes nothing. The controls for
/// entering a step are left as they are.
void showFieldInForm(std::int32_t index);

void refreshWheelList();

/// A negative `selection` selects nothing.
void refreshFieldList(std::int32_t selection);

void refreshStepList();
void refreshPathLabel();

/// All lists of a document that has just taken the place of another; no field is selected.
void showNewDocument();

/// How a step is told in the list.
std::u16string stepRowText(const ActionStep& step);

/// Text of a control, cut to 511 code units without a word.
std::u16string readControlText(WindowHandle window, std::int32_t id);

} // namespace rotika
