#include <gtest/gtest.h>

#ifdef ROTIKA_CONTRACT_PROCESSES
#include "other_process.h"
#endif

int main(int argc, char** argv) {
#ifdef ROTIKA_CONTRACT_PROCESSES
    if (argc > 1 && argv[1] == std::string("--role")) {
        return playRole({argv + 2, argv + argc});
    }
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
