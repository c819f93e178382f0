#!/usr/bin/python3 -B
"""references.py [DOCUMENT...]: checks that what the documents refer to exists.

These are the targets of links, with their anchors; files and folders of the tree that are named as code; functions and
members that are named with `::` or `()`; tests in the column "shown by" of a table.
"""

import itertools
import re
import sys

from documents import ROOT, Document, Problems, documents, files
from tests_of_the_tree import fuzz_targets, suites, tests

EXTENSIONS = ("h", "cpp", "md", "py", "json", "map", "symbols", "abi", "cmake")
FILE = re.compile(rf"[\w./-]+\.(?:{'|'.join(EXTENSIONS)})")
SOURCES = ("base", "include", "src", "platform", "simulator", "tools", "tests", "examples", "bench")
IDENTIFIER = re.compile(r"(?:[\w~]+::)*[\w~]+(?:\(\))?")
STANDARD = ("std::", "Q", "g_", "secure_getenv", "fork", "exec", "main")

everything = set(files())
folders = {str(parent) for name in everything for parent in (ROOT / name).relative_to(ROOT).parents}
top = {name.split("/")[0] for name in everything if "/" in name}
words = set()
for source in files(*SOURCES):
    if source.endswith((".h", ".cpp", ".in", ".qml", ".txt")):
        words |= set(re.findall(r"\w+", (ROOT / source).read_text(encoding="utf-8", errors="replace")))


def alternatives(path):
    """The paths that a path with `{a,b}` means."""
    parts = [part.split(",") if i % 2 else [part] for i, part in enumerate(re.split(r"\{([^}]*)\}", path))]
    return ["".join(choice) for choice in itertools.product(*parts)]


def is_there(path):
    # Capitals are a placeholder for a name, except in the names of documents.
    pattern = re.sub(r"(?<![A-Za-z])[A-Z]+(?![A-Za-z]|\\\.md)", "[^/]+", re.escape(path.rstrip("/")).replace(r"\*", "[^/]*"))
    pattern = re.compile(rf"(?:.*/)?{pattern}(?:\.in)?" if "/" not in path or FILE.fullmatch(path) else pattern)
    return any(pattern.fullmatch(name) for name in everything | folders)


def looks_like_a_path(text):
    if not re.fullmatch(r"[\w.*{},/-]+", text) or text.startswith("/"):
        return False
    return bool(FILE.fullmatch(text)) or ("/" in text and text.split("/")[0] in top)


def check_link(document, span, problems):
    if re.match(r"[a-z]+:", span.text):
        return
    path, _, anchor = span.text.partition("#")
    target = (document.path.parent / path).resolve() if path else document.path
    if not target.exists():
        problems.add(document, span.line, f"links to {path}, which does not exist")
    elif anchor and target.suffix == ".md" and anchor not in Document(target).anchors:
        problems.add(document, span.line, f"links to {span.text}, which has no such heading")


def check_code(document, span, problems):
    text = span.text
    if looks_like_a_path(text):
        for path in alternatives(text):
            if not is_there(path):
                problems.add(document, span.line, f"names {path}, which does not exist")
    elif IDENTIFIER.fullmatch(text) and ("::" in text or text.endswith("()")) and not text.startswith(STANDARD):
        missing = [word for word in re.findall(r"\w+", text) if word not in words]
        if missing:
            problems.add(document, span.line, f"names {text}, but no source has {', '.join(missing)}")


def check_test(document, span, problems):
    if span.text.startswith("./dev"):
        return
    if span.text not in known_tests | known_suites | known_targets:
        problems.add(document, span.line, f"names {span.text}, which is not a test")


known_tests, known_suites, known_targets = tests(), suites(), fuzz_targets()
looked_at, found = 0, Problems()
for one in documents(sys.argv[1:]):
    for link in one.links:
        check_link(one, link, found)
    for code in one.code:
        (check_test if code.column == "shown by" or code.text in known_tests else check_code)(one, code, found)
        if re.fullmatch(r"[A-Z][a-z]\w+\.[A-Z][a-z]\w+", code.text) and code.text not in known_tests:
            found.add(one, code.line, f"names {code.text}, which is not a test")
    looked_at += len(one.links) + len(one.code)
found.leave(looked_at, "references")
