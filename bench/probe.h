#pragma once

#include "harness/stage.h"

#include <vector>

// What the programs that measure from outside have in common.

/// Takes the command line of the end-to-end tests, prints the table's head and runs `measure`, which prints
/// its figures. The result is a process's exit status.
int runProbe(int argc, char** argv, void (*measure)());

/// How long each of `count` movements of the real mouse takes to be seen in the drawn cursor of the open
/// wheel, in ms, sorted. The virtual cursor stands in the middle.
std::vector<double> motionLatencies(e2e::Stage& stage, int count);
