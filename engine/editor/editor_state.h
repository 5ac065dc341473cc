#pragma once

#include "base/window_handle.h"
#include "model/wheel_records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// State of the engine's function editor, reset by each opening of its window. Owner thread.
struct EditorState {
    WindowHandle editorWindow = nullptr; // null while it is closed
    std::vector<Wheel> editorWheels;     // shown in the lists and written by a save
    std::int32_t editorWheelIndex = 0;
    std::int32_t editorFieldIndex = -1; // the current wheel's field that the form shows; -1 for none
    WheelAction editorField;            // the form's own copy of it, steps included
    std::u16string editorPath;          // file of editorWheels; empty for a new document
    bool editorDirty = false;           // editorWheels has changes that are not saved
    std::u16string keptFile;            // copy of editorWheels after a failed save; empty for none
    bool isKeptInMemory = false;        // a save failed, and keptFile could not be written either
};

extern EditorState editorState;

/// The wheel at editorWheelIndex; null if there is none.
Wheel* currentEditorWheel();

/// A new document: one empty wheel.
std::vector<Wheel> newEditorWheels();

} // namespace rotika
