#pragma once

namespace rotika {

// The function editor's commands about files. Owner thread.

void makeNewDocument();
void openDocument();
void saveDocument();
void saveDocumentAs();

/// Puts the path of an image into the form, short if the image lies in the folder of the program.
void chooseIcon();

} // namespace rotika
