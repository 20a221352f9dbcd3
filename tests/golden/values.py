#!/usr/bin/env python3
"""An independent reference of the values' two forms: text (docs/text-form.md) and attribute log (docs/attribute-log.md), of the
types that docs/schema.md describes.

    values.py write DIR    write values.json into DIR
    values.py check DIR    fail unless values.json in DIR is what `write` writes, and its texts are Python
    values.py probe EXE DIR
                           let EXE (value-probe) read and write all of values.json, and compare

values.json holds, for each type, texts that are printed with the bytes of their records, texts that are read although
nobody prints them, texts that are refused and records that are refused, each with the message.
"""
import difflib
import itertools
import json
import math
import pathlib
import random
import re
import struct
import subprocess
import sys

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "schema.md"


def described(page):
    """What docs/schema.md says of each value type: enumerators by type; bits and name of the field of types that print as a
    number; fields of the others, with their types."""
    enums, scalars, structs = {}, {}, {}
    sections = dict(section.split("\n", 1) for section in page.split("\n## ")[1:])

    def rows(kind):
        return [[cell.strip(" `") for cell in line.split("|")[1:-1]] for line in sections[kind].splitlines() if re.match(r"\| \d", line)]

    def fields(kind):
        base = re.search(r"(?:Refines|Has the attributes of) `([^`]+)`", sections[kind])
        own = [(name, of if how.startswith("stored") else f"{of} by {how.split('`')[1]}") for _, name, of, how, _, shown in rows(kind) if shown == "2"]
        return (fields(base[1]) if base else []) + own

    for kind, text in sections.items():
        new = re.search(r"A new one prints as `(.*)`\.$", text, re.M)
        if text.lstrip().startswith("Enumeration."):
            enums[kind] = [name for _, name, *_ in rows(kind)]
        elif new and new[1].startswith("Value("):
            structs[kind] = [(name, "entries" if of == "U8 by U16" else of) for name, of in fields(kind)]
        elif new:
            (name, of), = fields(kind)
            scalars[kind] = (int(of[1:]), name)
    return enums, scalars, structs


ENUMS, SCALARS, STRUCTS = described(PAGE.read_text())
# In the order of registration, as the page has them: the numbers by which the fuzzers' seeds choose a type.
KINDS = sorted([*ENUMS, *SCALARS, *STRUCTS], key=re.findall(r"^## (.+)$", PAGE.read_text(), re.M).index)
RESOURCE = [("type", "Brixo::ResourceType"), ("id", "U64")]
# Bits of the builtin integers, and whether they are signed.
INTEGERS = {"U8": (8, False), "U16": (16, False), "U32": (32, False), "U64": (64, False), "int": (32, True)}
BLANKS = " \n\t\r"
S64, U64 = "long long", "unsigned long long"


class Refused(Exception):
    """What the reader says."""


# ------------------------------------------------------------------------------------------------ values and bytes

def default(kind):
    if kind in STRUCTS:
        return {name: default(of) for name, of in STRUCTS[kind]}
    return {"bool": False, "entries": {}}.get(kind, 0)


def holds_entries(kind):
    return kind == "entries" or any(holds_entries(of) for _, of in STRUCTS.get(kind, []))


def printed(kind, value):
    if kind in ENUMS:
        names = ENUMS[kind]
        short = kind.split("::")[-1]
        return "'" + (names[value] if 0 <= value < len(names) else f"{short}({value})") + "'"
    if kind in STRUCTS:
        body = ", ".join(f"'{name}': {printed(of, value[name])}" for name, of in STRUCTS[kind])
        return f"Value('{kind}', ** {{{body}}})"
    if kind == "bool":
        return "True" if value else "False"
    return "None" if kind == "entries" else str(value)


def backwards(number):
    return int(f"{number:032b}"[::-1], 2)


