#!/usr/bin/env python3
"""tools.py PREFIX WORK GOLDEN VERSION - the installed tools find their libraries, answer for themselves and do their work."""

import shutil
import sys
from pathlib import Path

from trial import environment, equal, run, says

prefix, work, golden = map(Path, sys.argv[1:4])
version = sys.argv[4]
shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)
env = environment(LD_LIBRARY_PATH=None, PINBUF_DIR=work / "absent", TZ="UTC")

for name, usage in {"ferrolog-cat": "[-n COUNT] FILE", "pinbuf-ls": "[FOLDER]"}.items():
    tool = prefix / "bin" / name
    equal(run(tool, "--version", env=env), f"{name} {version}\n", "--version")
    text = run(tool, "--help", env=env)
    equal(text.splitlines()[0], f"usage: {name} {usage}", "--help")
    says(text, "--help", "--version", "Exit status: 0")
    says(run(tool, "--unknown", env=env, status=2), f"usage: {name} {usage}")
    says(run(tool, "one", "two", env=env, status=2), f"usage: {name} {usage}")
    says(run(tool, work / "none", env=env, status=1), f"{name}: ", "No such file or directory")
    equal(run("sh", "-c", f"{tool} --help 2>&1 >/dev/full", env=env, status=1),
          f"{name}: cannot write to standard output\n", "--help to a full device")

trace = golden / "ferrolog.trace"
whole = run(prefix / "bin/ferrolog-cat", trace, env=env)
says(whole, "-- life 1: ")
says(run(prefix / "bin/ferrolog-cat", "-n", "1", trace, env=env), ", the last 1 shown,")
says(run(prefix / "bin/ferrolog-cat", "-n", "many", trace, env=env, status=2), "usage: ")

equal(run(prefix / "bin/pinbuf-ls", env=env), "", "the regions of an absent folder")
(work / "regions").mkdir()
(work / "regions" / "r").write_bytes(b"12345")
equal(run(prefix / "bin/pinbuf-ls", work / "regions", env=env), "r  -  -  5\n", "a crafted region")
