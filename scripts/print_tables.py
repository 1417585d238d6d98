#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the tables of the source into the documents, so that no document repeats a table by hand.

    print_tables.py [--check]

A page asks for a table with a line `<!-- table kName RowType: field, field -->`; everything from there to the next
`<!-- end of table -->` is written by this script. RowType is needed only where two arrays share a name, and the fields only
where not all of them are to be shown. With --check nothing is written, and the exit status is 1 if a page would change.

Arrays are found by their names anywhere below src/, whatever file they stand in. Their columns are the fields of the
row's struct, those of a struct within it one by one, so that a new field shows up as a new column by itself.
"""
import re
import sys
import textwrap
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TOKEN = re.compile(r"""
    (?P<string>(?:L|u8|u|U)?"(?:\\.|[^"\\])*") | (?P<char>'(?:\\.|[^'\\])*') |
    (?P<word>[-+]?(?:0[xX][0-9A-Fa-f']+|(?:\d[\d']*\.?\d*|\.\d+)(?:[eE][-+]?\d+)?)[fFuUlL]*(?![\w.]) |
             [-+]?[A-Za-z_]\w*(?:::\w+)*) |
    (?P<mark>[{}(),=.|\[\]<>&*;:?+-])""", re.X)
ESCAPE = re.compile(r"\\(x[0-9A-Fa-f]+|[0-7]{1,3}|.)", re.S)
PLAIN_ESCAPES = {"n": 10, "t": 9, "r": 13, "0": 0, "a": 7, "b": 8, "f": 12, "v": 11}


class Text(bytes):
    """A string of the source, as its bytes."""


def without_comments(code):
    keep = re.compile(r'//[^\n]*|/\*.*?\*/|("(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\')', re.S)
    return keep.sub(lambda m: m.group(1) or " ", code)


def bytes_of(literal):
    def byte(match):
        code = match.group(1)
        if code[0] == "x":
            return chr(int(code[1:], 16))
        return chr(int(code, 8) if code.isdigit() and code != "0" else PLAIN_ESCAPES.get(code, ord(code[0])))
    return Text(ESCAPE.sub(byte, literal[literal.index('"') + 1:-1]).encode("latin-1", "replace"))


def parse_value(tokens, at):
    """One initialiser: a list for braces, Text for strings, the words themselves for anything else."""
    kind, text = tokens[at]
    if text == "{":
        items, at = [], at + 1
        while tokens[at][1] != "}":
            name = None
            if tokens[at][1] == "." and tokens[at + 2][1] == "=":
                name, at = tokens[at + 1][1], at + 3
            item, at = parse_value(tokens, at)
            items.append((name, item))
            if tokens[at][1] == ",":
                at += 1
        return items, at + 1
    if kind == "string":
        whole = b""
        while tokens[at][0] == "string":
            whole += bytes_of(tokens[at][1])
            at += 1
        return Text(whole), at
    words, depth = [], 0
    while depth > 0 or tokens[at][1] not in (",", "}"):
        depth += {"(": 1, ")": -1}.get(tokens[at][1], 0)
        words.append(tokens[at][1])
        at += 1
    return "".join(words), at


class Source:
    """Every array and every struct below src/."""

    def __init__(self, root):
        self.arrays, self.structs, self.enums = {}, {}, {}
        for path in sorted(root.rglob("*.[ch]*")):
            code = without_comments(path.read_text(encoding="utf-8"))
            for m in re.finditer(r"(?:constexpr|const)\s+(?:std::array<\s*)?([\w:]+)(?:\s*,\s*[^>]*>)?\s+(k\w+)"
                                 r"(?:\[[^\]]*\])?\s*=\s*\{", code):
                tokens = [(t.lastgroup, t.group()) for t in TOKEN.finditer(code, m.end() - 1, self.end_of(code, m.end()))]
                try:
                    rows, _ = parse_value(tokens, 0)
                except IndexError:
                    continue  # code, not data
                if len(rows) == 1 and isinstance(rows[0][1], list) and rows[0][1] and isinstance(rows[0][1][0][1], list):
                    rows = rows[0][1]  # std::array has a pair of braces more
                self.arrays.setdefault(m.group(2), []).append((m.group(1), path, rows))
            for m in re.finditer(r"struct\s+(\w+)(?:\s+final)?\s*\{", code):
                body = code[m.end():self.end_of(code, m.end()) - 1]
                self.structs[m.group(1)] = re.findall(
                    r"^\s*(?!static|using|return|explicit|virtual|constexpr)([\w:<>*&, ]+)[ *&](\w+)"
                    r"(?:\s*=\s*([^;]+)|\{[^}]*\})?;", body, re.M)
            for m in re.finditer(r"enum\s+(?:class\s+)?\w+\s*(?::\s*\w+\s*)?\{([^}]*)\}", code):
                for entry in re.finditer(r"(\w+)\s*=\s*(-?(?:0[xX])?[0-9A-Fa-f]+)", m.group(1)):
                    self.enums[entry.group(1)] = entry.group(2)

    @staticmethod
    def end_of(code, at):
        depth = 1
        for m in re.finditer(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'|[{}]', code[at:]):
            depth += {"{": 1, "}": -1}.get(m.group(), 0)
            if depth == 0:
                return at + m.end()
        return len(code)

    def array(self, name, row_type=None):
        found = [a for a in self.arrays.get(name, []) if row_type in (None, a[0])]
        if len(found) != 1:
            raise SystemExit(f"print_tables: {len(found)} arrays are called {name}"
                             f"{' of ' + row_type if row_type else ''} below src/")
        return found[0]

    def rows(self, name, row_type=None):
        """Each row as a dict from field to value."""
        kind, _, items = self.array(name, row_type)
        if kind.split("::")[-1] not in self.structs:
            return [{"value": item} for _, item in items]
        return [self.row(kind, item) for _, item in items]

    def row(self, kind, items):
        """The fields of one struct; a field that isn't named has its default."""
        fields = self.structs[kind.split("::")[-1]]
        given = {}
        for position, (field, value) in enumerate(items if isinstance(items, list) else []):
            given[field or fields[position][1]] = value
        row = {}
        for type_name, field, default in fields:
            default = default.strip()
            value = given.get(field, default)
            if type_name.strip() in self.structs and (isinstance(value, list) or value in ("", "{}")):
                row.update(self.row(type_name.strip(), value))
            else:  # the default of an enumeration goes without saying
                row[field] = "" if "::" in default and value in (default, default.split("::")[-1]) else value
        return row


