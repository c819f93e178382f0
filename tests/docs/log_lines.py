#!/usr/bin/python3 -B
"""log_lines.py [DOCUMENT]: compares the log records quoted in the troubleshooting table with those of the product.

A record is quoted after its level: warning "Couldn't read ...". Placeholders are `...`, M and N. The table must have
every error and every warning.
"""

import re
import sys

from documents import ROOT, Document, Problems, files

LEVELS = {"err": "error", "error": "error", "warn": "warning", "info": "info", "debug": "debug"}
RECORD = re.compile(r'\b(err|error|warn|info|debug|(?:log|write)\(\w+)\s*[(,]\s*((?:"(?:[^"\\]|\\.)*"\s*)+)')
QUOTED = re.compile(r'\b(error|warning|info|debug) ((?:(?:"[^"]*"|`[^`]*`)(?: or )?)+)')
# Records that only a bug of the library or its program can cause.
NOBODYS_TROUBLE = (
    "Event loop: ",
    "Cannot follow the owner",
    "Cannot make a call",
    "Cannot subscribe",
    "Couldn't decode wpa_supplicant",
    "Got NetworkSelected without",
)

ANYTHING = "\0"


def records():
    """Every format of a record, with its level; "any" if the caller passes the level."""
    for name in files("base", "src", "platform"):
        if name.endswith((".cpp", ".h")):
            for level, literals in RECORD.findall((ROOT / name).read_text(encoding="utf-8")):
                text = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literals)).replace('\\"', '"')
                yield LEVELS.get(level, "any"), re.sub(r"\{[^}]*\}", ANYTHING, text).strip()


def ends_differ(one, other):
    """Whether their texts before the first wildcard, or those after the last one, exclude each other."""
    heads, tails = ([pattern.split(ANYTHING)[place] for pattern in (one, other)] for place in (0, -1))
    return not (heads[0].startswith(heads[1]) or heads[1].startswith(heads[0])) or \
        not (tails[0].endswith(tails[1]) or tails[1].endswith(tails[0]))


def fits(quoted, record):
    """Whether one text could match both patterns, and contains most of the record's own words."""
    if ends_differ(quoted, record):
        return False
    # Row by row: how many literal characters the first i of one pattern and the first j of the other share.
    none = -1
    rows = [[none] * (len(record) + 1) for _ in range(len(quoted) + 1)]
    rows[0][0] = 0
    for i, row in enumerate(rows):
        for j in range(len(record) + 1):
            if i and j and quoted[i - 1] == record[j - 1] != ANYTHING and rows[i - 1][j - 1] != none:
                row[j] = max(row[j], rows[i - 1][j - 1] + 1)
            if i and (quoted[i - 1] == ANYTHING or (j and record[j - 1] == ANYTHING)):
                row[j] = max(row[j], rows[i - 1][j])
            if j and (record[j - 1] == ANYTHING or (i and quoted[i - 1] == ANYTHING)):
                row[j] = max(row[j], row[j - 1])
    return rows[-1][-1] >= 0.8 * len(record.replace(ANYTHING, ""))


known = sorted({(level, record) for level, record in records() if re.search("[ =]", record)})
document = Document(sys.argv[1] if len(sys.argv) > 1 else ROOT / "docs/troubleshooting.md")
problems, quotations = Problems(), []
for number, line in enumerate(document.path.read_text(encoding="utf-8").splitlines(), 1):
    for level, group in QUOTED.findall(line) if line.startswith("|") else []:
        for text in re.findall(r'"([^"]*)"', group) if '`' not in group else re.findall(r"`([^`]*)`", group):
            quotations.append((number, level, re.sub(r"\.\.\.|\b[MN]\b", ANYTHING, text)))

for number, level, text in quotations:
    levels = {known_level for known_level, record in known if fits(text, record)}
    if not levels & {level, "any"}:
        shown = text.replace(ANYTHING, "...")
        problems.add(document, number, f'no {level} "{shown}" is logged' + (f", but {levels.pop()}" if levels else ""))
for level, record in known:
    if level in ("error", "warning") and not record.startswith(NOBODYS_TROUBLE):
        if not any(quoted_level == level and fits(text, record) for _, quoted_level, text in quotations):
            problems.add(document, 1, f'lacks the {level} "{record.replace(ANYTHING, "...")}"')
problems.leave(len(quotations), "quoted records")
