#!/usr/bin/env python3
"""An independent reader and writer of the region of a cache table (docs/region-layout.md).

    region.py write DIR              write region.json into DIR
    region.py check DIR              fail unless region.json in DIR is what `write` writes
    region.py show FILE ENTRY-SIZE   print the entries of a region, one line each: slot, key, data
    region.py probe EXE              let EXE (cachetable-dump) recover and write each region of region.json, and
                                     compare what it says and what it leaves with what this file says
"""
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

MAGIC, UNUSED = 0xBEEFCAFE, 0xFFFFFFFF
HEADER = struct.Struct("<IB3s")
KEY = struct.Struct("<I")


def mix(data):
    """The one-at-a-time hash of the bytes."""
    h = 0
    for byte in data:
        h = (h + byte) & UNUSED
        h = (h + (h << 10)) & UNUSED
        h ^= h >> 6
    h = (h + (h << 3)) & UNUSED
    h ^= h >> 11
    return (h + (h << 15)) & UNUSED


def name(agent, device, kind, number):
    return f"CacheTable-{agent}-{device}-{mix(struct.pack('<IQ', kind, number))}"


def region(slots, magic=MAGIC, flag=1, reserved=b"\0\0\0", behind=b""):
    return HEADER.pack(magic, flag, reserved) + b"".join(KEY.pack(key) + data for key, data in slots) + behind


def slots_of(data, entry_size):
    step = entry_size + KEY.size
    return [(KEY.unpack_from(data, at)[0], bytes(data[at + KEY.size:at + step]))
            for at in range(HEADER.size, len(data) - step + 1, step)]


def recover(data, size, entry_size):
    """The region's bytes after recovery, its entries {key: (slot, data)}, and its free slots in their order."""
    data = bytearray(data)
    magic, flag, _ = HEADER.unpack_from(data)
    at = lambda slot: HEADER.size + slot * (entry_size + KEY.size)
    if magic != MAGIC or flag == 0:
        for slot in range(size):
            KEY.pack_into(data, at(slot), UNUSED)
        struct.pack_into("<IB", data, 0, MAGIC, 1)
    entries, free = {}, []
    for slot, (key, value) in enumerate(slots_of(data, entry_size)[:size]):
        if key == UNUSED or key in entries:
            KEY.pack_into(data, at(slot), UNUSED)
            free.append(slot)
        else:
            entries[key] = (slot, value)
    free.sort(key=lambda slot: f"{slot:032b}"[::-1])
    return bytes(data), entries, free


def written(data, size, entry_size, key, value):
    """The bytes after one more write."""
    data, entries, free = recover(data, size, entry_size)
    slot = entries[key][0] if key in entries else free[0]
    at = HEADER.size + slot * (entry_size + KEY.size)
    return data[:at] + KEY.pack(key) + value + data[at + KEY.size + entry_size:]


CASES = {
    "fresh": (3, 4, bytes(32)),
    "no slots": (0, 4, bytes(8)),
    "one entry": (3, 4, region([(0x10, b"\x11\x22\x33\x44"), (UNUSED, bytes(4)), (UNUSED, bytes(4))])),
    "unaligned": (4, 5, region([(1, b"abcde"), (UNUSED, b"ABCDE"), (0xFFFFFFFE, b"12345"), (0, b"vwxyz")])),
    "duplicates": (8, 1, region([(k, bytes([i])) for i, k in enumerate([3, 5, 3, 9, 3, 5, UNUSED, 9])])),
    "torn format": (3, 2, region([(UNUSED, b"ab"), (UNUSED, b"cd"), (7, b"ef")], flag=0, reserved=b"RES")),
    "old flag": (2, 2, region([(1, b"ab"), (2, b"cd")], magic=0, flag=1)),
    "other flag": (2, 2, region([(1, b"ab"), (UNUSED, b"cd")], flag=255)),
    "larger region": (2, 2, region([(1, b"ab"), (UNUSED, b"cd"), (1, b"ef")], behind=b"x")),
    "no data": (2, 0, region([(1, b""), (UNUSED, b"")])),
}


def golden():
    cases = []
    for title, (size, entry_size, before) in CASES.items():
        after, entries, free = recover(before, size, entry_size)
        case = {"case": title, "size": size, "entrySize": entry_size, "before": before.hex(), "after": after.hex(),
                "entries": [[slot, key, data.hex()] for key, (slot, data) in entries.items()], "free": free}
        if free:
            value = bytes(range(0xA0, 0xA0 + entry_size))
            case["write"] = [0x12345678, value.hex(), written(before, size, entry_size, 0x12345678, value).hex()]
        cases.append(case)
    return {"name": name(3, 1, 1, 3), "regions": cases}


def text():
    return json.dumps(golden(), indent=1) + "\n"


def lines(size, entries, free):
    return [f"{slot} {key} {data}".rstrip() for slot, key, data in sorted(entries)] + \
        [" ".join(["free", *map(str, free)])]


def probe(executable):
    made = golden()
    for case in made["regions"]:
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, made["name"])
            file.write_bytes(bytes.fromhex(case["before"]))

            def run(*write):
                arguments = [executable, str(case["size"]), str(case["entrySize"]), *write]
                return subprocess.run(arguments, env={**os.environ, "PINBUF_DIR": folder}, check=True, text=True,
                                      stdout=subprocess.PIPE).stdout.splitlines()

            assert run() == lines(case["size"], case["entries"], case["free"]), case["case"]
            assert file.read_bytes().hex() == case["after"], case["case"]
            if "write" in case:
                key, value, after = case["write"]
                run(str(key), value)
                assert file.read_bytes().hex() == after, case["case"]
    print(f"{len(made['regions'])} regions: recovered and written as they should be")


def show(file, entry_size):
    for slot, (key, data) in enumerate(slots_of(pathlib.Path(file).read_bytes(), entry_size)):
        if key != UNUSED:
            print(slot, f"0x{key:x}", data.hex())


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "show":
        show(sys.argv[2], int(sys.argv[3]))
    elif len(sys.argv) == 3 and sys.argv[1] == "write":
        pathlib.Path(sys.argv[2], "region.json").write_text(text())
    elif len(sys.argv) == 3 and sys.argv[1] == "check":
        assert pathlib.Path(sys.argv[2], "region.json").read_text() == text(), "region.json differs"
        print("region.json is as it should be")
    elif len(sys.argv) == 3 and sys.argv[1] == "probe":
        probe(sys.argv[2])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
