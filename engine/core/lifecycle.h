#pragma once

#include "core/wheel_records.h"

#include <string>
#include <vector>

/// The start sequence. With `standalone` the engine is alone in the process: it shows the problems of its
/// files and has a tray icon of its own. Owner thread.
bool startEngine(bool standalone);

/// Makes the wheel's and the grid's window where they are null: at the start, and after somebody else has
/// destroyed one. Owner thread, like all below.
void createMissingOverlays();

void stopEngine();

/// Ends the gaze and the voice thread, or leaves them to themselves after 1.5 and 2 s. Their status stays.
void stopWorkers();

void reloadEngine();

/// Puts those of `wheels` in force that have at least one field; false and nothing changed if there is none.
bool activateWheels(std::vector<Wheel> wheels);

/// Puts the wheels of `path` in force, those with at least one field; false and nothing changed if there is
/// none.
bool activateWheelFile(const std::u16string& path);
