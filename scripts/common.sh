# Functions that all scripts of ./dev use. Sourced, never run; the caller has set -euo pipefail.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
cache=${ROTIKA_CACHE:-${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/rotika}
jobs=${ROTIKA_JOBS:-$(nproc 2>/dev/null || echo 2)}

say() { printf '\n== %s\n' "$*"; }
note() { printf '   %s\n' "$*"; }
die() {
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

have() { command -v "$1" >/dev/null 2>&1; }

# as_root command...: runs the command with the rights to install packages.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif have sudo; then
        sudo "$@"
    else
        die "Needs root for: $* (and there is no sudo). Run that as root, then this again."
    fi
}

# source_files: every C++ file of the project, relative to its root.
source_files() {
    (cd "$root" && find common engine shell licence tests bench -name '*.cpp' -o -name '*.h' | sort)
}

# with_lock file command...: runs the command under an exclusive lock, which ends with this process, however it ends.
# The command does not inherit the lock, so a daemon that it leaves behind cannot hold it. The first failure inside it
# ends it: "||" here would disable "set -e" for all of it.
with_lock() {
    local file=$1 lock status
    shift
    mkdir -p "$(dirname "$file")"
    exec {lock}>"$file"
    if ! flock --nonblock "$lock"; then
        note "Another run holds $file; waiting for it."
        flock "$lock"
    fi
    set +e
    (
        set -e
        exec {lock}>&-
        "$@"
    )
    status=$?
    set -e
    exec {lock}>&-
    return "$status"
}

# desk_python word...: runs a Python program that uses tests/desk, by the Python that has Debian's packages.
desk_python() { PYTHONPATH=$root/tests /usr/bin/python3 -B "$@"; }

# on_screen [option...] command...: runs a command on a private screen, see tests/desk/screen.py.
on_screen() { desk_python -m desk.screen "$@"; }
