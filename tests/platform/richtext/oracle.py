#!/usr/bin/env python3
"""Compares RTF files with what was saved from them, as an independent word processor reads both.

    oracle.py FOLDER

FOLDER holds pairs NAME.before.rtf and NAME.after.rtf. All are converted by LibreOffice (headless, with a
profile of its own) to flat OpenDocument in one run; styles are resolved to what each character looks like; the
texts are aligned and compared. Prints a line for each pair and the totals, and exits with status 1 when a
total is below its threshold, 77 when there is nothing to compare with, or so little that the few letters on which the
readers differ on purpose would decide.

Left out, because readers place them differently: notes, comments, text boxes, headers and footers.

Where single files stay below 99 %, the other program's reading has been looked at, and it differs on purpose:

    kota7-abiword, kota7-special-chars (font)  It has a second font for East Asian letters, here the one that \\dbch or
        its own default names; our documents have one font for all letters of a run, the one that \\f names.
    styles (italic)  It wants the words of a character style repeated with \\csN; we apply the style by itself too.
    paulhtremblay-toc, letter (font)  In the result of a field it forgets a font that a group in it states.
    codepages (text, font)  A pair of octets whose second one is an escaped backslash, and the bullet of a symbol
        font, are letters for us; it shows replacement characters.
    erdomke-test01 (text)  It shows both halves of \\upr.
    apache-testrtfhyperlinkandstyles (text)  It shows a quotation mark of code page 1252 as a replacement character.
    kept (text)  Deleted text is gone after saving, as is announced.
"""

import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

TEXT_THRESHOLD = 0.999
ATTRIBUTE_THRESHOLD = 0.99
SKIPPED = 77
FEWEST_CHARACTERS = 20000
BATCH_SECONDS = 600
SINGLE_SECONDS = 60

NAMESPACES = {
    "fo": "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0",
    "office": "urn:oasis:names:tc:opendocument:xmlns:office:1.0",
    "style": "urn:oasis:names:tc:opendocument:xmlns:style:1.0",
    "text": "urn:oasis:names:tc:opendocument:xmlns:text:1.0",
    "table": "urn:oasis:names:tc:opendocument:xmlns:table:1.0",
    "draw": "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0",
}


def name(prefixed):
    prefix, local = prefixed.split(":")
    return "{%s}%s" % (NAMESPACES[prefix], local)


LEFT_OUT = {name(tag) for tag in (
    "text:note", "office:annotation", "draw:frame", "draw:custom-shape", "draw:g", "text:tracked-changes",
    "text:sequence-decls", "text:bookmark-ref", "text:file-name")}

SIZES = {name("fo:font-size"), name("style:font-size-asian")}
ATTRIBUTES = ("bold", "italic", "underline", "strike", "position", "hidden", "colour", "font", "size",
              "alignment", "list", "table")


class Styles:
    """The styles of one document, looked up along their parents."""

    def __init__(self, root):
        self.styles = {}
        self.defaults = {}
        for style in root.iter(name("style:style")):
            self.styles[style.get(name("style:family")), style.get(name("style:name"))] = style
        for style in root.iter(name("style:default-style")):
            self.defaults[style.get(name("style:family"))] = style
        self.cache = {}

    def properties(self, family, style_name):
        """What a style and its parents say, without the default."""
        key = family, style_name
        if key in self.cache:
            return self.cache[key]
        chain = []
        seen = set()
        while style_name and style_name not in seen:
            seen.add(style_name)
            style = self.styles.get((family, style_name))
            if style is None:
                break
            chain.append(style)
            style_name = style.get(name("style:parent-style-name"))
        result = {}
        for style in reversed(chain):
            self.overlay(result, style)
        self.cache[key] = result
        return result

    def default(self, family):
        result = {}
        if family in self.defaults:
            self.overlay(result, self.defaults[family])
        return result

    @staticmethod
    def overlay(result, style):
        for kind in ("style:text-properties", "style:paragraph-properties"):
            for properties in style.findall(name(kind)):
                for key, value in properties.items():
                    if key in SIZES and value.endswith("%") and key in result:
                        value = "%gpt" % (points(result[key]) * float(value[:-1]) / 100)
                    result[key] = value


def points(size):
    match = re.match(r"([0-9.]+)", size or "")
    return float(match.group(1)) if match else 0.0


def is_asian(character):
    """True for the characters that have a font, size, weight and slant of their own kind."""
    code = ord(character)
    return 0x1100 <= code < 0x1200 or 0x2E80 <= code < 0xD800 or 0xF900 <= code < 0xFB00 \
        or 0xFE30 <= code < 0xFE70 or 0xFF00 <= code < 0xFFF0 or code >= 0x20000


