#!/usr/bin/env python3
"""plain_build.py SOURCE WORK - what a plain `cmake -S . -B build` chooses, with GoogleTest and without it."""

import json
import shutil
import sys
from pathlib import Path

from trial import environment, equal, run, says

source, work = map(Path, sys.argv[1:])
shutil.rmtree(work, ignore_errors=True)
gone = f"-DBRIXO_GOOGLETEST_DIR={work}/none"


def configure(name, *options, status=0):
    return run("cmake", "-S", source, "-B", work / name, "-G", "Ninja", *options, status=status,
               env=environment(CMAKE_BUILD_TYPE=None))


def cached(name, *variables):
    lines = (work / name / "CMakeCache.txt").read_text().splitlines()
    values = {line.split(":")[0]: line.split("=", 1)[1] for line in lines if "=" in line}
    return [values.get(variable) for variable in variables]


# Without GoogleTest: no tests, one line that says so, and nothing else is missing.
text = configure("plain", gone)
says(text, "-- Tests are left out: GoogleTest is not installed (scripts/setup test installs it)")
equal(cached("plain", "BRIXO_WERROR", "CMAKE_BUILD_TYPE"), ["OFF", "RelWithDebInfo"], "chosen by default")
rules = (work / "plain" / "build.ninja").read_text()
equal("_test.cpp" in rules, False, "tests in a build without GoogleTest")
equal("-Werror" in rules, False, "warnings as errors in a plain build")

# Somebody who asks for tests is told what is missing.
says(configure("asked", gone, "-DBRIXO_BUILD_TESTS=ON", status=1),
     f"GoogleTest is not installed ({work}/none). Install Debian's package googletest, as scripts/setup test does, "
     "or build without tests: -DBRIXO_BUILD_TESTS=OFF")

# Once it is installed, the same build directory has tests.
configure("plain", "-UBRIXO_GOOGLETEST_DIR")
equal("_test.cpp" in (work / "plain" / "build.ninja").read_text(), True, "tests in a build with GoogleTest")

# An empty build type is a choice, too.
configure("none", "-DCMAKE_BUILD_TYPE=", "-DBRIXO_BUILD_TESTS=OFF")
equal(cached("none", "CMAKE_BUILD_TYPE"), [""], "the build type none")

# The presets are for us: warnings are errors there, and tests are missed.
presets = {preset["name"]: preset for preset in json.loads((source / "CMakePresets.json").read_text())["configurePresets"]}


def variable(preset, name):
    return preset.get("cacheVariables", {}).get(name) or variable(presets[preset["inherits"]], name)


for name, preset in presets.items():
    equal(variable(preset, "BRIXO_WERROR"), "ON", f"BRIXO_WERROR of the preset {name}")
    equal(variable(preset, "BRIXO_BUILD_TESTS"), "OFF" if name.startswith("release") else "ON",
          f"BRIXO_BUILD_TESTS of the preset {name}")
