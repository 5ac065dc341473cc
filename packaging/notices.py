#!/usr/bin/python3
"""Writes the folder of licence texts that goes with the Windows program: our own notice and licence, the privacy page,
Qt's licences, and a file for each third-party part, from Qt's source package and Debian's copyright files.

notices.py <Qt's source archive> <project> <folder>"""

import json
import lzma
import posixpath
import shutil
import sys
import tarfile
import tempfile
from pathlib import Path

# Folders of Qt's source whose third-party code is not in the Windows program: other systems, or left out of the build.
NOT_IN_PROGRAM = ("3rdparty/VulkanMemoryAllocator", "3rdparty/android", "3rdparty/forkfd", "3rdparty/gradle",
                  "3rdparty/libpsl", "3rdparty/wasm", "3rdparty/xcb", "dbus", "gui/opengl", "gui/vulkan", "network",
                  "plugins/platforms/cocoa", "testlib")
OTHER_SYSTEMS = "qeventdispatcher_cf", "xserverhelper"
QT_LICENCES = "LGPL-3.0-only", "GPL-3.0-only", "GPL-2.0-only"  # Qt's own; the LGPL refers to the GPL
# What the compiler, the system headers and the installer add, by Debian package. A missing package fails.
DEBIAN_PARTS = {"mingw-w64": "mingw-w64-x86-64-dev", "gcc": "gcc-mingw-w64-base", "nsis": "nsis",
                "zlib-mingw": "libz-mingw-w64-dev", "libarchive": "libarchive-dev"}


class Source:
    """The files of a source archive below its only folder."""

    def __init__(self, file):
        self.tar = tempfile.TemporaryFile()  # unpacked, since files are read in any order
        with lzma.open(file) as packed:
            shutil.copyfileobj(packed, self.tar, 1 << 20)
        self.tar.seek(0)
        self.archive = tarfile.open(fileobj=self.tar)
        self.members = {member.name.partition("/")[2]: member for member in self.archive}

    def read(self, name):
        return self.archive.extractfile(self.members[name]).read().decode("utf-8", "replace")

    def attributions(self):
        """The entries of third-party code in the program, each with its folder."""
        for name in sorted(self.members):
            folder = posixpath.dirname(name).removeprefix("src/")
            if name.startswith("src/") and name.endswith("/qt_attribution.json") and not folder.startswith(NOT_IN_PROGRAM):
                entries = json.loads(self.read(name), strict=False)
                yield from ((posixpath.dirname(name), entry) for entry in
                            (entries if isinstance(entries, list) else [entries])
                            if entry["Id"].lower() not in OTHER_SYSTEMS)

    def licence_text(self, folder, entry):
        files = entry.get("LicenseFiles") or [entry[key] for key in ("LicenseFile",) if key in entry]
        texts = [self.read(posixpath.normpath(posixpath.join(folder, file))) for file in files]
        return "\n".join(texts) or f"Licence: {entry['License']}\n"


def text_of(value):
    return "\n".join(value) if isinstance(value, list) else value


def write_notices(archive, project, folder):
    source = Source(archive)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for licence in QT_LICENCES:
        (folder / f"qt-{licence}.txt").write_text(source.read(f"LICENSES/{licence}.txt"), encoding="utf-8")
    parts = {}
    for place, entry in source.attributions():
        name = f"qt-{entry['Id'].lower()}.txt"
        parts[name] = f"{entry['Name']} ({entry['License']})"
        (folder / name).write_text("\n".join(filter(None, (
            entry["Name"], entry.get("Homepage"), text_of(entry.get("Copyright", "")), "",
            source.licence_text(place, entry)))), encoding="utf-8")
    for name, package in DEBIAN_PARTS.items():
        parts[f"{name}.txt"] = name
        shutil.copyfile(f"/usr/share/doc/{package}/copyright", folder / f"{name}.txt")
    shutil.copyfile(project / "LICENSE", folder / "rotika.txt")
    shutil.copyfile(project / "docs/prywatnosc.md", folder / "prywatnosc.txt")
    listed = "\n".join(f"  {name:36} {parts[name]}" for name in sorted(parts))
    notice = (project / "packaging/notices/przeczytaj.txt").read_text(encoding="utf-8")
    version = Path(archive).name.partition("_")[2].partition("+")[0]
    (folder / "przeczytaj.txt").write_text(notice.replace("@QT_VERSION@", version).replace("@PARTS@", listed),
                                           encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    write_notices(*map(Path, sys.argv[1:]))
