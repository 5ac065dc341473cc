#!/usr/bin/env python3
"""Mutation testing: breaks one behaviour of a copy of the product at a time and checks that a test fails.

mutants.py [--list] [--file list] [word...]: all of mutants.txt or of another list, or those with one of the words
in their behaviour, groups or file. Prints a line for each and exits with 1 if one survived. A test counts only if it
fails twice. A test that also fails without a mutant would count too, so all tests must pass first and the machine must
be idle. The copy and its build trees are in build/mutants/ and are reused by the next run.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time

root = pathlib.Path(__file__).resolve().parent.parent
copy = root / "build/mutants"
speech = root / "build/speech"


def ctest(label, preset="linux"):
    """A test command, and a function from failed tests to the command that runs only those again."""
    command = ["ctest", "--test-dir", f"build/{preset}", "--stop-on-failure", "--output-on-failure",
               "--no-tests=error", "--timeout", "600", "-L", f"^{label}$"]
    return command, lambda failed: [*command, "--rerun-failed"]


def scenarios(target="linux"):
    command = ["/usr/bin/python3", "-B", "-m", "pytest", "-x", "-q", f"--target={target}"]
    return ([*command, "-n", "3", "tests/scenarios"],
            lambda failed: [*command, *(f"tests/scenarios/{name}" for name in failed)])


# For each group its preset, the targets to build, and its test commands; the quickest group first.
groups = {name: ("linux", [f"tests_{name}"], [ctest(name)]) for name in ("unit", "shell", "contract")} | {
    "scenarios": ("linux", ["tests_scenarios"], [scenarios()]),
    "windows": ("windows", ["tests_contract", "tests_scenarios"], [ctest("contract", "windows"), scenarios("windows")]),
}
# Reports of a failed GoogleTest case, ctest test and scenario.
failure = re.compile(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)|^\s+\d+ - (\S+) \(|"
                     r"^(?:FAILED|ERROR) (\S+?\.py::.+?)(?: - .*)?$", re.M)
longest_run_s = 1200


class Mutant:
    def __init__(self, block):
        lines = [line for line in block.splitlines() if not line.startswith("#")]
        self.behaviour = lines[0]
        names, self.file = lines[1].split(": ")
        self.groups = sorted(names.split(), key=list(groups).index)
        self.old = "\n".join(line[1:] for line in lines[2:] if line.startswith("-"))
        self.new = "\n".join(line[1:] for line in lines[2:] if line.startswith("+"))

    def matches(self, words):
        text = f"{self.behaviour} {' '.join(self.groups)} {self.file}".lower()
        return not words or any(word.lower() in text for word in words)

    def apply(self):
        path = copy / self.file
        text = path.read_text()
        if text.count(self.old) != 1:
            sys.exit(f"{self.file} contains this {text.count(self.old)} times:\n{self.old}")
        path.write_text(text.replace(self.old, self.new))


def read_mutants(list_file):
    text = list_file.read_text()
    return [Mutant(block) for block in text.split("\n\n") if re.search("^[^#]", block, re.M)]


def allow_warnings():
    """Disables warnings in the copy: an edit may leave something unused."""
    options = copy / "cmake/RotikaOptions.cmake"
    options.write_text(options.read_text().replace(" -Werror", " -w"))


def restore():
    """Updates the copy to the current tree. Unchanged files keep their time stamps, so that little is rebuilt."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=root, check=True,
                            capture_output=True, text=True).stdout.splitlines()
    for name in listed:
        source, target = root / name, copy / name
        if not source.is_file() or target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        if name != "cmake/RotikaOptions.cmake" or not target.exists():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
    for present in [p for p in copy.rglob("*") if p.suffix in (".cpp", ".h", ".py")]:
        name = str(present.relative_to(copy))
        if not name.startswith("build/") and name not in listed:
            present.unlink()
    (copy / "build").mkdir(exist_ok=True)
    if speech.exists() and not (copy / "build/speech").exists():
        (copy / "build/speech").symlink_to(speech)


def run(command, log):
    """Whether the command succeeds; its output is appended to the log."""
    with open(log, "ab") as out:
        try:
            return subprocess.run(command, cwd=copy, stdout=out, stderr=out, stdin=subprocess.DEVNULL,
                                  timeout=longest_run_s).returncode == 0
        except subprocess.TimeoutExpired:
            return False


def failures(command, log):
    """The names of the tests that fail."""
    before = log.stat().st_size
    if run(command, log):
        return []
    output = log.read_bytes()[before:].decode(errors="replace")
    return ["".join(names) for names in failure.findall(output)] or ["a run that did not finish"]


def build(preset, targets, log):
    command = ["cmake", "--build", f"build/{preset}", "--parallel", str(os.cpu_count()), "--target", *targets]
    return run(command, log)


def configure(preset):
    extra = os.environ.get("ROTIKA_MUTANTS_CMAKE", "").split() if preset == "windows" else []
    if not run(["cmake", "--preset", preset, *extra], copy / "build/configure.log"):
        sys.exit(f"Cannot configure {preset}: {copy}/build/configure.log")


def noticed_by(mutant, log):
    """The first test that fails twice, or None."""
    for name in mutant.groups:
        preset, targets, tests = groups[name]
        if not build(preset, targets, log):
            return "NO TEST: it does not compile"
        for command, again in tests:
            failed = failures(command, log)
            if failed and failures(again(failed), log):
                return failed[0]
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--list", action="store_true", help="only print the mutants")
    parser.add_argument("--file", type=pathlib.Path, default=root / "tools/mutants.txt", help="another list")
    parser.add_argument("words", nargs="*")
    arguments = parser.parse_args()
    chosen = [mutant for mutant in read_mutants(arguments.file) if mutant.matches(arguments.words)]
    if arguments.list:
        print("\n".join(f"{' '.join(m.groups):16} {m.behaviour}" for m in chosen))
        return 0
    restore()
    allow_warnings()
    for preset in {groups[name][0] for mutant in chosen for name in mutant.groups}:
        configure(preset)
    survivors = 0
    for number, mutant in enumerate(chosen, 1):
        began = time.monotonic()
        log = copy / f"build/mutant-{number}.log"
        log.write_bytes(b"")
        mutant.apply()
        noticed = noticed_by(mutant, log)
        restore()
        survivors += noticed is None or noticed.startswith("NO TEST")
        verdict = f"killed by {noticed}" if noticed else "SURVIVED"
        print(f"{mutant.behaviour}: {verdict} ({time.monotonic() - began:.0f} s)", flush=True)
    print(f"{len(chosen) - survivors} of {len(chosen)} killed")
    return 1 if survivors else 0


if __name__ == "__main__":
    sys.exit(main())
