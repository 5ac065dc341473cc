#include "shell/base/config_changes.h"

ConfigChanges& ConfigChanges::instance() {
    static ConfigChanges changes;
    return changes;
}
