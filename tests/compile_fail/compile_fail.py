#!/usr/bin/env python3
"""What must not compile does not, and the first line of the compiler says why.

    compile_fail.py FLAG... -- CASE...      FLAG: what every compilation takes, as -I and -m32

Each case is compiled twice by each compiler that is installed: with -DMISTAKE it fails, and its first error is the
line that the file gives for that compiler; without, it compiles. So the mistake alone is what it fails for.
"""
import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
PRELUDE = HERE / "prelude.h"
# How a file calls a compiler, and how the shell does. GCC finds a precompiled header by its name, Clang is told.
COMPILERS = {"GCC": "g++", "Clang": "clang++"}
ENVIRONMENT = {**os.environ, "LC_ALL": "C", "CCACHE_DISABLE": "1"}


def run(command):
    done = subprocess.run(command, env=ENVIRONMENT, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return done.returncode, done.stdout


class Compiler:
    def __init__(self, name, exe, flags, scratch):
        self.name = name
        self.command = [exe, "-std=c++20", *flags]
        header = scratch / name / ("prelude.h.gch" if name == "GCC" else "prelude.h.pch")
        header.parent.mkdir()
        code, output = run([*self.command, "-x", "c++-header", PRELUDE, "-o", header])
        if code != 0:
            sys.exit(f"{exe} does not compile {PRELUDE}:\n{output}")
        self.command += ["-include", header.with_suffix("")] if name == "GCC" else ["-include-pch", header]

    def compile(self, case, *flags):
        return run([*self.command, "-fsyntax-only", *flags, case])

    def first_error(self, output):
        errors = (line.partition(" error: ")[2] for line in output.splitlines() if " error: " in line)
        return next(errors, "none")

    def wrong(self, case):
        """What is wrong with a case, one text each."""
        prefix = f"// {self.name}: "
        expected = next((line.removeprefix(prefix) for line in case.read_text().splitlines() if line.startswith(prefix)), "no line")
        code, output = self.compile(case, "-DMISTAKE")
        found = self.first_error(output)
        if code == 0:
            yield "the mistake compiles"
        elif found != expected:
            yield f"the first error is\n    {found}\nand not\n    {expected}"
        code, output = self.compile(case)
        if code != 0:
            yield f"without the mistake it does not compile:\n{output}"


def main(arguments):
    split = arguments.index("--")
    flags, cases = arguments[:split], [pathlib.Path(case) for case in arguments[split + 1:]]
    installed = {name: exe for name, exe in COMPILERS.items() if shutil.which(exe)}
    if not cases or not installed:
        sys.exit("no case" if not cases else "no compiler is installed")
    with tempfile.TemporaryDirectory() as scratch, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        compilers = list(pool.map(lambda entry: Compiler(*entry, flags, pathlib.Path(scratch)), installed.items()))
        pairs = [(compiler, case) for case in cases for compiler in compilers]
        results = list(pool.map(lambda pair: list(pair[0].wrong(pair[1])), pairs))
    failed = [(f"{case.name}, {compiler.name}", text) for (compiler, case), texts in zip(pairs, results) for text in texts]
    for where, text in failed:
        print(f"{where}: {text}")
    print(f"{len(pairs)} cases ({', '.join(installed)}), {len(failed)} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
