#!/usr/bin/env python3
"""An independent reader and writer of trace files (docs/trace-file.md).

    ferrolog.py write DIR          write the golden files into DIR
    ferrolog.py check DIR          fail unless the golden files in DIR are what `write` writes and this reader reads
    ferrolog.py show FILE          print the messages of a trace file, oldest first, and what is lost
    ferrolog.py compare EXE CAT    let EXE (ferrolog-sample) write a trace file and compare what it says it wrote with
                                   what this reader, and CAT (ferrolog-cat), find in it
"""
import pathlib
import re
import struct
import subprocess
import sys
import tempfile

MAGIC = b"FERROLOG"
CHUNK = struct.Struct("<QQIIII")
LIFE = struct.Struct("<4I16s3QII3Q3QQQ")
SITE = struct.Struct("<III4HI8x")
assert CHUNK.size == 32 and LIFE.size == 128 and SITE.size == 32
PENDING, COMMITTED = 1, 2


def fnv1a(data):
    value = 2166136261
    for byte in data:
        value = (value ^ byte) * 16777619 & 0xFFFFFFFF
    return value


def clamp(value, low, high):
    return max(low, min(value, high))


class Layout:
    def __init__(self, ring):
        self.ring = ring
        self.chunk = clamp(ring // 64, 256, 4096)
        self.chunks = ring // self.chunk
        self.chunk_words = (self.chunk - CHUNK.size) // 4
        self.lanes = min(32, self.chunks // 4)
        self.sites = clamp(ring // 256, 64, 1024)
        self.text = self.sites * 128
        self.lives = clamp(self.chunks, 64, 1024)
        self.lives_at = 512
        self.sites_at = self.lives_at + self.lives * LIFE.size
        self.text_at = self.sites_at + self.sites * SITE.size
        self.counters_at = self.text_at + self.text
        self.ring_at = (self.counters_at + self.lanes * self.sites * 8 + 4095) // 4096 * 4096
        self.size = self.ring_at + ring


def words_of(letters):
    return sum(2 if letter.isupper() else 1 for letter in letters)


class Writer:
    """The bytes of a trace file, made part by part."""

    def __init__(self, ring, created):
        self.layout = Layout(ring)
        self.data = bytearray(self.layout.size)
        head = MAGIC + struct.pack("<IIQI", 0x01020304, 1, created, ring)
        self.data[0:32] = head + struct.pack("<I", fnv1a(head))
        self.next_site = 1
        self.next_text = 0
        self.chunk_at = 0
        self.site("Ferrolog", 0, "call site without room for its text, words:", "")

    def header(self, next_chunk, lives, sessions):
        struct.pack_into("<QIIII", self.data, 32, next_chunk, lives, sessions, self.next_site, self.next_text)

    def life(self, number, session, pid, clock, name, first, latest, began):
        at = self.layout.lives_at + (number - 1) % self.layout.lives * LIFE.size
        LIFE.pack_into(self.data, at, number, session, pid, clock, name.encode(), *first, 1, 0, *first, *latest, began, 0)

    def site(self, file, line, text, letters):
        parts = [part.encode() for part in (file, text, letters)]
        texts = b"".join(parts)
        check = fnv1a(texts + struct.pack("<II", line, words_of(letters)))
        SITE.pack_into(self.data, self.layout.sites_at + self.next_site * SITE.size, 1, line, self.next_text,
                       *map(len, parts), words_of(letters), check)
        start = self.layout.text_at + self.next_text
        self.data[start:start + len(texts)] = texts
        self.next_text += len(texts)
        self.next_site += 1
        return self.next_site - 1

    def counter(self, lane, site, count):
        struct.pack_into("<Q", self.data, self.layout.counters_at + (lane * self.layout.sites + site) * 8, count)

    def chunk(self, ordinal, base, lane, used, words, owner=0):
        at = self.layout.ring_at + ordinal % self.layout.chunks * self.layout.chunk
        CHUNK.pack_into(self.data, at, ordinal, base, owner, 0, used, lane)
        struct.pack_into(f"<{len(words)}I", self.data, at + CHUNK.size, *words)


def message(site, age, ordinal, *words, state=COMMITTED):
    return [(age >> 32 << 16 if state == COMMITTED else 0) | len(words) << 12 | site << 2 | state, age & 0xFFFFFFFF,
            ordinal, *words]


def owner(life, thread, age=0):
    return message(0, age, 0, life, thread)


class Reader:
    """What a trace file says: messages (life, thread, time in ns, origin, text), lost and unfinished ones."""

    def __init__(self, data):
        head = struct.unpack_from("<8sIIQII", data)
        if head[0] != MAGIC or head[1:3] != (0x01020304, 1) or fnv1a(data[:28]) != head[5]:
            raise ValueError("not a trace file")
        self.data, self.layout = data, Layout(head[4])
        if len(data) != self.layout.size:
            raise ValueError("torn")
        self.lives, self.sites = {}, {}
        self.messages, self.lost, self.unfinished = [], {}, 0
        self.present = {}
        self.read_lives()
        self.read_sites()
        chunks = []
        for slot in range(self.layout.chunks):
            at = self.layout.ring_at + slot * self.layout.chunk
            ordinal = CHUNK.unpack_from(data, at)[0]
            if ordinal:
                chunks.append((ordinal, at))
        for _, at in sorted(chunks):
            self.read_chunk(at)
        self.messages.sort(key=lambda m: m[0])
        self.count_lost()

    def read_lives(self):
        for index in range(self.layout.lives):
            number, session, pid, clock, name, *rest = LIFE.unpack_from(self.data, self.layout.lives_at + index * LIFE.size)
            first, which, latest = rest[0:3], rest[3], rest[5:8] if rest[3] == 0 else rest[8:11]
            if number:
                self.lives[number] = (session, pid, name.rstrip(b"\0").decode(), first, latest)

    def read_sites(self):
        for id in range(1, self.layout.sites):
            valid, line, at, n, m, k, words, check = SITE.unpack_from(self.data, self.layout.sites_at + id * SITE.size)
            if valid:
                start = self.layout.text_at + at
                raw = self.data[start:start + n + m + k]
                assert fnv1a(raw + struct.pack("<II", line, words)) == check
                file, text = (part.decode(errors="surrogateescape") for part in (raw[:n], raw[n:n + m]))
                self.sites[id] = (f"{harmless(file)}:{line}", text, raw[n + m:].decode())

    def read_chunk(self, chunk_at):
        _, base, _, _, used, lane = CHUNK.unpack_from(self.data, chunk_at)
        words = struct.unpack_from(f"<{self.layout.chunk_words}I", self.data, chunk_at + CHUNK.size)
        at, life, thread = 0, 0, 0
        while at < min(used, len(words)):
            head = words[at]
            if head == 0:
                self.unfinished += used <= len(words)
                return
            count, id, state = head >> 12 & 15, head >> 2 & 1023, head & 3
            arguments = words[at + 3:at + 3 + count]
            age = head >> 16 << 32 | words[at + 1]
            if state == PENDING:
                self.unfinished += 1
            elif id == 0:
                life, thread = arguments
            else:
                counted = self.counter(lane, id) & 0xFFFFFFFF
                self.present[lane, id] = self.present.get((lane, id), 0) + ((words[at + 2] - counted & 0xFFFFFFFF) >> 31)
                session, _, _, first, latest = self.lives[life]
                ticks = base + age
                rate = (latest[1] - first[1]) / (latest[0] - first[0])
                time = latest[2] + int((ticks - latest[0]) * rate)
                self.messages.append(((session, ticks), life, thread, time, self.sites[id][0],
                                      render(self.sites[id][1], arguments)))
            at += 3 + count

    def counter(self, lane, id):
        return struct.unpack_from("<Q", self.data, self.layout.counters_at + (lane * self.layout.sites + id) * 8)[0]

    def count_lost(self):
        for lane in range(self.layout.lanes):
            for id in self.sites:
                lost = self.counter(lane, id) - self.present.get((lane, id), 0)
                if lost:
                    origin = self.sites[id][0]
                    self.lost[origin] = self.lost.get(origin, 0) + lost

    def lines(self):
        for _, life, thread, time, origin, text in self.messages:
            yield f"{time} life {life} thread {thread} {origin} {text}"
        yield f"lost {sum(self.lost.values())} unfinished {self.unfinished}"
        for origin, count in sorted(self.lost.items()):
            yield f"lost {count} of {origin}"


def render(text, words):
    words, out, at = list(words), "", 0
    while at < len(text):
        pair = text[at:at + 2]
        if pair == "%%":
            out, at = out + "%", at + 2
        elif pair[0] == "%" and pair[1:] in tuple("iudxIUDX"):
            bits = words.pop(0)
            width = 32
            if pair[1].isupper():
                bits, width = bits | words.pop(0) << 32, 64
            kind = pair[1].lower()
            if kind == "d" and bits >> width - 1:
                bits -= 1 << width
            out, at = out + (hex(bits) if kind == "x" else str(bits)), at + 2
        else:
            out, at = out + text[at], at + 1
    out += "".join(f" {hex(word)}" for word in words)
    return harmless(out)


COMMANDS = re.compile("[\\0-\x1f\x7f-\x9f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069\udc80-\udcff]")


def harmless(text):
    """As it may be printed: one line that commands nothing. Bytes that are no UTF-8 were decoded to lone surrogates."""
    def show(found):
        return "".join(f"\\x{byte:02x}" for byte in found[0].encode(errors="surrogateescape"))
    return COMMANDS.sub(show, text.replace("\\", "\\\\"))


def golden():
    """Two lives: the first, killed, wrapped the ring; the second wrote from two threads and by way of lane 0."""
    w = Writer(16 << 10, 1_700_000_000_000_000_000)
    second = 1_000_000_000
    wall = 1_700_000_000 * second
    start = 5_000 * second  # CLOCK_MONOTONIC
    tsc = 10_000_000_000_000  # 2.5 GHz
    w.life(1, 1, 4711, 1, "pci_agent", (tsc, start, wall), (tsc + 2_500_000_000, start + second, wall + second), tsc)
    w.life(2, 2, 4713, 2, "a-name-of-16-byt", (7_000 * second, 7_000 * second, wall + 10 * second),
           (7_001 * second, 7_001 * second, wall + 11 * second), 7_000 * second)
    restart = w.site("BrixoCacheTable", 98, "CacheTable::doRestart", "")
    entry = w.site("BrixoCacheTable", 117, "Recovered entry, index: %i key: %i", "ii")
    signs = w.site("Signs", 5, "100%% %d %u %x; %I %D %X\x1b", "duxIDX")

    # Life 1, thread 4711, lane 1: chunks 1 to 68 of 10 entries each, and 9 in the last; the ring has 64.
    counts = 10 * 69 - 1
    for ordinal in range(6, 70):
        words = owner(1, 4711)
        for i in range(10 if ordinal < 69 else 9):
            number = (ordinal - 1) * 10 + i
            words += message(entry, 25_000 * i, number, number, 0xFFFFFFFF - number)
        if ordinal < 69:  # full: the next message did not fit
            w.chunk(ordinal, tsc + ordinal * 1_000_000, 1, 60, words)
        else:  # killed in the middle of a message
            words += message(restart, 0, 0, state=PENDING)
            w.chunk(ordinal, tsc + ordinal * 1_000_000, 1, len(words), words)

    # Life 2: 70 to 72 take the places of 6 to 8.
    base = 7_000 * second
    words = owner(2, 4713) + message(restart, 1_000, 0) + message(entry, 5_000, counts, 1, 2)
    w.chunk(70, base, 1, len(words) + 3, words + [0] * (w.layout.chunk_words - len(words)), owner=2)  # a hole
    words = owner(2, 4714) + message(signs, 2_000, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0xABC, 1, 2, 0xFFFFFFFE, 0xFFFFFFFF, 4, 3)
    words += message(entry, 5_000_000_000, 0, 3, 4)
    w.chunk(71, base, 2, len(words), words + [0] * (w.layout.chunk_words - len(words)), owner=3)
    words = owner(2, 4715, 3_000) + message(entry, 3_000, 0, 5, 6) + owner(2, 4716, 3_000) + message(1, 3_001, 0, 7, 8)
    w.chunk(72, base, 0, len(words), words + [0] * (w.layout.chunk_words - len(words)), owner=1)
    w.counter(1, restart, 1)
    w.counter(1, entry, counts)  # the entry at 5000 came while the counters were copied
    w.counter(2, signs, 1)
    w.counter(2, entry, 1)
    w.counter(0, entry, 1)
    w.counter(0, 1, 1)
    w.header(73, 2, 2)
    return bytes(w.data)


def golden_files():
    trace = golden()
    return {"ferrolog.trace": trace, "ferrolog.txt": ("\n".join(Reader(trace).lines()) + "\n").encode()}


def compare(sample, cat):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "trace"
        said = subprocess.run([sample, path], check=True, capture_output=True, text=True).stdout.splitlines()
        read = [m[5] for m in Reader(path.read_bytes()).messages]
        assert read == said, f"{read}\n{said}"
        shown = subprocess.run([cat, path], check=True, capture_output=True, text=True).stdout.splitlines()
        printed = [line for line in shown if not line.startswith("--")]
        assert len(printed) == len(said) and all(a.endswith("  " + b) for a, b in zip(printed, said)), shown
        assert shown[-1] == f"-- {len(said)} messages, 0 lost", shown[-1]


def main(arguments):
    if len(arguments) == 3 and arguments[1] in ("write", "check"):
        for name, data in golden_files().items():
            path = pathlib.Path(arguments[2]) / name
            if arguments[1] == "write":
                path.write_bytes(data)
            elif path.read_bytes() != data:
                sys.exit(f"{path}: differs from what this reference writes")
    elif len(arguments) == 3 and arguments[1] == "show":
        print("\n".join(Reader(pathlib.Path(arguments[2]).read_bytes()).lines()))
    elif len(arguments) == 4 and arguments[1] == "compare":
        compare(arguments[2], arguments[3])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv)