def fields(kind, value):
    """The bytes of a value's fields in the attribute log."""
    if kind in ENUMS:
        return struct.pack(">i", value)
    if kind in SCALARS:
        return value.to_bytes(SCALARS[kind][0] // 8, "big")
    if kind in STRUCTS:
        return b"".join(fields(of, value[name]) for name, of in STRUCTS[kind])
    if kind == "bool":
        return bytes([value])
    if kind in INTEGERS:
        bits, signed = INTEGERS[kind]
        return value.to_bytes(bits // 8, "big", signed=signed)
    entries = sorted(value.items(), key=lambda entry: backwards(entry[0]))
    return b"".join(struct.pack(">HB", *entry) for entry in entries) + bytes(4)


def record(payload):
    return struct.pack(">I", len(payload)) + payload


def logged(kind, value):
    return record(fields(kind, value))


# ------------------------------------------------------------------------------------------------ reading text

def excerpt(text):
    def shown(c):
        return {"\n": "\\n", "\r": "\\r", "\t": "\\t", '"': '\\"', "\\": "\\\\"}.get(
            c, c if " " <= c <= "~" else f"\\x{ord(c):02x}")
    return '"' + "".join(map(shown, text[:24])) + ('"...' if len(text) > 24 else '"')


class Reader:
    def __init__(self, text):
        self.text, self.at = text, 0

    def found(self, at):
        return "end of text" if at == len(self.text) else excerpt(self.text[at:])

    def blanks(self):
        while self.at < len(self.text) and self.text[self.at] in BLANKS:
            self.at += 1

    def need(self, literal, before=False, behind=False):
        if before:
            self.blanks()
        if not self.text.startswith(literal, self.at):
            raise Refused(f"expected {excerpt(literal)} at column {self.at}, found {self.found(self.at)}")
        self.at += len(literal)
        if behind:
            self.blanks()

    def cannot(self, kind):
        raise Refused(f"cannot convert {self.found(self.at)} at column {self.at} to {kind}")

    def word_ends(self, at):
        return at >= len(self.text) or not (self.text[at].isascii() and (self.text[at].isalnum() or self.text[at] == "_"))

    def integer(self, kind):
        self.blanks()
        start = at = self.at
        sign = self.text[at:at + 1]
        if sign == "+" or sign == "-" and kind == S64:
            at += 1
        base = 16 if self.text[at:at + 2] in ("0x", "0X") else 10
        at += 2 if base == 16 else 0
        digits = "0123456789abcdefABCDEF" if base == 16 else "0123456789"
        end = at
        while end < len(self.text) and self.text[end] in digits:
            end += 1
        if end == at:
            self.cannot(kind)
        number = int(self.text[at:end], base) * (-1 if sign == "-" else 1)
        low, high = (-2**63, 2**63) if kind == S64 else (0, 2**64)
        if not low <= number < high:
            raise Refused(f"number {excerpt(self.text[start:end])} at column {start} is out of range for {kind}")
        self.at = end
        return number

    def truth(self):
        self.blanks()
        for word in ("True", "true", "False", "false"):
            if self.text.startswith(word, self.at) and self.word_ends(self.at + len(word)):
                self.at += len(word)
                return word in ("True", "true")
        self.cannot("bool")

    def string(self):
        self.blanks()
        start, quote = self.at, self.text[self.at:self.at + 1]
        if quote not in ("'", '"'):
            self.cannot("String8")
        simple = dict(zip("\\'\"abfnrtv", "\\'\"\a\b\f\n\r\t\v"))
        at, text = start + 1, ""
        while True:
            if at >= len(self.text) or self.text[at] == "\\" and at + 1 == len(self.text):
                raise Refused(f"string without end at column {start}")
            if self.text[at] == quote:
                break
            if self.text[at] != "\\":
                text, at = text + self.text[at], at + 1
                continue
            letter, digits, length = self.text[at + 1], "", 2
            if letter == "x":
                digits, base, length = self.text[at + 2:at + 4], 16, 4
                good = len(digits) == 2 and all(c in "0123456789abcdefABCDEF" for c in digits)
            else:
                while len(digits) < 3 and self.text[at + 1 + len(digits):at + 2 + len(digits)] in tuple("01234567"):
                    digits += self.text[at + 1 + len(digits)]
                base, length = 8, 1 + len(digits)
                good = digits != "" and int(digits, 8) < 256
            if letter in simple:
                text, at = text + simple[letter], at + 2
            elif good:
                text, at = text + chr(int(digits, base)), at + length
            else:
                raise Refused(f"unknown escape in string at column {at}")
        self.at = at + 1
        return text

    def attribute(self, name, read):
        try:
            return read()
        except Refused as failure:
            said = str(failure)
            raise Refused(f"in attribute '{name}'" + (", " if said.startswith("in attribute '") else ": ") + said)

    def value(self, kind):
        if kind in SCALARS:
            bits, name = SCALARS[kind]
            return self.attribute(name, lambda: self.integer(U64 if bits == 64 else S64)) % 2**bits
        if kind in ENUMS:
            name = self.string()
            if name not in ENUMS[kind]:
                raise Refused(kind.split("::")[-1])
            return ENUMS[kind].index(name)
        if kind == "bool":
            return self.truth()
        if kind in INTEGERS:
            bits, signed = INTEGERS[kind]
            low = self.integer(U64 if bits == 64 else S64) % 2**bits
            return low - 2**bits if signed and low >= 2**(bits - 1) else low
        short, result = kind.split("::")[-1], default(kind)
        for literal in ("Value", "(", f"'{kind}'", ",", "**", "{"):
            self.need(literal, before=True)
        first = True
        while True:
            self.blanks()
            if self.at == len(self.text):
                raise Refused(f"premature end of value type {short}")
            if self.text[self.at] == "}":
                self.need("}", behind=True)
                self.need(")", behind=True)
                return result
            if not first:
                self.need(",", behind=True)
            name = self.string()
            self.need(":", before=True, behind=True)
            of = dict(STRUCTS[kind]).get(name)
            if of is None:
                raise Refused(f"{short} has no such attribute: {name}")
            result[name] = self.attribute(name, lambda: self.value(of))
            first = False


def read(kind, text):
    reader = Reader(text)
    value = reader.value(kind)
    if reader.at != len(text):
        raise Refused(f"junk at column {reader.at} deserializing {text}")
    return value


# ------------------------------------------------------------------------------------------------ reading records

def read_fields(kind, data, at):
    """The value and where it ends in the payload."""
    def take(size):
        if len(data) - at < size:
            raise Refused(f"a field of {size} bytes is read where {len(data) - at} are left")
        return data[at:at + size], at + size
    if kind in STRUCTS:
        value = {}
        for name, of in STRUCTS[kind]:
            value[name], at = read_fields(of, data, at)
        return value, at
    if kind == "entries":
        left = len(data) - at
        if left < 4 or (left - 4) % 3 != 0:
            raise Refused(f"its last {left} bytes are no entries of 3 bytes and an end mark")
        value = {}
        for place in range(at, len(data) - 4, 3):
            index, byte = struct.unpack_from(">HB", data, place)
            value[index] = byte
        if data[-4:] != bytes(4):
            raise Refused("the end mark of a collection is not 0")
        return value, len(data)
    bits, signed = (8, False) if kind == "bool" else (32, True) if kind in ENUMS else INTEGERS.get(kind) or (SCALARS[kind][0], False)
    taken, at = take(bits // 8)
    number = int.from_bytes(taken, "big", signed=signed)
    if kind == "bool" and number > 1:
        raise Refused(f"{number} is no truth value")
    return (bool(number) if kind == "bool" else number), at


def refused_record(kind, log):
    """The message for a log whose first record cannot be read."""
    if len(log) == 0:
        return "attribute log ends at byte 0: no record follows"
    length = int.from_bytes(log[:4], "big")
    if len(log) >= 4 and length > 16 << 20:
        return f"attribute log record at byte 0 is malformed: its length of {length} is more than {16 << 20}"
    if len(log) < 4 or len(log) - 4 < length:
        return f"attribute log ends at byte {len(log)}, inside the record at byte 0"
    data = log[4:4 + length]
    try:
        _, end = read_fields(kind, data, 0)
        why = f"{len(data) - end} bytes are left over" if end != len(data) else None
    except Refused as failure:
        why = str(failure)
    return f"attribute log record at byte 0 is malformed: {why}" if why else None


# ------------------------------------------------------------------------------------------------ vectors

def samples(kind, chance):
    if kind in ENUMS:
        return list(range(len(ENUMS[kind]))) + [len(ENUMS[kind]), 9, -1, 2**31 - 1, -2**31]
    if kind in SCALARS:
        bits = SCALARS[kind][0]
        return sorted({0, 1, 9, 10, 62, 63, 64, 127, 2**bits - 1, 2**(bits - 1), chance.getrandbits(bits)} &
                      set(range(min(2**bits, 256))) | {2**bits - 1, 2**(bits - 1), chance.getrandbits(bits)})
    if kind in INTEGERS:
        bits, signed = INTEGERS[kind]
        few = {0, 7, 2**(bits // 2) - 1, 2**(bits // 2), 2**(bits - 1) - signed, 2**(bits - signed) - 1, -signed, chance.getrandbits(bits - 1)}
        return sorted(few)
    if kind == "bool":
        return [False, True]
    if kind == "entries":
        return [{}, {0: 0}, {1: 255}, {n: n % 251 for n in range(40)}, {65535: 1, 32768: 2, 1: 3, 256: 4}]
    of = {name: samples(part, chance) for name, part in STRUCTS[kind]}
    if math.prod(map(len, of.values())) <= 64:
        return [dict(zip(of, values)) for values in itertools.product(*of.values())]
    return [{name: values[n % len(values)] for name, values in of.items()} for n in range(max(map(len, of.values())))]


def texts_of_integers(kind, name):
    good = ["0", "7", "+7", "007", "0x10", "0XfF", "+0x1", " \t\r\n5", "18446744073709551615" if kind == U64 else "9223372036854775807",
            "-1" if kind == S64 else "0xFFFFFFFFFFFFFFFF", "4294967303", "65543", "263"]
    bad = ["", " ", "x", "-", "+", "0x", "0xg", "- 1", "1 ", "1.5", "1e3", "12a", "'1'", "None", "++1",
           "18446744073709551616", "99999999999999999999999999999999", "\x80\xff", '"', "\\", "\n\tabc\x07"]
    return good + bad + (["-0x8000000000000000", "-9223372036854775808", "-9223372036854775809", "9223372036854775808"]
                         if kind == S64 else ["-1", "-0"])


def texts(kind):
    short = kind.split("::")[-1]
    if kind in SCALARS:
        return texts_of_integers(U64 if SCALARS[kind][0] == 64 else S64, SCALARS[kind][1])
    if kind in ENUMS:
        name = ENUMS[kind][1]
        return [f'"{name}"', f"  '{name}'", f"'{name.upper()}'", f"'{name}", f"'{name}' ", f"'{name}'x", name, "''", "", "1",
                f"'{short}(1)'", "'\\x41'", "'\\101'", "'\\'", "'\\q'", "'\\x4'", "'\\400'", f"'\\x{ord(name[0]):02x}{name[1:]}'",
                f'"\\{ord(name[0]):o}{name[1:]}"', "'\\n\\r\\t\\a\\b\\f\\v\\\\\\'\\\"'", "b'x'"]
    first, of = STRUCTS[kind][0]
    sample = printed(of, default(of))
    whole = f"Value('{kind}', ** {{'{first}': {sample}}})"
    some = [
        whole, f"Value('{kind}', ** {{}})", f"  Value  (  '{kind}'  ,  **  {{  '{first}'  :  {sample}  }}  )  ",
        f"Value('{kind}',**{{'{first}':{sample}}})", f"Value('{kind}', ** {{\"{first}\": {sample}}})",
        f"Value('{kind}', ** {{'{first}': {sample}, '{first}': {sample}}})", whole + "xyz", whole + " x", whole[:-1],
        whole[:-2], whole[:-3], whole.replace("**", "*"), whole.replace("{", "").replace("}", ""), "", "Value", "value" + whole[5:],
        f"Value('{short}', ** {{}})", f"Value(\"{kind}\", ** {{}})", f"Value('{kind}', ** {{,}})",
        f"Value('{kind}', ** {{'{first}': {sample},}})", f"Value('{kind}', ** {{'{first}' {sample}}})",
        f"Value('{kind}', ** {{'{first.upper()}': {sample}}})", f"Value('{kind}', ** {{'hash': 1}})", f"Value('{kind}', ** {{{first}: {sample}}})",
        f"Value('{kind}', ** {{'{first}': }})", f"Value('{kind}', ** {{'{first}': nonsense}})", f"Value('{kind}', ** {{'{first}",
        f"Value('{kind}', ** {{'{first}': {sample}", f"Value('{kind}', ** {{'{first}': {sample} ", whole.replace(" **", "\n\t**"),
    ]
    some += [whole[:n] for n in range(0, len(whole), 7)]
    if STRUCTS[kind] == RESOURCE:
        some += [f"Value('{kind}', ** {{'id': {n}}})" for n in texts_of_integers(U64, "id")]
        some += [f"Value('{kind}', ** {{'id': 5, 'type': 'registerResource'}})", f"Value('{kind}', ** {{'type': 'tableresource'}})",
                 f"Value('{kind}', ** {{'id': 1, 'id': 2, 'type': 'tableResource', 'type': 'invalidResource'}})"]
    if of == "bool":
        some += [f"Value('{kind}', ** {{'{first}': {word}}})" for word in
                 ("True", "False", "true", "false", "TRUE", "Truex", "True_", "1", "0", "None", "'True'")]
    return some


def vectors():
    """The contents of values.json."""
    result = {}
    for kind in KINDS:
        chance = random.Random(f"20261121 {kind}")  # its own: a new type leaves the others' vectors as they are
        of_kind = result[kind] = {"printed": [], "read": [], "refused": [], "refused records": []}
        values = samples(kind, chance)
        for value in values:
            of_kind["printed"].append([printed(kind, value), logged(kind, value).hex()])
        seen = set()
        for text in texts(kind):
            if text in seen:
                continue
            seen.add(text)
            try:
                value = read(kind, text)
                of_kind["read"].append([text, printed(kind, value), logged(kind, value).hex()])
            except Refused as failure:
                of_kind["refused"].append([text, str(failure)])
        log = logged(kind, values[-1])
        broken = [log[:n] for n in range(0, len(log), max(1, len(log) // 8))] + [
            record(log[4:-1]), record(log[4:] + b"\0"), record(b""), bytes.fromhex("01000001") + log[4:],
            record(b"\x02" + log[5:]), record(log[4:-1] + b"\x01")]
        for one in broken:
            message = refused_record(kind, one)
            if message is not None and [one.hex(), message] not in of_kind["refused records"]:
                of_kind["refused records"].append([one.hex(), message])
    return result


def as_file():
    return json.dumps(vectors(), indent=1) + "\n"


class Value:
    """What a printed text says when Python reads it."""

    def __init__(self, kind, **attributes):
        assert kind in STRUCTS and list(attributes) == [name for name, _ in STRUCTS[kind]], (kind, attributes)


def check(folder):
    file = folder / "values.json"
    made = vectors()
    found = json.loads(file.read_text())
    wrong = sorted(kind for kind in {*made, *found} if made.get(kind) != found.get(kind))
    if not wrong and file.read_text() != as_file():
        wrong = ["the order of the types"]
    count = 0
    for kind, of_kind in found.items():
        for text, _ in of_kind["printed"]:
            eval(text, {"Value": Value})  # raises if it is no Python
            count += 1
    for kind in wrong:
        print(f"values.json: {kind} is not as made here; the target describe-types writes it")
    print(f"values.json: {count} texts are Python")
    return len(wrong) > 0


def probe(executable, folder):
    asked, expected = [], []
    known = subprocess.run([executable, "--types"], capture_output=True, text=True, check=True).stdout.split()
    vectors_of = list(json.loads((folder / "values.json").read_text()))
    if known != vectors_of:
        for line in difflib.unified_diff(known, vectors_of, "the library", "values.json", lineterm=""):
            print(line)
        return 1

    def ask(what, kind, given, *answer):
        asked.append(f"{what} {kind} {given.encode('latin-1').hex() if what == 'text' else given}")
        expected.append(" ".join([answer[0], *(part.encode("latin-1").hex() if part is not None else "" for part in answer[1:])]))

    for kind, of_kind in json.loads((folder / "values.json").read_text()).items():
        readable = not holds_entries(kind)
        for text, log in of_kind["printed"]:
            ask("log", kind, log, "value", text, log)
            if readable and "(" not in text[6:]:
                ask("text", kind, text, "value", text, log)
        for text, again, log in of_kind["read"]:
            ask("text", kind, text, "value", again, log)
        for text, message in of_kind["refused"]:
            ask("text", kind, text, "refused", message)
        for log, message in of_kind["refused records"]:
            ask("log", kind, log, "refused", message)
    answered = subprocess.run([executable], input="".join(line + "\n" for line in asked), capture_output=True, text=True,
                              check=True).stdout.splitlines()
    wrong = 0
    for question, answer, right in zip(asked, answered, expected):
        if answer.split()[:1] == ["value"]:  # a record's bytes are compared as they are
            parts = answer.split(" ")
            answer = " ".join([parts[0], parts[1], parts[2].encode("latin-1").hex()])
        if answer != right:
            wrong += 1
            if wrong <= 10:
                what, kind, given = question.split(" ")
                show = lambda line: [line.split(" ")[0], *(bytes.fromhex(part) for part in line.split(" ")[1:])]
                print(f"{what} {kind} {bytes.fromhex(given)!r}:\n    says {show(answer)}\n    not  {show(right)}")
    if len(answered) != len(asked):
        print(f"{len(answered)} answers to {len(asked)} questions")
    print(f"{len(asked)} vectors, {wrong} wrong")
    return wrong != 0 or len(answered) != len(asked)


def main(arguments):
    command, *rest = arguments or [""]
    paths = [pathlib.Path(path) for path in rest]
    if command == "write" and len(paths) == 1:
        (paths[0] / "values.json").write_text(as_file())
        return 0
    if command == "check" and len(paths) == 1:
        return check(paths[0])
    if command == "probe" and len(paths) == 2:
        return probe(*paths)
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
