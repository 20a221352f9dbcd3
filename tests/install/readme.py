#!/usr/bin/env python3
"""readme.py SOURCE WORK - does what README.md says, word by word: installs both word sizes beside each other, builds the
program that it shows in each way that it shows, and compares what that prints.

The only changes: $HOME is a folder of this test, the tree is a copy, regions have a folder of their own, and what is built
is not optimised, which takes half the time."""

import re
import shutil
import sys
from pathlib import Path

from trial import environment, equal, run

source, work = map(Path, sys.argv[1:])
shutil.rmtree(work, ignore_errors=True)
home, tree, client, regions = work / "home", work / "tree", work / "client", work / "regions"
for folder in (home, client):
    folder.mkdir(parents=True)
shutil.copytree(source, tree, ignore=shutil.ignore_patterns("build*", "out", ".git", "__pycache__"), symlinks=True)
regions.mkdir(mode=0o700)
env = environment(HOME=home, PINBUF_DIR=regions, CMAKE_BUILD_TYPE="", AGENT_PROCESS_NAME=None, PKG_CONFIG_PATH=None,
                  LD_LIBRARY_PATH=None, DESTDIR=None)


def blocks(section):
    """[(language, text)] of the code blocks below a heading."""
    text = (source / "README.md").read_text().split(f"\n## {section}\n")[1].split("\n## ")[0]
    found = re.findall(r"^```(\w+)\n(.*?)^```$", text, re.M | re.S)
    equal(len(found) > 0, True, f"code blocks below {section}")
    return found


def do(commands, folder):
    run("bash", "-euo", "pipefail", "-c", commands, cwd=folder, env=env)


def compare(session):
    """Runs the lines that begin with $; the lines below each are what it prints."""
    for command, output in re.findall(r"^\$ (.*)\n((?:[^$].*\n)*)", session, re.M):
        equal(run("bash", "-c", command, cwd=client, env=env), output, command)


for language, text in blocks("Install it"):
    equal(language, "sh", "language of a block that installs")
    do(text, tree)

# Beside each other: neither word size has taken the place of the other.
for libdir, bits in ("lib", "64"), ("lib32", "32"):
    for name in "BrixoTypes", "Ferrolog", "Vel", "pinbuf":
        header = run("readelf", "-h", home / "brixo" / libdir / f"lib{name}.so")
        equal(f"ELF{bits}" in header, True, f"{libdir}/lib{name}.so has {bits} bits")
for name in "bin/ferrolog-cat", "bin32/ferrolog-cat", "bin/pinbuf-ls", "bin32/pinbuf-ls":
    run(home / "brixo" / name, "--version", env=env)

seen = []
for language, text in blocks("Use it"):
    seen.append(language)
    if language == "cpp":
        (client / "first.cpp").write_text(text)
    elif language == "cmake":
        (client / "CMakeLists.txt").write_text(text)
    elif language == "console":
        compare(text)
    else:
        do(text, client)
equal(seen, ["cpp", "cmake", "sh", "sh", "console"], "the blocks of code")
