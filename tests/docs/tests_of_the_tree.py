"""The names of all tests, as ctest knows them."""

import re

from documents import ROOT, files

GOOGLE_TEST = re.compile(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", re.MULTILINE)
CTEST = re.compile(r"\b(?:add_test\(NAME|kaz_add_release_test\(|kaz_add_docs_test\()\s*([\w.]+)")


def tests(folder="tests"):
    names = set()
    for name in files(folder):
        text = (ROOT / name).read_text(encoding="utf-8", errors="replace")
        if name.endswith(".cpp"):
            names |= {f"{suite}.{test}" for suite, test in GOOGLE_TEST.findall(text)}
        elif name.endswith("CMakeLists.txt"):
            # A variable may follow, so the name may be incomplete.
            found = {test.rstrip("_") for test in CTEST.findall(text)}
            names |= {test if "." in test else f"Packaging.{test}" for test in found}
    return names


def suites():
    return {name.split(".")[0] for name in tests()}


def fuzz_targets():
    return {path.name.removesuffix("_fuzzer.cpp") for path in (ROOT / "tests/fuzz").glob("*_fuzzer.cpp")}
