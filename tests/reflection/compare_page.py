#!/usr/bin/env python3
"""compare_page.py PROGRAM PAGE [--update] - fails, with the difference, when PAGE is not what PROGRAM prints.

--update writes the page instead.
"""

import difflib
import subprocess
import sys
from pathlib import Path


def main():
    program, page = sys.argv[1], Path(sys.argv[2])
    printed = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    if "--update" in sys.argv[3:]:
        page.write_text(printed)
        return 0
    written = page.read_text() if page.exists() else ""
    sys.stdout.writelines(difflib.unified_diff(
        written.splitlines(True), printed.splitlines(True), page.name, "what the program prints"))
    if written != printed:
        print(f"{page.name} is not what the program prints; the target describe-types writes it")
    return 0 if written == printed else 1


if __name__ == "__main__":
    sys.exit(main())