# --- Cells ----------------------------------------------------------------------------------------------------------

def cell(value, source):
    if isinstance(value, Text):
        return code_span(shown_text(value))
    if isinstance(value, list):
        return ", ".join(cell(v, source) for _, v in value)
    word = value.split("::")[-1]
    if re.fullmatch(r"[-+]?[\d.]+(?:[eE][-+]?\d+)?[fFuUlL]*", word):
        number = word.rstrip("fFuUlL")
        return number[:-2] if re.fullmatch(r"[-+]?\d+\.0", number) else number
    if word in source.enums:
        return source.enums[word]
    if word in ("nullptr", "", "kNone", "'\\0'"):
        return ""
    if re.fullmatch(r"k(No\w*Limit)", word):
        return "any"
    if re.fullmatch(r"k[A-Z]\w*", word):
        return re.sub(r"(?<=[a-z0-9])(?=[A-Z])", " ", word[1:]).lower()
    if re.fullmatch(r"'.'", word):
        return code_span(word[1])
    return {"true": "yes", "false": ""}.get(word, word)


def shown_text(text):
    if text[:1] == b"\x09":  # 16-bit characters, high byte first; hosts get the low bytes
        text = text[2::2]
    return "".join(chr(b) if 32 <= b < 127 else f"\\x{b:02X}" for b in text)


