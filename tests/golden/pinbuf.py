#!/usr/bin/env python3
"""An independent reader and writer of the directory file of DMA regions (docs/region-directory.md).

    pinbuf.py write DIR     write the golden files into DIR
    pinbuf.py check DIR     fail unless the golden files in DIR are what `write` writes
    pinbuf.py show FOLDER   print the regions of a folder, one line each: name, owner, address, size, whether the
                            library made it
    pinbuf.py probe EXE     let EXE (pinbuf-probe) make regions in a fresh folder, and compare what it says with
                            what the files say
"""
import contextlib
import fcntl
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

PAGE = 4096
WINDOW_BEGIN, WINDOW_END = 0x40000000, 0xC0000000
CHANGED = 32  # changes that the header remembers
HEADER = struct.Struct(f"<6I{CHANGED}I104x")
RECORD = struct.Struct("<4I128s112s")
MAGIC = int.from_bytes(b"PNBD", "little")
MADE, FOUND = 1, 0  # by the library, or by other means
assert HEADER.size == RECORD.size == 256


class Directory:
    """The bytes of a directory file, changed as the library changes them."""

    def __init__(self):
        self.data = bytearray(PAGE)
        HEADER.pack_into(self.data, 0, MAGIC, 1, RECORD.size, WINDOW_BEGIN, WINDOW_END, 0, *[0] * CHANGED)

    def records(self):
        return [RECORD.unpack_from(self.data, at) for at in range(HEADER.size, len(self.data), RECORD.size)]

    def count(self, index):
        """Counts a change of record `index`, and enters it among the last changes."""
        header = list(HEADER.unpack_from(self.data))
        header[6 + header[5] % CHANGED] = index
        header[5] += 1
        HEADER.pack_into(self.data, 0, *header)

    def enter(self, name, size, owner, origin=MADE):
        address = self.first_fit(size)
        states = [record[0] for record in self.records()]
        if 0 not in states:
            self.data += bytes(PAGE)
            states.append(0)
        self.count(states.index(0))
        at = HEADER.size + states.index(0) * RECORD.size
        RECORD.pack_into(self.data, at, 1, address, size, origin, name.encode(), owner.encode()[:111])

    def forget(self, name):
        for index, record in enumerate(self.records()):
            if record[0] == 1 and text(record[4]) == name:
                self.count(index)
                struct.pack_into("<I", self.data, HEADER.size + index * RECORD.size, 0)

    def first_fit(self, size):
        begin = WINDOW_BEGIN
        for _, address, taken, *_ in sorted((r for r in self.records() if r[0] == 1), key=lambda r: r[1]):
            if address - begin >= pages(size):
                break
            begin = address + pages(taken)
        assert begin + pages(size) <= WINDOW_END
        return begin


def pages(size):
    return -(-size // PAGE) * PAGE


def text(field):
    assert b"\0" in field
    return field.split(b"\0")[0].decode()


def empty():
    return Directory()


def several():
    directory = Directory()
    directory.enter("alpha", 1, "agent-a")
    directory.enter("CacheTable-3-1-77", 4008, "@BrixoCacheTable")
    directory.enter("gone", 8193, "x")
    directory.enter("n" * 127, 4096, "o" * 111)
    directory.enter("omega", 4097, "", FOUND)
    directory.forget("gone")
    directory.enter("late", 8192, "o" * 112)  # into the freed record, at the freed address
    directory.forget("alpha")  # leaves a free record whose other bytes stay
    return directory


def grown():
    directory = Directory()
    for number in range(16):  # one more than the first page holds
        directory.enter(f"region-{number}", 4096 * number + 1, f"owner-{number}")
    return directory


GOLDEN = {"pinbuf-empty.regions": empty, "pinbuf-several.regions": several, "pinbuf-grown.regions": grown}


def write(folder):
    for name, make in GOLDEN.items():
        (folder / name).write_bytes(make().data)


def check(folder):
    for name, make in GOLDEN.items():
        assert (folder / name).read_bytes() == make().data, f"{name} differs"
    print(f"{len(GOLDEN)} golden files are as they should be")


@contextlib.contextmanager
def locked(folder):
    """Keeps writers out of a folder; to close the lock file, whose only descriptor this is, drops the lock."""
    try:
        lock_file = open(folder / ".locks", "rb")
    except FileNotFoundError:
        yield  # nobody has begun to change the folder
        return
    with lock_file:
        fcntl.lockf(lock_file, fcntl.LOCK_SH, 1, 0)
        yield


def read(folder):
    """{name: (owner, address, size, origin)} of the regions of a folder."""
    with locked(folder):
        data = (folder / ".regions").read_bytes()
        sizes = {path.name: path.lstat().st_size for path in folder.iterdir()}
    magic, version, record_size, begin, end, *_ = HEADER.unpack_from(data)
    assert (magic, version, record_size, begin, end) == (MAGIC, 1, RECORD.size, WINDOW_BEGIN, WINDOW_END)
    assert len(data) % RECORD.size == 0
    regions = {}
    for at in range(HEADER.size, len(data), RECORD.size):
        state, address, size, origin, name, owner = RECORD.unpack_from(data, at)
        assert state in (0, 1)
        if state == 1 and sizes.get(text(name)) == size:
            assert address % PAGE == 0 and begin <= address and address + pages(size) <= end
            regions[text(name)] = (text(owner), address, size, MADE if origin == MADE else FOUND)
    taken = sorted((address, address + pages(size)) for _, address, size, _ in regions.values())
    assert all(low[1] <= high[0] for low, high in zip(taken, taken[1:])), "regions overlap"
    return regions


def lines(regions):
    return [f"{name}\t{owner}\t0x{address:08x}\t{size}\t{origin}"
            for name, (owner, address, size, origin) in sorted(regions.items())]


def probe(executable):
    with tempfile.TemporaryDirectory() as outside:
        folder = pathlib.Path(outside, "regions")
        environment = {**os.environ, "PINBUF_DIR": str(folder)}

        def run(*arguments):
            return subprocess.run([executable, *arguments], env=environment, check=True, text=True,
                                  stdout=subprocess.PIPE).stdout.splitlines()

        answers = {}
        for number in range(40):
            name, size = f"region-{number:02}", 1 + 1000 * number
            answers[name] = run("alloc", name, str(size), f"owner-{number}")[0]
        regions = read(folder)
        assert len(regions) == 40
        assert {name: f"0x{address:08x}" for name, (_, address, _, _) in regions.items()} == answers
        assert lines(regions) == run("list")
        assert all((folder / name).read_bytes() == bytes(size) for name, (_, _, size, _) in regions.items())
        assert all(origin == MADE for _, _, _, origin in regions.values())
        (folder / "by-hand").write_bytes(b"found")
        run("alloc", "by-hand", "5", "owner")
        regions = read(folder)
        assert regions["by-hand"][3] == FOUND
        assert lines(regions) == run("list")
    print("40 regions: the files say what the library says")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    command, argument = sys.argv[1], pathlib.Path(sys.argv[2])
    if command == "show":
        print(*lines(read(argument)), sep="\n")
    else:
        {"write": write, "check": check, "probe": probe}[command](argument)


if __name__ == "__main__":
    main()