def look(properties, asian):
    """What a reader sees of the resolved properties of a character."""
    if asian:
        properties = dict(properties)
        for key in ("style:font-name", "style:font-family", "style:font-size", "style:font-weight",
                    "style:font-style"):
            value = properties.get(name(key + "-asian"))
            if value is not None:
                properties[name(key if key == "style:font-name" else key.replace("style:", "fo:"))] = value
    def says(key, nothing="none"):
        return properties.get(name(key), nothing) != nothing

    automatic = properties.get(name("style:use-window-font-color")) == "true"
    colour = properties.get(name("fo:color"), "#000000")
    position = properties.get(name("style:text-position"), "0%").split()[0]
    if position not in ("super", "sub"):
        offset = float(position.rstrip("%") or 0)
        position = "super" if offset > 0 else "sub" if offset < 0 else ""
    font = properties.get(name("style:font-name")) or properties.get(name("fo:font-family")) or ""
    return (
        properties.get(name("fo:font-weight"), "normal") == "bold",
        properties.get(name("fo:font-style"), "normal") == "italic",
        says("style:text-underline-style"),
        says("style:text-line-through-style"),
        position,
        properties.get(name("text:display")) == "none",
        "#000000" if automatic else colour,
        re.sub(r"\d+$", "", font.strip("'\"")),
        round(points(properties.get(name("fo:font-size"), "12pt")) * 2),
    )


class Reader:
    """Collects the paragraphs of a document: a text, and for each character what it looks like."""

    def __init__(self, root):
        self.styles = Styles(root)
        self.looks = {}
        self.paragraphs = []
        body = root.find(name("office:body"))
        text = body.find(name("office:text")) if body is not None else None
        # Elements still to be read, with the lists and tables around them; documents may be deep.
        pending = [(text, 0, 0)] if text is not None else []
        while pending:
            element, lists, tables = pending.pop()
            if element.tag in LEFT_OUT:
                continue
            if element.tag in (name("text:p"), name("text:h")):
                self.paragraph(element, lists, tables)
                continue
            lists += element.tag == name("text:list")
            tables += element.tag == name("table:table")
            pending.extend((child, lists, tables) for child in reversed(element))

    def paragraph(self, element, lists, tables):
        style = element.get(name("text:style-name"))
        base = dict(self.styles.default("paragraph"))
        base.update(self.styles.properties("paragraph", style))
        alignment = {"left": "start", "right": "end"}.get(base.get(name("fo:text-align")),
                                                          base.get(name("fo:text-align"), "start"))
        around = (alignment, min(lists, 1), tables)
        characters = []
        self.inline(element, style, base, around, characters)
        self.paragraphs.append(characters)

    def inline(self, paragraph, style, base, around, characters):
        """Reads runs in their order; spans may be nested as deep as the document likes."""
        def seen(spans, asian):
            key = style, spans, asian
            if key not in self.looks:
                properties = dict(base)
                for span in spans:
                    properties.update(self.styles.properties("text", span))
                self.looks[key] = look(properties, asian)
            return self.looks[key] + around

        def add(text, spans):
            for character in text or "":
                characters.append((character, seen(spans, is_asian(character))))

        pending = [("open", paragraph, ())]
        while pending:
            what, item, spans = pending.pop()
            if what == "text":
                add(item, spans)
                continue
            tag = item.tag
            if tag == name("text:s"):
                add(" " * int(item.get(name("text:c"), "1")), spans)
            elif tag == name("text:tab"):
                add("\t", spans)
            elif tag == name("text:line-break"):
                add("\n", spans)
            elif tag not in LEFT_OUT:
                inner = spans
                if tag == name("text:span"):
                    inner = spans + (item.get(name("text:style-name")),)
                for child in reversed(item):
                    pending.append(("text", child.tail, inner))
                    pending.append(("open", child, inner))
                pending.append(("text", item.text, inner))


def visible(paragraphs):
    """The characters that can be compared: white space may be written in many ways."""
    return [[entry for entry in characters if not entry[0].isspace()] for characters in paragraphs]


def text_of(characters):
    return "".join(entry[0] for entry in characters)


