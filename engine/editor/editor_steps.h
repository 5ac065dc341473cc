#pragma once

namespace rotika {

// The function editor's commands about the steps of the form. They change the form's own copy of the field
// alone. Owner thread.

void showSelectedStep();
void addStep();
void replaceStep();
void removeStep();
void moveStepUp();
void moveStepDown();

} // namespace rotika
