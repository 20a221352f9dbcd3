#!/usr/bin/env python3
"""package_components.py PREFIX WORK [OPTION...] - find_package with COMPONENTS finds them, or says which there are."""

import shutil
import sys
from pathlib import Path

from trial import run, says

prefix, work = map(Path, sys.argv[1:3])
shutil.rmtree(work, ignore_errors=True)
client = Path(__file__).parent / "components"


def configure(ask, status=0):
    return run("cmake", "-S", client, "-B", work, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}", f"-DASK={ask}",
               *sys.argv[3:], status=status)


unknown = 'BrixoTypes has no component "python"; there are: BrixoTypes, Vel, pinbuf, Ferrolog'
says(configure("REQUIRED;COMPONENTS;pinbuf;python", status=1), "set BrixoTypes_FOUND to FALSE", unknown)
says(configure("COMPONENTS;python"), "-- found: 0,", unknown)
says(configure("REQUIRED;COMPONENTS;BrixoTypes;Vel;Ferrolog"), "-- found: 1, pinbuf: , python:")
says(configure("REQUIRED;COMPONENTS;pinbuf;OPTIONAL_COMPONENTS;python"), "-- found: 1, pinbuf: TRUE, python:")
run("cmake", "--build", work)
run(work / "client")
