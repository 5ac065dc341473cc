#pragma once

// What the programs that measure from outside have in common.

/// Takes the command line of the end-to-end tests, prints the table's head and runs `measure`, which prints
/// its figures. The result is a process's exit status.
int runProbe(int argc, char** argv, void (*measure)());
