#include "recorder/record.h"

#include <cstdlib>

RecorderArguments RecorderArguments::parse(int count, char** words) {
    if (count != 6) {
        std::fprintf(stderr, "recorder LOG-FILE LEFT TOP WIDTH HEIGHT\n");
        std::exit(2);
    }
    return {words[1], std::atoi(words[2]), std::atoi(words[3]), std::atoi(words[4]), std::atoi(words[5])};
}
