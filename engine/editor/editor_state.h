#pragma once

#include "base/window_handle.h"
#include "model/wheel_records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// State of the engine's function editor. It outlives the window, but each opening starts anew. Owner thread.
struct EditorState {
    WindowHandle editorWindow = nullptr; // null while it is closed
    std::vector<Wheel> editorWheels;     // what the lists show and a save writes
    std::int32_t editorWheelIndex = 0;
    std::int32_t editorFieldIndex = -1; // the current wheel's field that the form shows; -1 for none
    WheelAction editorField;            // the form's own copy of it, steps included
    std::u16string editorPath;          // file behind editorWheels; empty for one that has no name yet
    bool editorDirty = false;           // editorWheels has changes that are not saved
    std::u16string keptFile;            // where editorWheels are kept, as a save failed; empty for nowhere
    bool isKeptInMemory = false;        // a save of editorWheels failed, and no file could be made either
};

extern EditorState editorState;

/// The wheel that the lists show; null if the index is of none.
Wheel* currentEditorWheel();

/// A document of one empty wheel.
std::vector<Wheel> newEditorWheels();

} // namespace rotika
