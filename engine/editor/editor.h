#pragma once

namespace rotika {

/// Opens the editor on default.json, or on edits that could not be saved, or brings an open one to the front
/// unchanged. Owner thread.
void openEditor();

} // namespace rotika
