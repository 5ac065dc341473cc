# The Windows installer and the portable archive. Sourced by package.sh, which sets $release, the folder of the release,
# and SOURCE_DATE_EPOCH, the time that stands for every time in it.

windows_programs=(rotika.exe rotika-engine.exe rotika-guard.exe)

# What a release places beside them. Not whatever the build folder holds: a started program writes its settings there,
# and a developer may have own icons in it.
windows_data() {
    local file
    printf '%s\n' rotika.ico
    for file in "$root"/themes/*.palette; do
        printf 'themes/%s.qss\n' "$(basename "$file" .palette)"
    done
    for file in "$root"/packaging/icons/fields/*.svg; do
        printf 'icons/%s.png\n' "$(basename "$file" .svg)"
    done
    for file in "$root"/packaging/examples/*.json; do
        printf 'przykłady/%s\n' "$(basename "$file")"
    done
}

# package_windows: builds the program and makes rotika-VERSION-setup.exe and rotika-VERSION-portable.zip. Two runs give
# the same bytes.
package_windows() {
    local built=$root/build/windows/rotika work=$root/build/windows-packages version program
    build_windows
    [ -d "$release/licencje" ] || package_documents
    version=$(project_version)
    for program in "${windows_programs[@]}"; do
        check_windows_program "$built/$program" "$version"
    done
    rm -rf "$work"
    mkdir -p "$work/Rotika" "$release"
    copy_windows_files "$built" "$work/Rotika"
    make_portable_archive "$work" "$release/rotika-$version-portable.zip"
    add_update_library "$work/Rotika"
    make_installer "$work" "$version" "$release/rotika-$version-setup.exe"
}

# test_package_windows case: under Wine.
test_package_windows() {
    "$root/scripts/wine.sh" --prepare
    ROTIKA_RELEASE=$release desk_python -m pytest -q -n "$jobs" "$root/tests/packages/test_windows.py" ${1:+-k "$1"}
}

# check_windows_program file version: version information, manifest, memory protections, no libraries but Windows' own.
check_windows_program() {
    local file=$1 headers manifest wanted
    headers=$(x86_64-w64-mingw32-objdump -p "$file")
    manifest=$(wrestool --extract --raw --type=24 "$file")
    for wanted in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
        grep -q "^[[:space:]]*$wanted" <<<"$headers" || die "$file is linked without $wanted."
    done
    for wanted in PerMonitorV2 '>UTF-8<' 'longPathAware.*>true<' '<supportedOS'; do
        grep -q "$wanted" <<<"$manifest" || die "The manifest of $file lacks $wanted."
    done
    wrestool --extract --raw --type=16 "$file" | iconv -f UTF-16LE -t UTF-8 -c | grep -qaF "$2" ||
        die "$file has no version information with $2."
    [[ $file == *guard* ]] || wrestool --list --type=14 "$file" | grep -q IDI_ICON1 || die "$file has no icon."
    ! grep -i 'DLL Name: lib' <<<"$headers" || die "$file needs a library of the compiler."
}

# Everything gets the time of the release, since both formats store times.
copy_windows_files() {
    local built=$1 to=$2 data
    mapfile -t data < <(windows_data)
    (cd "$built" && cp --parents "${windows_programs[@]}" "${data[@]}" "$to")
    cp -R "$release/licencje" "$release/podrecznik" "$to"
    set_times_of_release "$to"
}

set_times_of_release() { find "$@" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +; }

# For the installer only: an update of the portable program would install a second one.
add_update_library() {
    local to=$1 from=${ROTIKA_UPDATE_LIBRARY:-} licence exports
    if [ -z "$from" ]; then
        note "Without ROTIKA_UPDATE_LIBRARY, a folder with WinSparkle.dll, the program looks for no updates."
        return
    fi
    licence=$(find "$from" -maxdepth 1 -name COPYING -o -maxdepth 1 -name LICENSE | LC_ALL=C sort | head -n 1)
    { [ -f "$from/WinSparkle.dll" ] && [ -n "$licence" ]; } ||
        die "ROTIKA_UPDATE_LIBRARY must be a folder with WinSparkle.dll and its licence, COPYING or LICENSE: $from"
    exports=$(x86_64-w64-mingw32-objdump -p "$from/WinSparkle.dll")
    grep -qw win_sparkle_set_eddsa_public_key <<<"$exports" ||
        die "$from/WinSparkle.dll cannot check the signatures of updates."
    cp "$from/WinSparkle.dll" "$to/"
    cp "$licence" "$to/licencje/winsparkle.txt"
    set_times_of_release "$to"
}

# make_update_library folder: for tests, without the other functions.
make_update_library() {
    mkdir -p "$1"
    printf 'void win_sparkle_set_eddsa_public_key(void) {}\n' |
        x86_64-w64-mingw32-gcc -x c -shared -s -Wl,--no-insert-timestamp -o "$1/WinSparkle.dll" -
    printf 'The licence\n' >"$1/COPYING"
}

# By Python, since zip does not mark names as UTF-8, as Windows needs.
make_portable_archive() {
    /usr/bin/python3 -B - "$1" "$2" <<'PYTHON'
import os, sys, time, zipfile
from pathlib import Path

folder, stamp = Path(sys.argv[1]), time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6]
with zipfile.ZipFile(sys.argv[2], "w") as archive:
    for file in sorted(each for each in (folder / "Rotika").rglob("*") if each.is_file()):
        entry = zipfile.ZipInfo(str(file.relative_to(folder)), stamp)
        entry.external_attr = 0o644 << 16
        archive.writestr(entry, file.read_bytes(), zipfile.ZIP_DEFLATED, 9)
PYTHON
}

# The list of the shipped files, by which the installer replaces and removes: see packaging/windows/files.nsh.
list_windows_files() {
    /usr/bin/python3 -B - "$1" <<'PYTHON'
import sys, zlib
from pathlib import Path

sys.stdout.reconfigure(encoding="utf-16", newline="\n")  # with a byte order mark
folder = Path(sys.argv[1])
for file in sorted(folder.rglob("*")):
    if file.is_file():
        path, data = str(file.relative_to(folder)).replace("/", "\\"), file.read_bytes()
        print(f"{zlib.crc32(data):08X} {len(data):010d} {path}")
PYTHON
}

# NSIS' own recursion takes the files in the order of the disk.
instructions_for_files() {
    find "$1" -mindepth 1 -type d -printf '%P\n' | LC_ALL=C sort | while read -r folder; do
        printf 'CreateDirectory "$OUTDIR\\%s"\n' "${folder//\//\\}"
    done
    find "$1" -type f -printf '%P\n' | LC_ALL=C sort | while read -r file; do
        printf 'File "/oname=%s" "${FILES}/%s"\n' "${file//\//\\}" "$file"
    done
}

make_installer() {
    local work=$1 version=$2 installer=$3 size_kb
    list_windows_files "$work/Rotika" >"$work/lista-plikow.txt"
    size_kb=$(find "$work/Rotika" -type f -printf '%s\n' | awk '{ bytes += $1 } END { print int(bytes / 1024) }')
    mv "$work/lista-plikow.txt" "$work/Rotika"
    instructions_for_files "$work/Rotika" >"$work/files.nsh"
    rsvg-convert -w 120 -h 120 -o "$work/logo.png" "$root/packaging/icons/rotika.svg"
    convert -size 164x314 gradient:'#F4F7FB-#D6E4F2' "$work/logo.png" -gravity center -composite \
        -type TrueColor "BMP3:$work/welcome.bmp"
    set_times_of_release "$work/welcome.bmp" "$work/Rotika/lista-plikow.txt"
    makensis -V2 -WX -INPUTCHARSET UTF8 "-DVERSION=$version" "-DFILES=$work/Rotika" \
        "-DFILES_NSH=$work/files.nsh" "-DICON=$work/Rotika/rotika.ico" \
        "-DWELCOME=$work/welcome.bmp" "-DSIZE_KB=$size_kb" \
        "-DOUTPUT=$installer" "$root/packaging/windows/rotika.nsi"
}
