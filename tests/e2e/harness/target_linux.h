#pragma once

#include "harness/target.h"

namespace e2e {

std::unique_ptr<Target> makeLinuxTarget();

} // namespace e2e