def aligned(before, after):
    """Pairs of characters that correspond. Paragraphs first, then what is inside those that changed."""
    matcher = difflib.SequenceMatcher(None, [text_of(p) for p in before], [text_of(p) for p in after], False)
    for kind, i1, i2, j1, j2 in matcher.get_opcodes():
        if kind == "equal":
            for left, right in zip(before[i1:i2], after[j1:j2]):
                yield from zip(left, right)
        elif kind == "replace":
            left = [entry for p in before[i1:i2] for entry in p]
            right = [entry for p in after[j1:j2] for entry in p]
            inner = difflib.SequenceMatcher(None, text_of(left), text_of(right), len(left) > 5000)
            for a, b, size in inner.get_matching_blocks():
                yield from zip(left[a:a + size], right[b:b + size])


class Score:
    def __init__(self):
        self.characters = 0
        self.matched = 0
        self.agreed = [0] * len(ATTRIBUTES)

    def add(self, before, after):
        self.characters += sum(len(p) for p in before)
        for (_, left), (_, right) in aligned(before, after):
            self.matched += 1
            if left == right:
                continue
            for i, (one, other) in enumerate(zip(left, right)):
                if one != other:
                    self.agreed[i] -= 1

    def merge(self, other):
        self.characters += other.characters
        self.matched += other.matched
        self.agreed = [a + b for a, b in zip(self.agreed, other.agreed)]

    def text(self):
        return self.matched / self.characters if self.characters else 1.0

    def attribute(self, i):
        return (self.matched + self.agreed[i]) / self.matched if self.matched else 1.0

    def line(self, label):
        low = ["%s %.2f%%" % (attribute, 100 * self.attribute(i))
               for i, attribute in enumerate(ATTRIBUTES) if self.attribute(i) < 1]
        return "%-44s %8d characters, text %.3f%% %s" % (
            label, self.characters, 100 * self.text(), ", ".join(low))


def convert(files, folder, profile, seconds):
    command = ["soffice", "-env:UserInstallation=file://" + profile, "--headless", "--norestore",
               "--convert-to", "fodt", "--outdir", folder] + files
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, start_new_session=True)
    try:
        process.wait(timeout=seconds)
    except subprocess.TimeoutExpired:
        # The command is a script around the program itself.
        os.killpg(process.pid, 9)
        process.wait()


def converted(path, folder):
    return os.path.join(folder, os.path.splitext(os.path.basename(path))[0] + ".fodt")


def convert_all(files, folder, profile):
    """One run for all; a file that ends it is left out, the others are tried again alone."""
    convert(files, folder, profile, BATCH_SECONDS)
    missing = [path for path in files if not os.path.exists(converted(path, folder))]
    if 0 < len(missing) < len(files):
        for path in missing:
            convert([path], folder, profile, SINGLE_SECONDS)


def read(path, folder):
    target = converted(path, folder)
    if not os.path.exists(target):
        return None
    try:
        return visible(Reader(ElementTree.parse(target).getroot()).paragraphs)
    except ElementTree.ParseError:
        return None


def compare(pairs, folder):
    total = Score()
    for label, before_path, after_path in pairs:
        before = read(before_path, folder)
        after = read(after_path, folder)
        if before is None or not any(before):
            print("%-44s no verdict: the other program shows no text" % label)
            continue
        if after is None:
            after = []
        score = Score()
        score.add(before, after)
        print(score.line(label))
        total.merge(score)
    return total


def pairs_in(folder):
    ending = ".before.rtf"
    for entry in sorted(os.listdir(folder)):
        if entry.endswith(ending):
            label = entry[:-len(ending)]
            yield label, os.path.join(folder, entry), os.path.join(folder, label + ".after.rtf")


def verdict(total):
    if total.characters < FEWEST_CHARACTERS:
        print(total.line("all") + "too little for a verdict")
        return SKIPPED
    failed = []
    if total.text() < TEXT_THRESHOLD:
        failed.append("text")
    failed += [attribute for i, attribute in enumerate(ATTRIBUTES) if total.attribute(i) < ATTRIBUTE_THRESHOLD]
    print(total.line("all"))
    for i, attribute in enumerate(ATTRIBUTES):
        print("    %-10s %.3f%%" % (attribute, 100 * total.attribute(i)))
    if failed:
        print("below the threshold: " + ", ".join(failed))
    return 1 if failed else 0


def main():
    if len(sys.argv) != 2:
        print(__doc__)
        return 2
    pairs = list(pairs_in(sys.argv[1]))
    if not shutil.which("soffice") or not pairs:
        print("nothing to compare with")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="oracle-") as work:
        folder = os.path.join(work, "converted")
        os.mkdir(folder)
        files = [path for _, before, after in pairs for path in (before, after)]
        convert_all(files, folder, os.path.join(work, "profile"))
        return verdict(compare(pairs, folder))


if __name__ == "__main__":
    sys.exit(main())
