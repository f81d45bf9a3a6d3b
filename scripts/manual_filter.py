#!/usr/bin/env python3
"""manual_filter.py FILE...: makes of headers and pages what Doxygen is to read, in their places.

The headers' comments have no marks.  What docs/contributing.md says of them is marked here:

- the file's first line is the file's comment, and so is what stands before "namespace tarvcore";
- a comment before declarations is that of all of them, up to the next comment or empty line;
- a comment before an empty line is a remark: it belongs to the class, or the file, that it is in;
- a comment behind a declaration is that declaration's;
- what is indented in a comment is code or a table;
- names of docs/names.md that have no comment mean what is said there.

What is left has no comment, and Doxygen says so.  Internal namespaces are left out, but for classes
whose members users call.

In a page, links to other pages become Doxygen's, and those to files that the manual does not have
plain text.
"""
import pathlib
import re
import sys

import check_layers

INTERNAL_CLASSES = {"TimeConstants", "TimeBase", "BarrierBase", "AnyFuture", "AnyResult",
                    "ResultControlIgnoredBase", "ResultControlDirectIfSynchronousBase",
                    "ResultControlFutureRefBase"}

COMMENT = re.compile(r"( *)//(?: (.*))?$")
TRAILING = re.compile(r"(.*\S)  +// (.*)$")
ACCESS = re.compile(r" *(public|protected|private):$")
TEMPLATE = r"(?:template <.*?> (?=[a-z\[]))?(?:requires .*? (?=class|struct))?"
SCOPE = re.compile(TEMPLATE + r"(namespace|class|struct|union|enum class|enum)\b"
                   r"(?: TARVCORE_[A-Z_]+)?(?: ([\w:]+))?(<[^()]*?>+)?[^()]*\{$")
FORWARD = re.compile(TEMPLATE + r"(?:friend )?(?:class|struct) [\w:]+;")
UNNAMED = re.compile(r"static_assert|template <>|friend class|template <class T> friend class|using \w+::\w+;"
                     r"|using (?:[\w:<>]+::)?(\w+)::\1;")
QUALIFIED = re.compile(r"[^(={]*\b\w+(?:<[^()]*>)?::(?:\w+|operator\S+)\(")
CODE = re.compile(r"[;{]$|; +//|^ *//|\) \.\.\.$")
FEATURES = "TARVCORE_CPU_OPTION_FLAGS("
FEATURE = re.compile(r'ROW\((\w+), (\w+), (\w+), (\w+), (\d+), "(.*)"\)')
LITERAL = re.compile(r'"(?:[^"\\]|\\.)*"|(?<!\d)\'(?:[^\'\\]|\\.)*\'')


def escaped(text):
    """A comment's text, of which nothing outside of backquotes is a command."""
    parts = text.split("`")
    parts[::2] = [re.sub(r"([\\@<>#])", r"\\\1", part) for part in parts[::2]]
    return "`".join(parts)


def marked_up(text):
    """The lines of a comment, with the code and the tables in it as such."""
    lines, begin = [escaped(line) for line in text], 0
    while begin < len(text):
        if not text[begin].startswith("    ") or begin == 0 or text[begin - 1]:
            begin += 1
            continue
        end = begin
        while end < len(text) and (text[end].startswith("    ") or not text[end]):
            end += 1
        while not text[end - 1]:
            end -= 1
        is_code = any(CODE.search(line) for line in text[begin:end])
        lines[begin - 1] = "@code{.cpp}" if is_code else "@verbatim"
        lines[begin:end] = [line[4:] for line in text[begin:end]]
        lines[end - 1] += " @endcode" if is_code else "\n@endverbatim"
        begin = end
    return "\n".join(lines)


def in_one_line(text):
    """The same without code and tables."""
    paragraphs = " ".join(line or "\n" for line in text if not line.startswith("    "))
    return " <p> ".join(escaped(part.strip()) for part in paragraphs.split("\n") if part.strip())


def features():
    """The rows of the table of processor features: name and description."""
    table = check_layers.LIBRARY / "hardware" / "cpu_option_flags.h"
    return [(row[1], escaped(row[6])) for row in FEATURE.finditer(table.read_text())]


def common_names():
    """What names mean wherever they have no comment, from the tables of docs/names.md."""
    meanings = {}
    for line in (check_layers.ROOT / "docs" / "names.md").read_text().splitlines():
        if match := re.match(r"\| (`.*`) \| (.*) \|$", line):
            meanings.update((name, match[2]) for name in re.findall("`(.*?)`", match[1]))
    return meanings


