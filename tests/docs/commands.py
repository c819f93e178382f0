#!/usr/bin/python3 -B
"""commands.py [--programs FOLDER...] [DOCUMENT...]: checks that the commands in the documents work.

A block of commands is marked `sh`, or only indented. A `console` block is a session; its commands follow a `$ `.

- Builds and other long commands are not run. Their names, presets, targets, tests and options must exist; other tests
  show that they work.
- kazwifictl and the simulated device are run, from the given folders. A block is a script. It runs on a simulated device
  with the neighbourhood home.json, and must exit with status 0. The commands of a session get a password. They must exit
  with status 0, unless the session shows their error.
- Every other block needs a comment above it that says why it is not run: `<!-- not run: REASON -->`.
"""

import argparse
import os
import re
import shlex
import subprocess
import tempfile
from pathlib import Path

from documents import ROOT, Problems, documents, files
from tests_of_the_tree import fuzz_targets, tests

HOME = "simulator/neighbourhoods/home.json"
PASSWORD = "correct horse"
RUN = ("kazwifictl", "kaz-device-sim", "busctl")
PLACEHOLDER = re.compile(r"\[.*\]?|[A-Z][A-Z_]*|\.\.\.")


def text_of(*names):
    return "\n".join((ROOT / name).read_text(encoding="utf-8") for name in names)


dev = text_of("dev")
dev_help = dev[dev.index("<<'HELP'") : dev.index("\nHELP\n")]
dev_commands = set(re.search(r'^  ([a-z| ]+)\) "cmd_', dev, re.MULTILINE)[1].split(" | "))
presets = set(re.findall(r'"name": "(\w+)"', text_of("CMakePresets.json"))) - {"base"}
projects = {name for name in files() if name.endswith("CMakeLists.txt")}
targets = set()
for cmake in projects:
    made = r"\b(?:add_executable|add_library|add_custom_target|qt_add_executable|kaz_add_\w+)\(\s*([\w:-]+)"
    targets |= set(re.findall(made, text_of(cmake)))


def matches(expression, names):
    return any(re.search(expression, name) for name in names)


def matches_filter(expression, names):
    """As --gtest_filter does, without its negative patterns."""
    patterns = [re.escape(one).replace(r"\*", ".*") for one in expression.split("-")[0].split(":")]
    return all(matches(f"^(?:{one})$", names) for one in patterns)


def problems_of_dev(words):
    """The problems of `./dev` with these arguments."""
    if not words or words[0] not in dev_commands | {"help"}:
        return [f"./dev has no command '{' '.join(words[:1])}'"]
    command, words = words[0], words[1:]
    function = dev[dev.index(f"cmd_{command}()") :] if f"cmd_{command}()" in dev else dev_help
    scripts = [name for name in ("tests/vm/run", "packaging/package", "bench/run") if name in function.split("\n}\n")[0]]
    options = dev_help + function.split("\n}\n")[0] + text_of(*scripts)
    problems, previous, in_targets = [], command, False
    for word in words:
        in_targets = word == "--target" or (in_targets and not word.startswith("-"))
        if PLACEHOLDER.fullmatch(word):
            pass
        elif in_targets and word != "--target":
            known = word in targets or f"{word.removesuffix('/all')}/CMakeLists.txt" in projects
            problems += [] if known else [f"there is no target {word}"]
        elif previous == "-R":
            problems += [] if matches(word, tests()) else [f"no test matches {word}"]
        elif previous == "--filter":
            problems += [] if matches_filter(word, tests("tests/vm")) else [f"no test of tests/vm matches {word}"]
        elif word.startswith("-"):
            known = word in ("-R", "--target") or re.search(rf"{re.escape(word)}(?![\w-])", options)
            problems += [] if known else [f"./dev {command} has no option {word}"]
        elif command == "test" and "/" in word:
            problems += [] if f"tests/{word}/CMakeLists.txt" in projects else [f"there are no tests in tests/{word}"]
        elif command in ("build", "test") and previous == command:
            problems += [] if word in presets else [f"there is no preset {word}"]
        elif command == "fuzz" and previous == command:
            problems += [] if word in fuzz_targets() else [f"there is no fuzz target {word}"]
        elif not word.isdigit() and not re.search(rf"\b{re.escape(word)}\b", options):
            problems.append(f"./dev {command} does not know {word}")
        previous = word
    return problems


def problems_of_cmake(words):
    """The problems of installing a preset's build, and of configuring and building a project of the tree."""
    if words[1:2] == ["--install"] or words[1:2] == ["--build"]:
        folder = words[2] if len(words) > 2 else ""
        known = presets | {Path(name).parent.name for name in projects}
        return [] if re.sub("^build/", "", folder) in known else [f"nothing is built in {folder}"]
    if words[1:2] == ["-S"]:
        return [] if f"{words[2]}/CMakeLists.txt" in projects else [f"there is no project in {words[2]}"]
    return ["only `cmake --install`, `--build` and `-S` are understood here"]


def problems_of_built(words):
    """The problems of programs in a build folder."""
    programs = [word for word in words if re.match(r"build/\w+/", word)]
    return [f"no target makes {word}" for word in programs if word.rsplit("/", 1)[1] not in targets]


def problems_of_ours(words):
    """The problems of a script of the tree."""
    path = ROOT / words[0]
    if not os.access(path, os.X_OK) or not path.is_file():
        return [f"there is no program {words[0]}"]
    text = path.read_text(encoding="utf-8")
    return [f"{words[0]} has no option {word}" for word in words[1:] if word.startswith("-") and word not in text]