def code_span(text):
    if not text:
        return ""
    text = re.sub(r"  +$", "", text)  # padding
    return "`" + text.replace("|", "\\|") + "`"


def markdown(heads, rows):
    rows = [[c if c else "" for c in row] for row in rows]
    keep = [i for i in range(len(heads)) if any(row[i] for row in rows)]
    lines = ["| " + " | ".join(heads[i] for i in keep) + " |", "|" + "---|" * len(keep)]
    return lines + [("| " + " | ".join(row[i] for i in keep) + " |").replace("|  |", "| |").replace("|  |", "| |")
                    for row in rows]


# --- Tables that say more than their rows ---------------------------------------------------------------------------

def print_functions(source, name, row_type, _):
    rows = []
    for row in source.rows(name, row_type):
        word = int(row["fid"], 16)
        units = source.rows(row["units"]) if isinstance(row["units"], str) else []
        shown = [f"{cell(u['name'], source)} × {cell(u['scale'], source)}"
                 + (f" + {cell(u['offset'], source)}" if cell(u["offset"], source) != "0" else "") for u in units]
        rows.append([row["fid"], f"{word & 0x7F}", f"{word >> 7 & 0xFF}", f"{word >> 15 & 0x1F}",
                     cell(units[0]["name"], source), cell(units[0]["scale"], source), cell(units[0]["offset"], source),
                     "; ".join(shown[1:]), cell(row["long_name"], source), cell(row["short_name"], source)])
    return markdown(["word", "quantity", "object", "position", "unit", "gain", "offset", "other units", "name",
                     "short"], rows)


def print_curves(source, name, row_type, _):
    rows = []
    for row in source.rows(name, row_type):
        points = [", ".join(cell(v, source) for _, v in p) for _, p in source.array(row["points"])[2]]
        rows.append([cell(row["number"], source), "rising" if row["rising"] == "true" else "falling",
                     " · ".join(f"({p})" for p in points)])
    return markdown(["number", "raw values", "points (raw, value), in the order in which they are walked"], rows)


def print_plain(source, name, row_type, wanted):
    rows = source.rows(name, row_type)
    if list(rows[0]) == ["value"]:
        return textwrap.wrap(", ".join(cell(r["value"], source) for r in rows) + ".", 118)
    fields = wanted or list(rows[0])
    heads = [{"fid": "word"}.get(h, h.replace("_", " ")) for h in fields]
    return markdown(heads, [[cell(row[field], source) for field in fields] for row in rows])


PRINTERS = {("kFunctions", "FunctionRow"): print_functions, ("kSensorCurves", None): print_curves}


# --- Pages ----------------------------------------------------------------------------------------------------------

SECTION = re.compile(r"(<!-- table (\w+)(?: (\w+))?(?:: ([\w, ]+))? -->\n).*?(<!-- end of table -->)", re.S)


def renewed(text, source):
    def section(m):
        printer = PRINTERS.get((m.group(2), m.group(3)), print_plain)
        fields = [field.strip() for field in (m.group(4) or "").split(",") if field.strip()]
        return m.group(1) + "\n" + "\n".join(printer(source, m.group(2), m.group(3), fields)) + "\n\n" + m.group(5)
    return SECTION.sub(section, text)


def main(arguments):
    source = Source(ROOT / "src")
    stale = []
    for page in sorted((ROOT / "docs").rglob("*.md")):
        text = page.read_text(encoding="utf-8")
        new = renewed(text, source)
        if new != text:
            stale.append(page.relative_to(ROOT).as_posix())
            if "--check" not in arguments:
                page.write_text(new, encoding="utf-8")
    if "--check" in arguments:
        for page in stale:
            print(f"{page} doesn't show the tables as they are in the source: run scripts/print_tables.py")
        return 1 if stale else 0
    print("\n".join(f"wrote {page}" for page in stale) or "all tables are as they are in the source")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
