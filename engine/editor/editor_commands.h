#pragma once

#include "core/wheel_records.h"
#include "platform/editor_window.h"

#include <string>

// What the controls of the function editor do. Owner thread.

EditorWindowHandlers editorWindowHandlers();

/// Writes the document; under a name that the user picks if `saveAs` is set or it has none yet. What stands
/// in the form alone is not written. A write that fails leaves the old file whole and is not reported; what
/// it was to write is kept elsewhere.
void saveWheels(bool saveAs);

/// Fills `step` from the controls for entering one; false if they make none and the user was told so.
bool readStepForm(ActionStep& step);
