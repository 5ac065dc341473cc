#include "platform/simulated/broken_contract.h"

#include <cstdio>
#include <cstdlib>

namespace rotika {

void breakContract(const char* what) {
    std::fprintf(stderr, "simulated desktop: %s\n", what);
    std::abort();
}

} // namespace rotika
