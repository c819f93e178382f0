"""The Markdown documents of the tree, parsed.

The scripts that use this run Debian's Python, because only that finds Debian's modules.
"""

import os
import re
import sys
from dataclasses import dataclass
from pathlib import Path

try:
    from markdown_it import MarkdownIt
except ImportError:
    print("SKIPPED: there is no markdown_it (package python3-markdown-it)", file=sys.stderr)
    sys.exit(77)

ROOT = Path(__file__).resolve().parents[2]
NOT_OURS = {".git", ".deps", "build"}
NOT_RUN = re.compile(r"<!-- not run: (.+) -->")


@dataclass
class Block:
    """A block of code; `reason` is the text of a "not run" comment above it, if there is one."""

    line: int
    language: str | None  # None: marked by indentation alone
    text: str
    reason: str | None


@dataclass
class Span:
    """A link's target or a piece of code in a text; `column` is the heading of its column in a table."""

    line: int
    text: str
    column: str


def slug(heading):
    """The anchor of a heading on hosting sites."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


class Document:
    def __init__(self, path):
        self.path = Path(path).resolve()
        self.name = os.path.relpath(self.path, ROOT)
        self.blocks, self.links, self.code, self.anchors = [], [], [], set()
        self._read(MarkdownIt("commonmark").enable("table").parse(self.path.read_text(encoding="utf-8")))

    def _read(self, tokens):
        line, reason, before = 1, None, None
        headings, column = [], 0
        for token in tokens:
            if token.map:
                line = token.map[0] + 1
            if token.type == "thead_open":
                headings = []
            elif token.type == "table_close":
                headings = []
            elif token.type == "tr_open":
                column = -1
            elif token.type in ("th_open", "td_open"):
                column += 1
            elif token.type == "html_block":
                found = NOT_RUN.fullmatch(token.content.strip())
                reason = found[1] if found else None
            elif token.type in ("fence", "code_block"):
                language = token.info.strip() if token.type == "fence" else None
                self.blocks.append(Block(line, language, token.content, reason))
                reason = None
            elif token.type == "inline":
                if before == "heading_open":
                    self.anchors.add(slug("".join(child.content for child in token.children)))
                if before == "th_open":
                    headings.append(token.content)
                self._read_inline(token, line, headings[column] if before == "td_open" else "")
                reason = None
            before = token.type

    def _read_inline(self, token, line, column):
        for child in token.children:
            if child.type == "softbreak":
                line += 1
            elif child.type == "link_open":
                self.links.append(Span(line, child.attrGet("href"), column))
            elif child.type == "image":
                self.links.append(Span(line, child.attrGet("src"), column))
            elif child.type == "code_inline":
                self.code.append(Span(line, child.content, column))


def files(*folders):
    """Every file of the tree, or of the given folders, as a path relative to the tree."""
    for folder in folders or (".",):
        for at, below, names in os.walk(ROOT / folder):
            below[:] = [name for name in below if name not in NOT_OURS]
            for name in names:
                yield os.path.relpath(os.path.join(at, name), ROOT)


def documents(arguments):
    """The documents named on the command line, or all."""
    paths = arguments or sorted(ROOT / name for name in files() if name.endswith(".md") and "/mistakes" not in name)
    return [Document(path) for path in paths]


class Problems:
    def __init__(self):
        self.count = 0

    def add(self, document, line, text):
        self.count += 1
        print(f"{document.name}:{line}: {text}")

    def leave(self, looked_at, what):
        """Ends the program. Zero checked items are a problem too."""
        if looked_at == 0:
            self.count += 1
        print(f"{looked_at} {what}, {self.count} problems", file=sys.stderr)
        sys.exit(1 if self.count else 0)
