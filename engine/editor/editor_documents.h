#pragma once

namespace rotika {

// The function editor's file commands. Owner thread.

void makeNewDocument();
void openDocument();
void saveDocument();
void saveDocumentAs();

/// Lets the user pick an image and puts its path into the form, relative if it is in the folder of the
/// program.
void chooseIcon();

} // namespace rotika
