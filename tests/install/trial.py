"""trial.py - what the tests of this folder share: a command that must end as expected, and words that must be said."""

import os
import subprocess
import sys

sys.dont_write_bytecode = True


def run(*command, status=0, **options):
    """Runs a command and returns all that it prints; ends the test when it does not exit with `status`."""
    done = subprocess.run([str(word) for word in command], text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != status:
        sys.exit(f"{done.stdout}\nexit status {done.returncode}, not {status}: {' '.join(map(str, command))}")
    return done.stdout


def environment(**changes):
    """The environment with some variables set, or with None: unset."""
    result = {**os.environ, **changes}
    return {name: str(value) for name, value in result.items() if value is not None}


def equal(got, wanted, what):
    if got != wanted:
        sys.exit(f"{what}: got\n{got}\nwanted\n{wanted}")


def says(text, *wanted):
    """Ends the test unless `text` says each of `wanted`, however its lines are broken."""
    flat = " ".join(text.split())
    for words in wanted:
        if words not in flat:
            sys.exit(f"{text}\ndoes not say: {words}")


def files_below(folder):
    """The relative paths of all files and links below a folder, sorted."""
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_symlink() or path.is_file())
