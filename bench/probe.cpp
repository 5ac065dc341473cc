#include "probe.h"

#include "harness/target.h"
#include "harness/waiting.h"
#include "target_reporter.h"

#include <cstdio>

int runProbe(int argc, char** argv, void (*measure)()) {
    if (!e2e::readTestArguments(argc, argv))
        return 2;
    try {
        printFigureHead();
        measure();
    } catch (const e2e::ScenarioError& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}