def declared_name(text):
    """The name that a declaration gives to something, and what follows it."""
    text = re.sub(TEMPLATE + r"((\[\[.*?\]\]|requires .*?\)|TARVCORE_[A-Z]+) )*", "", text, 1)
    if match := re.match(r"using (\w+) =", text):
        return match[1], ""
    if match := re.search(r"(operator ?(?:\(\)|[^\s\w(]+|[\w:&<> ]+)|~?\w+)(\(.*)", text):
        return match[1], match[2]
    return re.sub(r"(\[.*\])?( =.*|\{.*)?[;,]$", "", text).split()[-1], ""


class Filter:
    def __init__(self, path, meanings):
        self.path = path.relative_to(check_layers.ROOT)
        self.lines = path.read_text().splitlines()
        self.out = list(self.lines)  # at each line's place what is printed for it, or None
        self.at = 0
        self.access = "public"
        self.meanings = meanings
        self.primaries = {}  # comments of class templates whose specialisation has the members
        self.functions = set()
        self.file_remarks = []
        self.has_internal = False

    @property
    def line(self):
        return self.lines[self.at] if self.at < len(self.lines) else None

    def replace(self, begin, text):
        """Prints that for the lines from there on."""
        self.out[begin:self.at] = [text] + [None] * (self.at - begin - 1)

    def run(self, layer):
        title = self.comment()
        if not title or self.line != "#pragma once":
            sys.exit(f"{self.path}:1: error: no comment before #pragma once")
        self.replace(0, "")
        self.group = f"/** @addtogroup api_{layer} */ /**@{{*/"
        self.scope("file", "", "")
        about = "\n\n".join(marked_up(text) for text in [title, *self.file_remarks])
        self.out[0] = f"/** @file\n@ingroup api_{layer}\n{about} */"
        return "\n".join(line for line in self.out if line is not None) + "\n"

    def comment(self):
        text = []
        while self.line is not None and (match := COMMENT.match(self.line)):
            text.append(match[2] or "")
            self.at += 1
        return text

    def scope(self, kind, name, indent):
        """Goes through declarations, up to the end of the scope that they are in."""
        end = (indent if kind == "namespace" else indent[4:]) + "}"
        while self.line is not None and (kind == "file" or not self.line.startswith(end)):
            begin = self.at
            if access := ACCESS.match(self.line):
                self.access = access[1]
                self.at += 1
            elif not self.line:
                self.at += 1
            elif self.line.startswith("#"):
                self.preprocessor()
            elif COMMENT.match(self.line):
                text = self.comment()
                if text[0].startswith(("clang-format", "NOLINT")):
                    continue
                if self.line and self.line != "namespace tarvcore {":
                    self.replace(begin, f"/** {marked_up(text)} */")
                    self.declarations(kind, name, indent, text)
                elif kind in ("file", "namespace"):
                    self.replace(begin, "")
                    self.file_remarks.append(text)
                else:
                    self.replace(begin, f"/** @class {name}\n@details {marked_up(text)} */")
            else:
                self.declarations(kind, name, indent, None)

    def preprocessor(self):
        begin, words = self.at, re.split(r"[ (]", self.line)
        while self.line.endswith("\\"):
            self.at += 1
        self.at += 1
        is_local = len(words) > 1 and f"#undef {words[1]}" in self.lines
        if words[0] == "#include" or is_local:
            self.replace(begin, "")

    def declarations(self, kind, name, indent, text):
        """A run of them, to which the comment belongs."""
        first, names = self.at, set()
        while self.line and not COMMENT.match(self.line) and not self.line.startswith("#") and \
                not ACCESS.match(self.line) and self.line.startswith(indent) and \
                not self.line.startswith(indent + "}"):
            if FEATURES in self.line:
                form = "    {},  ///< {}" if kind == "enum" else "    bool {}() const;  ///< {}"
                self.out[self.at] = "\n".join(form.format(*row) for row in features())
                self.at += 1
                continue
            begin = self.at
            declaration = self.declaration(kind, name, indent, text if begin == first else None)
            if declaration and self.access != "private":
                is_first = begin == first and text is not None
                self.document(begin, kind, name, declaration, text, is_first, names)

    def document(self, begin, kind, name, declaration, text, is_first, names):
        """Gives a declaration the comment that it has none of."""
        own_name, rest = declared_name(declaration)
        if UNNAMED.match(declaration) or (kind == "namespace" and (
                name.endswith("impl") or QUALIFIED.match(declaration))):
            return self.replace(begin, "")
        if kind == "enum" or FORWARD.match(declaration) or "///<" in (self.out[begin] or ""):
            return None
        if kind == "namespace" and text is None and rest.endswith("}") and \
                own_name in self.functions:
            return self.replace(begin, "")  # a template's definition, declared and described before
        self.functions.add(own_name)
        meaning = self.common_meaning(name, own_name, rest, declaration)
        if is_first:
            names.add(own_name)
            return None
        if own_name in names:
            meaning = "The same with these arguments."
        elif not meaning and text:
            meaning = in_one_line(text)
            names.add(own_name)
        if meaning:
            self.out[begin] = f"/** {meaning} */ {self.out[begin]}"
        return None

    def common_meaning(self, scope, own_name, rest, declaration):
        """What docs/names.md says of such a declaration."""
        if re.search(r"= delete;$", declaration):
            return self.meanings["= delete"]
        class_name, meaning = scope.split("::")[-1], None
        if own_name.lstrip("~") == class_name:
            arguments = re.sub(r"(?<=[&>])( \w+)?\).*|(?<=\()\).*", ")", rest)
            meaning = self.meanings.get((own_name + arguments).replace(class_name, "X"))
        elif own_name in self.meanings:
            meaning = self.meanings[own_name]
        elif re.search(rf"\b{re.escape(own_name)}\(\) const (noexcept )?"
                       rf"\{{ return \*?{re.escape(own_name)}_; \}}$", declaration):
            meaning = self.meanings["name()"]
        return meaning and meaning.replace("X()", f"{class_name}()")

    def declaration(self, kind, name, indent, comment):
        """Goes behind one of them: its text, or nothing of one that is a scope itself."""
        begin, text, depth = self.at, "", 0
        while True:
            if match := TRAILING.match(self.line):
                self.out[self.at] = f"{match[1]}  ///< {escaped(match[2])}"
            code = re.sub(r" *//.*", "", LITERAL.sub('""', self.line)).strip()
            text = f"{text} {code}".strip()
            self.at += 1
            if depth == 0 and (match := SCOPE.fullmatch(text)):
                self.inner_scope(match, name, indent, begin, comment)
                return ""
            depth += sum(code.count(c) for c in "({[") - sum(code.count(c) for c in ")}]")
            if depth == 0 and code.endswith((";", "}", ",") if kind == "enum" else (";", "}")):
                break
        while self.line and re.match(rf"{indent} +// ", self.line):
            self.out[self.at] = re.sub("// (.*)", lambda m: f"///< {escaped(m[1])}", self.line)
            self.at += 1
        if FORWARD.match(text) and text.startswith("template"):
            if comment:
                self.primaries[text.split()[-1].rstrip(";")] = comment
            self.replace(begin - len(comment or ""), "")
        return text

    def inner_scope(self, match, outer, indent, begin, comment):
        kind, own_name, arguments = match[1].split()[0], match[2] or "", match[3] or ""
        name = f"{outer}::{own_name}".removeprefix("::")
        opening = self.at - 1
        if "Values<Value...>" in arguments:  # to users it is the template
            head = "\n".join(self.lines[begin:self.at]).replace(own_name + arguments, own_name)
            primary = self.primaries.get(own_name)
            self.replace(begin, (f"/** {marked_up(primary)} */\n" if primary else "") + head)
        access, self.access = self.access, "private" if kind == "class" else "public"
        self.scope(kind, name, indent if kind == "namespace" else indent + "    ")
        self.access = access
        if not (self.line or "").startswith(indent + "}"):
            sys.exit(f"{self.path}:{self.at + 1}: error: the end of {name} is not here")
        if kind == "namespace" and not outer:
            self.out[opening] += " " + self.group
            self.out[self.at] = "/**@}*/ " + self.out[self.at]
        self.at += 1
        in_impl = outer.endswith("impl") and kind != "namespace"
        self.has_internal |= own_name in INTERNAL_CLASSES
        if own_name.startswith("std::") or (in_impl and own_name not in INTERNAL_CLASSES) or \
                (own_name == "impl" and not self.has_internal):
            self.replace(begin - len(comment or ""), "")


