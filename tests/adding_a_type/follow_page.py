#!/usr/bin/env python3
"""follow_page.py SOURCE WORK [--whole] - does what docs/adding-a-type.md says, word by word, in a copy of the tree; then takes
back one step after the other, and somebody must miss the type by its name.

The only changes: what is built has no debug information, and no examples and benchmarks beside it. --whole runs every test of
the copy as well."""

import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "install"))
from trial import equal, run, says  # noqa: E402

source, work = map(Path, sys.argv[1:3])
tree = work / "tree"
page = (source / "docs/adding-a-type.md").read_text()
quick = "-DCMAKE_BUILD_TYPE= -DBRIXO_BUILD_BENCH=OFF -DBRIXO_BUILD_EXAMPLES=OFF -DCMAKE_VERIFY_INTERFACE_HEADER_SETS=OFF"


def do(commands):
    print(commands, flush=True)
    return run("bash", "-euo", "pipefail", "-c", re.sub(r"^cmake --preset dev$", f"cmake --preset dev {quick}", commands, flags=re.M), cwd=tree)


def apply(path, lines):
    """A diff without line numbers: what stands there stands there once."""
    text = (tree / path).read_text()
    old = "".join(line[1:] + "\n" for line in lines if line[0] in " -")
    new = "".join(line[1:] + "\n" for line in lines if line[0] in " +")
    equal(text.count(old), 1, f"in {path}, places for\n{old}")
    (tree / path).write_text(text.replace(old, new))


def without(path, change, *words, missed_by):
    """Takes a step back; `missed_by` fails then, and says `words`."""
    text = (tree / path).read_text()
    changed = change(text)
    equal(changed == text, False, f"{path}: nothing was taken back")
    (tree / path).write_text(changed)
    done = subprocess.run(missed_by, cwd=tree, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    (tree / path).write_text(text)
    equal(done.returncode != 0, True, f"failure of {' '.join(missed_by)} without its part of {path}")
    says(done.stdout, *words)
    print(f"missed by name without its part of {path}: {' '.join(missed_by)}", flush=True)


shutil.rmtree(work, ignore_errors=True)
shutil.copytree(source, tree, ignore=shutil.ignore_patterns("build*", "out", ".git", "__pycache__"), symlinks=True)
run("git", "init", "-q", cwd=tree)
before = {path: (tree / path).read_text() for path in ("docs/schema.md", "tests/golden/values.json")}

found = re.findall(r"^```(\w+)\n(.*?)^```$|`(types/[^`]+)`", page, re.M | re.S)
path, said = None, ""
for language, text, named in found:
    if named:
        path = named
    elif language == "cpp":
        (tree / path).write_text(text)
    elif language == "diff":
        apply(path, text.splitlines())
    else:
        equal(language, "sh", "language of a block of the page")
        said += do(text)
equal([language for language, _, _ in found if language], ["sh", "cpp", "cpp", "sh", "cpp", "cpp", "sh", "diff", "diff", "sh"], "the blocks")

for test in ("types/Brixo/RackId", "types/Brixo/RackPlace", "types/Brixo/Rack", "conformance/values", "conformance/lists", "golden/values",
             "golden/values-probe", "loading/LibraryTypes", "reflection/page", "reflection/schema", "reflection/walk"):
    equal(len(re.findall(rf" {re.escape(test)} \.+ +Passed", said)), 1, f"times that {test} passed in\n{said}")
for test, case in (("tests/conformance/conformance-values", r"EveryValue/Brixo::RackPlace\."), ("tests/reflection/reflection-walk", r"/Rack\b")):
    equal(re.search(case, run(tree / "build/dev" / test, "--gtest_list_tests", cwd=tree)) is not None, True, f"{test} has {case}")


def ctest(test):
    return ["ctest", "--preset", "dev", "-R", f"^{test}$"]


for name in "RackId", "RackPlace", "Rack":
    space = f"Brixo::{name}"
    without("docs/schema.md", lambda _: before["docs/schema.md"], f"+## {space}", missed_by=ctest("reflection/page"))
    without("docs/schema.md", lambda text: text.replace(f"## {space}\n", "## Brixo::Other\n"), space, missed_by=ctest("loading/LibraryTypes"))
    without(f"types/Brixo/{name}_test.cpp", lambda text: text.replace(f'registered("{space}")', ""),
            f"{name}_test.cpp does not say what {space} is registered as", missed_by=ctest("reflection/schema"))
    without("types/Brixo/BrixoTypes.h", lambda text: text.replace(f"#include <Brixo/{name}.h>\n", ""),
            f"types/Brixo/BrixoTypes.h: does not include <Brixo/{name}.h>", f"types/CMakeLists.txt: does not list Brixo/{name}.cpp",
            f"types/CMakeLists.txt: does not list Brixo/{name}\n".strip(), missed_by=ctest("conformance/lists"))
    without("types/Brixo/BrixoTypes.h", lambda text: re.sub(rf"\b{name}([,>]+)", r"Other\1", text),
            f"types/Brixo/BrixoTypes.h: {name} is not in the list", missed_by=ctest("conformance/lists"))
for name in "RackId", "RackPlace":
    without("tests/golden/values.json", lambda _: before["tests/golden/values.json"],
            f"values.json: Brixo::{name} is not as made here", missed_by=ctest("golden/values"))
    without("tests/golden/values.json", lambda _: before["tests/golden/values.json"],
            f"-Brixo::{name}", missed_by=ctest("golden/values-probe"))

if "--whole" in sys.argv[3:]:
    do("cmake --build --preset dev && ctest --preset dev -LE 'cross|install|adding_a_type'")
