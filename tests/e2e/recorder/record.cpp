#include "recorder/record.h"

#include <cstdlib>

RecorderArguments RecorderArguments::parse(int count, char** words) {
    if (count != 6) {
        std::fprintf(stderr, "recorder LOG-FILE LEFT TOP WIDTH HEIGHT\n");
        std::exit(2);
    }
    return {words[1], std::atoi(words[2]), std::atoi(words[3]), std::atoi(words[4]), std::atoi(words[5])};
}

bool noteOpening(int count, char** words) {
    const char* notes = std::getenv("RECORDER_NOTES");
    if (count > 2 || notes == nullptr)
        return false;
    std::FILE* stream = std::fopen(notes, "ab");
    if (stream == nullptr)
        return false;
    std::fprintf(stream, "%s\n", count == 2 ? words[1] : "started");
    std::fclose(stream);
    return true;
}
