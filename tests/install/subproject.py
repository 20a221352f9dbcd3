#!/usr/bin/env python3
"""subproject.py SOURCE WORK [OPTION...] - the tree as a part of a host project, which stays as it was."""

import shutil
import sys
from pathlib import Path

from trial import environment, equal, files_below, run

source, work = map(Path, sys.argv[1:3])
shutil.rmtree(work, ignore_errors=True)
build, prefix = work / "build", work / "prefix"

run("cmake", "-S", source / "tests/install/host", "-B", build, "-G", "Ninja", f"-DBRIXO={source}", *sys.argv[3:],
    env=environment(CMAKE_BUILD_TYPE=None))
cache = (build / "CMakeCache.txt").read_text()
equal("CMAKE_BUILD_TYPE:STRING=\n" in cache, True, "the host's build type is empty still")
equal("BUILD_TESTING" in cache, False, "BUILD_TESTING in the host's cache")

run("cmake", "--build", build, "--target", "host")
listed = [line.split(": ")[1] for line in run("ctest", "--test-dir", build, "-N").splitlines() if "Test #" in line.strip()]
equal(listed, ["host"], "the host's tests")
run("ctest", "--test-dir", build)
run("cmake", "--install", build, "--prefix", prefix)
equal(files_below(prefix), ["share/host/CMakeLists.txt"], "what the host installs")
