// The whole program with real input: "rotika_e2e_tests --target=linux --program=... --recorder=...
// --artefacts=..." or the same for Windows with a Wine prefix.

#include "harness/target.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::signal(SIGPIPE, SIG_IGN);
    if (!testing::GTEST_FLAG(list_tests) && !e2e::readTestArguments(argc, argv)) {
        std::cerr << "rotika_e2e_tests: --target=linux|windows --program= --recorder= --artefacts="
                     " [--wine-script= --wine-prefix=]\n";
        return 2;
    }
    return RUN_ALL_TESTS();
}
