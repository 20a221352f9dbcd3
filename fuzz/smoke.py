#!/usr/bin/env python3
"""A short run of one fuzzer from the golden files, the same every time.

    smoke.py EXE GOLDEN [RUNS]     EXE is one of the fuzzers, GOLDEN the folder of the golden files
    smoke.py --seeds NAME GOLDEN DIR     only write the seeds of the fuzzer of this name into DIR, for a long run

A fuzzer is called as the program is, with or without `fuzz-` before it.
"""
import json
import pathlib
import struct
import subprocess
import sys
import tempfile

SEED = 20260101


def value_seeds(golden, of_type):
    """One seed for each vector: the number of the type, then what `of_type` takes from its vectors."""
    vectors = json.loads((golden / "values.json").read_text())
    for number, kinds in enumerate(vectors.values()):
        for seed in of_type(kinds):
            yield bytes([number]) + seed


def texts(kinds):
    for kind in ("printed", "read", "refused"):
        for vector in kinds[kind]:
            yield vector[0].encode("latin-1")


def logs(kinds):
    records = [bytes.fromhex(vector[1]) for vector in kinds["printed"]]
    yield from records
    yield b"".join(records)


def files(golden, pattern):
    for path in sorted(golden.glob(pattern)):
        yield path.read_bytes()


def traces(golden):
    """Each trace file, and again with every 16th chunk of its ring alone: what is in few messages costs little to read."""
    ring, chunk, every = 16 << 10, 256, 64
    for trace in files(golden, "*.trace"):
        yield trace
        at = len(trace) - ring
        for kept in range(every):
            chunks = (trace[start:start + chunk] if start // chunk % every == kept else bytes(chunk) for start in range(at, len(trace), chunk))
            yield trace[:at] + b"".join(chunks)


def libraries(golden):
    """Shared libraries of both word sizes with a header, their names, two groups of types and the headers of the sections."""
    names = b"\0.vel.type\0.shstrtab\0"
    types = b"A::Second\0A::First\0\0\0\0B::Third\0"
    for bits, ident, word in ((32, 1, "I"), (64, 2, "Q")):
        ident_bytes = b"\x7fELF" + bytes([ident, 1, 1]) + bytes(9)
        start = 16 + struct.calcsize(f"<HHI3{word}I6H")
        section = f"<II4{word}II2{word}"
        end = start + len(names) + len(types)
        header = struct.pack(f"<HHI3{word}I6H", 3, 62 if bits == 64 else 3, 1, 0, 0, end, 0, start, 0, 0, struct.calcsize(section), 3, 2)
        headers = struct.pack(section, *[0] * 10)
        headers += struct.pack(section, 1, 1, 3, 0, start + len(names), len(types), 0, 0, 1, 0)
        headers += struct.pack(section, 11, 3, 0, 0, start, len(names), 0, 0, 1, 0)
        yield ident_bytes + header + names + types + headers


SEEDS = {
    "text": lambda golden: value_seeds(golden, texts),
    "attribute_log": lambda golden: value_seeds(golden, logs),
    "trace_file": traces,
    "region_directory": lambda golden: files(golden, "*.regions"),
    "type_section": libraries,
}


def write_seeds(name, golden, folder):
    kind = name.removeprefix("fuzz-").replace("-", "_")
    if kind not in SEEDS:
        sys.exit(f"no fuzzer is called {name}: " + ", ".join(sorted(kind.replace("_", "-") for kind in SEEDS)))
    folder.mkdir(parents=True, exist_ok=True)
    for number, seed in enumerate(SEEDS[kind](golden)):
        (folder / f"{number:05}").write_bytes(seed)


def main(arguments):
    if arguments and arguments[0] == "--seeds":
        write_seeds(arguments[1], pathlib.Path(arguments[2]), pathlib.Path(arguments[3]))
        return 0
    exe, golden = pathlib.Path(arguments[0]).resolve(), pathlib.Path(arguments[1])
    runs = arguments[2] if len(arguments) > 2 else "20000"
    with tempfile.TemporaryDirectory() as scratch:
        corpus = pathlib.Path(scratch) / "corpus"
        write_seeds(exe.name, golden, corpus)
        print(f"{exe.name}: seed {SEED}, {runs} runs, {sum(1 for _ in corpus.iterdir())} seeds", flush=True)
        return subprocess.run([exe, f"-seed={SEED}", f"-runs={runs}", "-print_final_stats=1", "-verbosity=0", "-print_funcs=0",
                               f"-artifact_prefix={pathlib.Path.cwd()}/", corpus], check=False).returncode


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