def page(path, layers):
    """A page, with a label of its own: Doxygen's are made of paths, and not of all paths."""
    label = "mainpage" if path.stem == "index" else f"page_{path.stem}"
    text = re.sub(r"^# .*", rf"\g<0> {{#{label}}}", path.read_text(), 1)
    text = re.sub(r"\]\((\w+)\.md(#[\w-]*)?\)", r"](@ref page_\1)", text)
    text = text.replace("@ref page_index)", "@ref index)")
    text = re.sub(r"(?<!!)\[([^\]]*)\]\(\.\./[^)]*\)", r"\1", text)
    if path.stem in layers:
        text += f"\nAll headers, classes and functions: [{path.stem}](@ref api_{path.stem}).\n"
    return text


def main():
    rank, names = check_layers.read_layers()
    meanings = common_names()
    for path in (pathlib.Path(name).resolve() for name in sys.argv[1:]):
        if path.suffix == ".md":
            path.write_text(page(path, names))
        elif path.is_relative_to(check_layers.LIBRARY):
            topic = str(path.relative_to(check_layers.LIBRARY).with_suffix(""))
            path.write_text(Filter(path, meanings).run(names[rank[topic]]))
        else:
            path.write_text(Filter(path, meanings).run(path.parent.name))


if __name__ == "__main__":
    main()
