#pragma once

namespace rotika {

// The function editor's commands for the steps of the form. They change only the form's copy of the field.
// Owner thread.

void showSelectedStep();
void addStep();
void replaceStep();
void removeStep();
void moveStepUp();
void moveStepDown();

} // namespace rotika
