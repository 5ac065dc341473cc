#pragma once

#include "platform/editor_window.h"

namespace rotika {

/// What the controls of the function editor do. Owner thread.
EditorWindowHandlers editorWindowHandlers();

} // namespace rotika
