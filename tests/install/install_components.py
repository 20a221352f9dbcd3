#!/usr/bin/env python3
"""install_components.py BUILD WORK LIBDIR VERSION - each component of the installation holds what it should, together they are
everything, and the target `uninstall` removes again what was installed, and nothing else."""

import shutil
import sys
from pathlib import Path

from trial import environment, equal, files_below, run, says

build, work = map(Path, sys.argv[1:3])
libdir, version = sys.argv[3:]
shutil.rmtree(work, ignore_errors=True)
for manifest in build.glob("install_manifest*.txt"):
    manifest.unlink()

LIBRARIES = ("BrixoTypes", "Ferrolog", "Vel", "pinbuf")
PREFIX = "opt/brixo"
root = work / "root"  # $DESTDIR
staged = environment(DESTDIR=root)


def install(*options, status=0):
    return run("cmake", "--install", build, "--prefix", f"/{PREFIX}", *options, env=staged, status=status)


def uninstall(status=0):
    return run("cmake", "--build", build, "--target", "uninstall", env=staged, status=status)


def holds(component):
    install("--component", component)
    files = files_below(root / PREFIX)
    says(uninstall(), f"uninstalled: {len(files)} files")
    equal(files_below(root), [], f"left of {component}")
    return files


says(uninstall(status=1), f"Nothing to uninstall: nothing was installed from {build}")
says(install("--component", "headers", status=1),
     'There is no component "headers" to install; there are: runtime, development, tools')
equal(root.exists(), False, "something installed of an unknown component")

runtime, tools, development = map(holds, ("runtime", "tools", "development"))
equal(runtime, sorted(f"{libdir}/lib{name}.so.{ending}" for name in LIBRARIES for ending in (version.split(".")[0], version)), "runtime")
equal(tools, ["bin/ferrolog-cat", "bin/pinbuf-ls"], "tools")
links = [f"{libdir}/lib{name}.so" for name in LIBRARIES]
packages = [f"{libdir}/pkgconfig/{name}.pc" for name in LIBRARIES]
equal([name for name in development if not name.startswith(("include/", f"{libdir}/cmake/BrixoTypes/"))],
      sorted(links + packages), "development, but for the headers and the CMake package")

# All of it, into a place where others have a file, too.
others = root / PREFIX / "include" / "Vel" / "others.h"
others.parent.mkdir(parents=True)
others.write_text("")
install()
equal(files_below(root / PREFIX), sorted(runtime + tools + development + ["include/Vel/others.h"]), "everything")
says(uninstall(), f"uninstalled: {len(runtime + tools + development)} files")
equal(files_below(root / PREFIX), ["include/Vel/others.h"], "left after uninstalling")
folders = sorted(str(path.relative_to(root / PREFIX)) for path in (root / PREFIX).rglob("*") if path.is_dir())
equal(folders, sorted(["bin", "include", "include/Vel", libdir, f"{libdir}/cmake", f"{libdir}/pkgconfig"]), "folders left")
uninstall(status=1)
