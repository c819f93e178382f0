#!/usr/bin/env python3
"""write_lint_rules.py BUILD FOLDER...: writes BUILD/lint.ninja, which runs clang-tidy over what BUILD compiles.

Only sources in the folders are checked, and only those again of which the text, a header or the rules changed.
"""

import json
import os
import shlex
import sys

RULES = """\
ninja_required_version = 1.5
builddir = {build}/lint
rule tidy
  command = clang-tidy --quiet -p {build} $in && cd {build} && $compile -MM -MF $out.d -MT $out && touch $out
  depfile = $out.d
  deps = gcc
  description = $in
"""


def escaped(text):
    return text.replace("$", "$$").replace(" ", "$ ").replace(":", "$:")


def preprocessing(entry):
    """The command line up to where it says what to write; the source is its last word."""
    words = shlex.split(entry["command"])
    words = words[: words.index("-o")] + [entry["file"]]
    return " ".join(shlex.quote(word) for word in words).replace("$", "$$")


def main():
    build, folders = os.path.abspath(sys.argv[1]), [os.path.abspath(folder) for folder in sys.argv[2:]]
    root = os.getcwd()
    print(RULES.format(build=shlex.quote(build)))
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = {entry["file"]: entry for entry in json.load(file)}
    for source, entry in sorted(entries.items()):
        if not any(source.startswith(folder + "/") for folder in folders):
            continue
        name = os.path.relpath(source, root)
        rules = [os.path.join(root, ".clang-tidy")]
        if name.startswith("tests/"):
            rules.append(os.path.join(root, "tests", ".clang-tidy"))
        stamp = os.path.join(build, "lint", name)
        print(f"build {escaped(stamp)}: tidy {escaped(source)} | {' '.join(map(escaped, rules))}")
        print(f"  compile = {preprocessing(entry)}")


main()
