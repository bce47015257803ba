#!/usr/bin/env python3
"""Writes the table of what the classes of one header can do, in C++.

usage: accessors.py ROOT HEADER OUTPUT

Only names are read here: the classes of the header, and the public operations of its classes and of those of the headers
that it includes. What each name is - parameters, result, inherited or not - is left to the compiler, which fails for an
operation that it cannot reach or whose parameters nobody knows how to make up (Accessors.h). A source instead of a header
contributes the tables that stand in it without a class of their own: `table<int, 10, 1>`.
"""

import re
import sys
from pathlib import Path

ROOMS = {"datablock", "rfboard", "tables", "records", "modules", "text"}
# What every block has is entered once, with the class that has it.
BASES = {"datablock/HwDatablock.h", "datablock/HwObject.h"}
# Getters that go by another name than their setters.
OTHER_GETTERS = {
    "setBlockId": ["getId"],
    "setCount": ["getNumberOfPmax", "getNumberOfFrequency"],
    "setCalibDatablock": ["getCalibDataBlock", "getAduCalibDataBlock"],
    "setEndBlockID": ["getId"],
    "setNumberOfcompAmp": ["getNumberOfCompAmp"],
    "setNumberOfcompAmpRear": ["getNumberOfCompAmpRear"],
    "setNumberOfcompFreq": ["getNumberOfCompFreq"],
}
NO_NAME = {"static_assert", "decltype", "requires", "explicit", "alignas", "noexcept", "sizeof", "if", "for", "return", "void", "bool"}


def bare(text):
    """Without comments, literals and preprocessor lines."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"'(?:\\.|[^'\\\n])'", "0", text)
    text = re.sub(r'"(?:\\.|[^"\\\n])*"', '""', text)
    return re.sub(r"^[ \t]*#[^\n]*", "", text, flags=re.M)


def without_templates(head):
    """A declaration without its template parameters, and whether it had some."""
    match = re.match(r"\s*template\s*<", head)
    if not match:
        return head.strip(), False
    depth, at = 1, match.end()
    while depth and at < len(head):
        depth += {"<": 1, ">": -1}.get(head[at], 0)
        at += 1
    return re.sub(r"^requires\s*\([^)]*\)\s*", "", head[at:].strip()), True


class Scope:
    def __init__(self, kind, name="", access=""):
        self.kind, self.name, self.access = kind, name, access


def scope_of(head, classes):
    """What the brace behind a declaration opens; adds a class that is no template, and not inside another."""
    head, is_template = without_templates(head)
    if match := re.match(r"(?:inline\s+)?namespace\s*([\w:]*)", head):
        return Scope("namespace", match.group(1))
    match = re.match(r"(class|struct)\s+(?:\w+_EXPORT\s+)?(\w+)(?![\w<])", head)
    if not match:
        return Scope("other")
    if not is_template:
        classes.append(match.group(2))
    return Scope("class", match.group(2), "public" if match.group(1) == "struct" else "private")


def read(text):
    """The classes that are defined in a header, and the names of the public operations of all its classes."""
    classes, names = [], {}
    scopes, head, parentheses = [Scope("namespace")], "", 0
    for character in bare(text):
        top = scopes[-1]
        if top.kind == "other":
            if character == "{":
                scopes.append(Scope("other"))
            elif character == "}":
                scopes.pop()
                head = head if parentheses else ""
            continue
        if character == "(":
            # The first name before a parenthesis is the declared one; what follows it are initialisers.
            match = re.search(r"(~?\w+)\s*$", head)
            if not parentheses and not re.search(r"=|\boperator\b|\n\(", head) and match and match.group(1) not in NO_NAME:
                if top.kind == "class" and top.access == "public" and match.group(1).strip("~") != top.name:
                    names[match.group(1)] = None
                head += "\n("
            parentheses += 1
        elif character == ")":
            parentheses -= 1
        elif character == "{":
            inner = [scope.name for scope in scopes[1:]] != ["Travik"]
            scopes.append(Scope("other") if parentheses else scope_of(head, [] if inner else classes))
            head = head if parentheses else ""
            continue
        elif character == "}":
            scopes.pop()
            head = ""
            continue
        elif character == ";" and not parentheses:
            head = ""
            continue
        elif character == ":" and re.fullmatch(r"\s*(public|protected|private)\s*", head):
            top.access = head.strip()
            head = ""
            continue
        head += character
    return classes, list(names)


def includes(text):
    """The headers of the rooms that hold blocks."""
    for header in re.findall(r"^#include <travik/([\w/]+\.h)>", text, flags=re.M):
        if header.split("/")[0] in ROOMS and not header.endswith("/Export.h"):
            yield header


def names_of(travik, header, seen):
    """The operations of a header and of what it includes, its own last."""
    if header in seen:
        return {}
    seen.add(header)
    text = (travik / header).read_text(encoding="utf-8")
    found = {}
    for other in includes(text):
        found.update(names_of(travik, other, seen))
    found.update(dict.fromkeys(read(text)[1]))
    return found


def bare_tables(text):
    """The tables of the catalogue that have no class."""
    text = bare(text)
    tables = {f"HwDatablockTemplate<MiscData<{t}>, {t.split(',')[0]}, double, {t.split(',', 1)[1].strip()}>"
              for t in re.findall(r"\btable<([^<>]+)>\(\{", text)}
    for template, stored, size in re.findall(r"\bbareTable<(\w+), ([\w ]+), ([^<>]+)>\(\s*\{", text):
        tables.add(f"{template}<MiscData<{stored}, {size}>, {stored}, double, {size}>")
    return sorted(tables)


def pairs(names):
    for name in names:
        if name.startswith("set"):
            for getter in ["get" + name[3:], *OTHER_GETTERS.get(name, [])]:
                if getter in names:
                    yield name, getter


def write(travik, header):
    text = (travik / header).read_text(encoding="utf-8")
    if header.endswith(".h"):
        classes, own = read(text)[0], [header]
    else:
        classes, own = bare_tables(text), [h for h in includes(text) if h == "text/TableTemplates.h"] or ["text/TableTemplates.h"]
    if not classes:
        return f"// travik/{header} defines no class that is no template.\n"
    seen, found = set(), {}
    if header not in BASES:
        seen.update(BASES)
    for each in own:
        found.update(names_of(travik, each, seen))
    names = sorted(found)
    lines = [f"// Made of travik/{header} by accessors.py."]
    lines += [f"#include <travik/{each}>" for each in own]
    # The file's own, as several are compiled in one piece.
    space = Path(header).stem + "Classes"
    lines += ["", '#include "Accessors.h"', "", f"namespace {space} {{", "", "using namespace Travik;", "using namespace Fuzz;", ""]
    lines += [f"TRAVIK_OPERATION({name})" for name in names]
    lines += ["", f"using Operations = OperationList<{', '.join('Operation_' + name for name in names)}>;"]
    couples = ", ".join(f"CoupleOf<Operation_{a}, Operation_{b}>" for a, b in pairs(names))
    lines += [f"using Couples = CoupleList<{couples}>;", ""]
    for number, name in enumerate(classes):
        lines.append(f'const bool added{number} = addClass<{name}, Operations, Couples>("{name}");')
    lines += ["", f"}} // namespace {space}", ""]
    return "\n".join(lines)


def main():
    root, header, output = Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3])
    written = write(root / "travik", header)
    # What did not change is not compiled again.
    if not output.exists() or output.read_text(encoding="utf-8") != written:
        output.parent.mkdir(parents=True, exist_ok=True)
        output.write_text(written, encoding="utf-8")


main()
