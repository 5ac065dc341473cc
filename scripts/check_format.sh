#!/usr/bin/env bash
# Lists the source files that clang-format would change; fails if there is one.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
cd "$root"
source_files | xargs -d '\n' clang-format --dry-run -Werror