def check(words):
    """The problems of a command that is not run; None for a command that must run."""
    if words[0] == "./dev":
        return problems_of_dev(words[1:])
    if words[0] == "cmake":
        return problems_of_cmake(words)
    if words[0] in RUN:
        return None
    if words[0].startswith("build/"):
        return problems_of_built(words)
    if "/" in words[0] and not words[0].startswith("/"):
        return problems_of_ours(words)
    return [f"{words[0]}: this cannot be checked; write `<!-- not run: REASON -->` above the block"]


class Device:
    """Runs scripts on a simulated device."""

    def __init__(self, programs):
        self.environment = os.environ | {
            "PATH": os.pathsep.join([*programs, os.environ["PATH"]]),
            "TERM": "dumb",
            "COLUMNS": "80",
        }

    def run(self, script):
        with tempfile.TemporaryDirectory() as folder:
            script = f"A=$DBUS_SYSTEM_BUS_ADDRESS\ncd '{ROOT}'\n{script}"
            command = ["kaz-device-sim", "--neighbourhood", HOME, "--time-scale", "0.02", "--exec", "bash", "-euc", script]
            environment = self.environment | {"KAZ_CONFIG_FILE": f"{folder}/kaz.conf"}
            return subprocess.run(
                command, cwd=ROOT, env=environment, text=True, timeout=60, check=False,
                input=f"{PASSWORD}\n", stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            )  # fmt: skip


def commands_of(block):
    """The command lines of a block of commands, as words."""
    for line in block.text.replace("\\\n", " ").splitlines():
        words = shlex.split(line, comments=True)
        while words and re.match(r"[A-Z_]+=", words[0]):
            words = words[1:]
        if words:
            yield words


def check_script(document, block, device, problems):
    to_run = False
    for words in commands_of(block):
        found = check(words)
        to_run = to_run or found is None
        for problem in found or []:
            problems.add(document, block.line, problem)
    if to_run and device:
        done = device.run(block.text)
        if done.returncode != 0:
            problems.add(document, block.line, f"ends with status {done.returncode}:\n{done.stdout}")


def plain(text):
    """The text without differences in figures, in line breaks and in the age of the last search."""
    text = re.sub(r"^  searched +\S+ s\n", "", text, flags=re.MULTILINE)
    return re.sub(r"\s+", " ", re.sub(r"\d+(\.\d+)?", "N", text))


def check_session(document, block, device, problems):
    """Runs each `$ command`, in order on one device, and compares its output with the session."""
    parts = re.split(r"^\$ (.*)\n", block.text, flags=re.MULTILINE)[1:]
    script, expected = "", []
    for command, output in zip(parts[::2], parts[1::2]):
        # A command that ends with ^C is interrupted. The question for a password appears only on a terminal, and above
        # it why it is asked again.
        shown = re.sub(r"^(  .*\n)?Password.*\n", "", output, flags=re.MULTILINE)
        wanted = [line for line in shown.splitlines() if line != "^C"]
        failing = any(line.startswith("kazwifictl: ") for line in wanted)
        interrupted = "^C" in output
        prefix = "timeout --signal=INT 1 " if interrupted else f"printf '{PASSWORD}\\n' | "
        script += f"echo '$ '; if {prefix}{command} 2>&1; then echo STATUS 0; else echo STATUS 1; fi\n"
        expected.append((command, wanted, "STATUS 1" if failing else "STATUS 0", interrupted))
    done = device.run(script)
    for (command, wanted, status, interrupted), output in zip(expected, done.stdout.split("$ \n")[1:]):
        if not interrupted and status not in output:
            problems.add(document, block.line, f"`{command}` does not end with {status}:\n{output}")
        if not interrupted and plain("\n".join(wanted)) not in plain(output):
            problems.add(document, block.line, f"`{command}` has another output:\n{output}")


def check_code_in_text(document, problems):
    """Commands that are named in the text must exist too."""
    count = 0
    for span in document.code:
        if span.text.startswith("./dev "):
            count += 1
            for problem in problems_of_dev(shlex.split(span.text.replace("[", "").replace("]", ""))[1:]):
                problems.add(document, span.line, problem)
    return count


def check_that_all_are_named(document, problems):
    """The page for contributors names every command of ./dev, and so does its help."""
    named = " ".join([span.text for span in document.code] + [block.text for block in document.blocks])
    for command in sorted(dev_commands):
        if not re.search(rf"\./dev {command}\b", named):
            problems.add(document, 1, f"does not name ./dev {command}")
        if not re.search(rf"^  {command}\b", dev_help, re.MULTILINE):
            problems.add(document, 1, f"./dev help does not name {command}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", nargs="*", default=[])
    parser.add_argument("--documents", nargs="*", default=[])
    arguments = parser.parse_args()
    device = Device(arguments.programs) if arguments.programs else None
    problems, count = Problems(), 0
    for document in documents(arguments.documents):
        for block in document.blocks:
            if block.language == "":
                problems.add(document, block.line, "this block has no language: sh, console, or what it is (text)")
            elif block.reason or block.language not in (None, "sh", "console"):
                continue
            elif block.language == "console":
                count += 1
                if device:
                    check_session(document, block, device, problems)
            else:
                count += 1
                check_script(document, block, device, problems)
        count += check_code_in_text(document, problems)
        if document.name == "CONTRIBUTING.md":
            check_that_all_are_named(document, problems)
    problems.leave(count, "blocks and commands")


if __name__ == "__main__":
    main()
