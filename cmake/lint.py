#!/usr/bin/env python3
"""Runs clang-tidy under ninja, so that only what changed is looked at again.

Tests are checked several at a time, since most of a check's time goes into the headers of GoogleTest. All else is
checked source by source: of what is included, clang's analyzer follows no paths.

lint.py rules BUILD FOLDER...              prints ninja's rules for what BUILD compiles of the folders
lint.py check BUILD SOURCE CONFIG STAMP    checks one source; when it is clean, writes STAMP and its dependencies
"""

import json
import os
import shlex
import subprocess
import sys

RULES = """\
ninja_required_version = 1.5
builddir = {build}/lint
rule tidy
  command = {script} check {build} $in $config $out
  depfile = $out.d
  deps = gcc
  description = $in
"""


def compilations(build):
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        return {os.path.relpath(entry["file"]): entry for entry in json.load(file)}


def rules(build, *folders):
    print(RULES.format(script=os.path.relpath(__file__), build=build))
    for source in sorted(compilations(build)):
        of_folder = source.removeprefix(build + "/")
        if source != of_folder and "/Unity/" not in source:
            continue  # generated, not written
        if any(of_folder.startswith(folder + "/") for folder in folders):
            config = "tests/.clang-tidy" if of_folder.startswith("tests/") else ".clang-tidy"
            print(f"build {build}/lint/{of_folder}: tidy {source} | {' '.join({'.clang-tidy', config})}")
            print(f"  config = {config}")
    return 0


def write_dependencies(entry, stamp):
    words = shlex.split(entry["command"])
    compiler = words[: words.index("-o")]
    command = compiler + [entry["file"], "-MM", "-MF", os.path.abspath(stamp + ".d"), "-MT", stamp]
    return subprocess.run(command, cwd=entry["directory"], check=False).returncode


def check(build, source, config, stamp):
    found = subprocess.run(
        ["clang-tidy", "--quiet", f"--config-file={config}", "-p", build, source], capture_output=True, text=True, check=False
    )
    if found.returncode != 0:
        print(found.stdout)
        # Of what it says there, only this does not repeat the findings.
        print("\n".join(line for line in found.stderr.splitlines() if "rror" in line and "treated" not in line))
        return 1
    code = write_dependencies(compilations(build)[source], stamp)
    if code == 0:
        with open(stamp, "w", encoding="utf-8"):
            pass
    return code


if __name__ == "__main__":
    sys.exit({"rules": rules, "check": check}[sys.argv[1]](*sys.argv[2:]))
