"""Checks the includes of the product against its floors: a folder includes only folders of lower floors.

Prints each offending line; exits with 1 if there is one. docs/architecture.md explains the floors.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

FLOORS = {
    "common": 0,
    "licence": 0,
    "engine/base": 1,
    "engine/model": 2,
    "engine/platform": 2,
    "engine/workers": 3,
    "engine/layers": 3,
    "engine/files": 3,
    "engine/run": 4,
    "engine/voice": 5,
    "engine/gaze": 5,
    "engine/pointing": 5,
    "engine/wheel": 5,
    "engine/core": 6,
    "engine/editor": 7,
    "shell/base": 7,
    "shell/process": 8,
    "shell/toggle_key": 8,
    "shell/voice_install": 8,
    "shell/wheels": 8,
    "shell": 9,
    "engine/standalone": 8,
}
SYSTEMS = ("windows", "linux", "simulated")
SYSTEM_FOLDER = re.compile(rf"(common|shell/[a-z_]+|engine/platform)/({'|'.join(SYSTEMS)})$")

# A seam topic has one source file for each system, with these exceptions.
NO_IMPLEMENTATION = {
    ("editor_window", "linux"): "only the standalone engine has that editor, and that exists on Windows only",
    ("threads", "linux"): "the standard library's threads serve both systems, in platform/threads.cpp",
    ("threads", "windows"): "the same",
}
# Third-party libraries outside the platform folders, each in one file.
THIRD_PARTY = {"shell/voice_install/archive_extractor.cpp": ("archive.h", "archive_entry.h")}
# A header of the seam that declares no function.
NO_SOURCE = {"input_guard_protocol"}


def product_files():
    return sorted(str(path.relative_to(ROOT)) for folder in ("common", "licence", "engine", "shell")
                  for path in (ROOT / folder).rglob("*") if path.suffix in (".h", ".cpp", ".S"))


def folder_of(name):
    """The file's folder as in FLOORS, and the system whose subfolder it is in, or None."""
    folder = name.rpartition("/")[0]
    system = None
    if match := SYSTEM_FOLDER.match(folder):
        folder, system = match.groups()
    return folder, system


def target_of(name, quoted):
    """The product file that an include in `name` refers to, relative to the root; None if there is none."""
    for base in ("", "engine/", name.rpartition("/")[0] + "/"):
        if (ROOT / (base + quoted)).exists():
            return base + quoted
    return None


def fault_of_product_include(name, target):
    """Why `name` may not include `target`, another file of the product; None if it may."""
    folder, system = folder_of(name)
    target_folder, target_system = folder_of(target)
    if target_folder not in FLOORS:
        return "outside the product"
    if target_system and target_system != system and not (folder == "engine/standalone" and target_system == "windows"):
        return f"a header of one system, {target_system}"
    if target_folder == folder:
        return None
    if folder.startswith("shell") and target_folder.startswith("engine/"):
        return None if target == "engine/core/overlay.h" else "the shell sees only core/overlay.h of the engine"
    if folder == "licence":
        return "the licence check includes no other part of the product"
    if system and folder == "engine/platform" and target_folder not in ("common", "engine/base"):
        return "a platform sees only its seam, base and common"
    if FLOORS[target_folder] >= FLOORS[folder]:
        return f"floor {FLOORS[target_folder]} from floor {FLOORS[folder]}"
    return None


def fault_of_other_include(name, header):
    """Why `name` may not include <header>; None if it may."""
    folder, system = folder_of(name)
    if header in THIRD_PARTY.get(name, ()):
        return None
    if re.fullmatch(r"[a-z_0-9]+", header):  # standard library headers have no suffix
        return None
    if (folder.startswith("shell") or folder == "licence") and re.match(r"Q[A-Za-z]*$|Qt[A-Za-z]+/", header):
        return None
    if system in ("windows", "linux") or folder == "engine/standalone":
        return "Qt outside the shell" if header.startswith("Q") else None
    return "a system header outside the platform folders"


def include_faults(files, graph):
    for name in files:
        for number, line in enumerate((ROOT / name).read_text().splitlines(), 1):
            if not (match := re.match(r'\s*#\s*include\s*([<"])([^>"]+)', line)):
                continue
            target = target_of(name, match[2]) if match[1] == '"' else None
            if target:
                graph.setdefault(name, set()).add(target)
                fault = fault_of_product_include(name, target)
            else:
                fault = fault_of_other_include(name, match[2])
            if fault:
                yield f"{name}:{number}: {line.strip()}: {fault}"


def unit_of(name):
    """A header and the source files of the same name form one unit."""
    return name.rpartition(".")[0]


def cycles(graph):
    """Include cycles among the units of one folder, each once."""
    edges = {}
    for name, targets in graph.items():
        unit = unit_of(name)
        edges.setdefault(unit, set()).update(
            unit_of(target) for target in targets
            if unit_of(target) != unit and unit_of(target).rpartition("/")[0] == unit.rpartition("/")[0])
    finished, path = set(), []

    def walk(unit):
        if unit in path:
            yield path[path.index(unit):] + [unit]
        elif unit not in finished:
            path.append(unit)
            for other in sorted(edges.get(unit, ())):
                yield from walk(other)
            path.pop()
            finished.add(unit)

    for unit in sorted(edges):
        yield from walk(unit)


def implementation_faults(files):
    for name in files:
        if not (match := re.fullmatch(r"engine/platform/(\w+)\.h", name)) or match[1] in NO_SOURCE:
            continue
        for system in SYSTEMS:
            exists = f"engine/platform/{system}/{match[1]}.cpp" in files
            if exists == ((match[1], system) in NO_IMPLEMENTATION):
                yield f"{name}: {'an' if exists else 'no'} implementation for {system}" + (
                    ", though NO_IMPLEMENTATION says there is none" if exists else "")


def declares_functions(header):
    """Whether a header has a function that a source file must define."""
    text = re.sub(r"^\s*(//|#).*$", "", (ROOT / header).read_text(), flags=re.M)
    return any(match[2] == ";" for match in re.finditer(
        r"^(?!inline|constexpr|template|using|class|struct|static|extern|namespace|public|private)([A-Za-z_][^;{=]*\([^;{]*)([;{])", text, re.M))


def source_faults(files):
    """Headers whose functions are not defined by the source of their name."""
    for name in files:
        if name.endswith(".h") and not re.fullmatch(r"engine/platform/\w+\.h", name) and declares_functions(name):
            folder, _, base = name.rpartition("/")
            sources = {f"{each}/{base[:-2]}.cpp" for each in (folder, *(f"{folder}/{system}" for system in SYSTEMS))}
            if not sources & files:
                yield f"{name}: declares what no source file of its name defines"


def namespace_faults(files):
    outside = {"engine/core/overlay.h"}
    for name in files:
        if name.startswith("engine/") and name.endswith((".h", ".cpp")) and name not in outside \
                and "namespace rotika" not in (ROOT / name).read_text():
            yield f"{name}: not in namespace rotika"


def main():
    files = product_files()
    graph = {}
    faults = list(include_faults(files, graph))
    faults += [" -> ".join(cycle) + ": an include cycle" for cycle in cycles(graph)]
    faults += implementation_faults(set(files))
    faults += source_faults(set(files))
    faults += namespace_faults(files)
    print("\n".join(faults) or "All includes respect the floors.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
