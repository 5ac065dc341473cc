#include "shell/base/key_repeat.h"

bool makeReleasesGenuine() {
    return false;
}
