#!/usr/bin/env bash
# Checks the product's includes against its floors, see check_includes.py.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
exec /usr/bin/python3 -B "$root/scripts/check_includes.py"
