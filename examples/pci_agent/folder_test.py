#!/usr/bin/env python3
"""folder_test.py DEMO SCRIPT - the demo and scripts/demo refuse what they do not know, and delete nothing of anybody else's.

DEMO is the program pci_agent_demo. The agent is /bin/false here: the demo makes its folder, loses its agent, and ends.
"""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

MARKER = ".made-by-pci_agent_demo"
MARKER_TEXT = "The demo made this folder, and empties it when it runs here again.\n"
DEMO_HELP = """\
usage: pci_agent_demo AGENT TRACE_READER [FOLDER]

Starts an agent that mirrors registers into cache tables, kills it with SIGKILL three times, starts it again each time,
and shows what the next process finds.

AGENT         the program pci_agent
TRACE_READER  the program ferrolog-cat
FOLDER        where the regions and the trace are kept, as plain files; by default /dev/shm/pci-agent-demo-<uid>.
              It is made. If it exists, it must be what an earlier demo made, and what that one left is removed;
              any other folder is refused, and nothing in it touched.
--help        prints this

Exit codes: 0 every completed write was found again; 1 something was lost or failed; 2 wrong use.
"""
SCRIPT_HELP = """\
usage: scripts/demo [--64] [FOLDER]

An agent mirrors hardware registers into cache tables, is killed with SIGKILL three times, starts again each time and
finds every entry. Installs through apt what is missing to build it, builds it, runs it.

--64     in 64-bit; otherwise in 32-bit, the product's own platform
FOLDER   where the regions and the trace are kept, as plain files; by default /dev/shm/pci-agent-demo-<uid>.
         It is made. If it exists, it must be what an earlier demo made, and what that one left is removed; any other
         folder is refused, and nothing in it touched.
--help   prints this, and does nothing

Exit codes: 0 every completed write was found again; 1 something was lost or failed; 2 wrong use.
"""


def contents(folder):
    """Every path below a folder with what it is: a file's bytes, a link's target, or nothing for a folder."""
    found = {}
    for path in sorted(Path(folder).rglob("*")):
        name = str(path.relative_to(folder))
        found[name] = os.readlink(path) if path.is_symlink() else path.read_text() if path.is_file() else None
    return found


class Case(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = Path(place.name)

    def outcome(self, *command, **more):
        """(exit code, standard output, standard error)"""
        done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              stdin=subprocess.DEVNULL, **more)
        return done.returncode, done.stdout, done.stderr


class Folder(Case):
    def demo(self, *folder):
        return self.outcome(DEMO, "/bin/false", "/bin/false", *folder)

    def refusal(self, folder, why):
        return 2, "", f"pci_agent_demo: {folder} is refused, nothing in it was touched: {why}\n"

    def assertRefused(self, folder, why):
        before = contents(self.place)
        self.assertEqual(self.demo(folder), self.refusal(folder, why))
        self.assertEqual(contents(self.place), before)

    def made(self):
        """A folder that a demo has made."""
        folder = self.place / "made"
        self.assertEqual(self.demo(folder)[0], 1)
        return folder

    def test_a_folder_with_a_precious_file_is_refused(self):
        (self.place / "precious").write_text("mine")
        self.assertRefused(self.place, f"it exists, and no demo made it (there is no {MARKER})")
        self.assertEqual(contents(self.place), {"precious": "mine"})

    def test_an_empty_folder_that_no_demo_made_is_refused(self):
        (self.place / "empty").mkdir()
        self.assertRefused(self.place / "empty", f"it exists, and no demo made it (there is no {MARKER})")

    def test_a_file_in_place_of_the_folder_is_refused(self):
        (self.place / "file").write_text("mine")
        self.assertRefused(self.place / "file", "it is no folder of yours")

    def test_a_link_to_a_folder_is_refused_with_and_without_a_slash(self):
        folder = self.made()
        (self.place / "link").symlink_to(folder)
        self.assertRefused(self.place / "link", "it is a symbolic link")
        before = contents(folder)
        self.assertEqual(self.demo(f"{self.place}/link//"), self.refusal(self.place / "link", "it is a symbolic link"))
        self.assertEqual(contents(folder), before)

    def test_a_marker_that_is_a_link_or_says_something_else_is_refused(self):
        folder = self.place / "folder"
        folder.mkdir()
        (folder / MARKER).symlink_to(self.made() / MARKER)
        self.assertRefused(folder, f"its {MARKER} is not the demo's")
        (folder / MARKER).unlink()
        for text in ("", MARKER_TEXT[:-1], MARKER_TEXT + "\n"):
            (folder / MARKER).write_text(text)
            self.assertRefused(folder, f"its {MARKER} is not the demo's")

    def test_a_folder_that_cannot_be_made_is_an_error_of_its_own(self):
        self.assertEqual(self.demo(self.place / "absent" / "folder"),
                         (2, "", f"pci_agent_demo: cannot make {self.place}/absent/folder: No such file or directory\n"))

    def test_what_the_demo_makes_begins_with_the_marker(self):
        self.assertEqual(contents(self.made())[MARKER], MARKER_TEXT)
        self.assertEqual(oct((self.place / "made").stat().st_mode), "0o40700")

    def test_a_folder_that_an_earlier_demo_made_is_emptied_of_what_demos_make(self):
        folder = self.made()
        known = ["trace", "regions/.regions", "regions/.regions.unfinished", "regions/.region.unfinished",
                 "regions/CacheTable-7-0-2040173435"]
        for name in known:
            (folder / name).write_text("old")
        self.assertEqual(self.demo(folder)[0], 1)
        left = contents(folder)
        self.assertEqual(left[MARKER], MARKER_TEXT)
        self.assertEqual([name for name in known if name in left], [])

    def test_what_no_demo_makes_in_such_a_folder_is_refused(self):
        folder = self.made()
        for name in ("precious", "trace.1", "regions/precious", "regions/CacheTable-8-0-1", "regions/CacheTable-7-0-",
                     "regions/CacheTable-7-0-1x", "regions/CacheTable-7-0-1-2"):
            (folder / name).write_text("mine")
            self.assertRefused(folder, f"it holds {name}, which no demo makes")
            (folder / name).unlink()
        self.assertEqual(self.demo(folder)[0], 1)

    def test_a_name_that_would_disturb_the_terminal_is_shown_harmlessly(self):
        folder = self.made()
        (folder / "\033[2Jmine\n").write_text("mine")
        self.assertRefused(folder, "it holds ?[2Jmine?, which no demo makes")

    def test_a_link_or_folder_under_a_name_that_demos_use_is_refused(self):
        folder = self.made()
        (self.place / "precious").write_text("mine")
        (folder / "trace").symlink_to(self.place / "precious")
        self.assertRefused(folder, "it holds trace, which no demo makes like this")
        (folder / "trace").unlink()
        (folder / "trace").mkdir()
        self.assertRefused(folder, "it holds trace, which no demo makes like this")
        (folder / "trace").rmdir()
        (folder / "regions").rename(self.place / "elsewhere")
        (folder / "regions").symlink_to(self.place / "elsewhere")
        self.assertRefused(folder, "it holds regions, which no demo makes like this")

    def test_a_folder_that_another_demo_uses_is_refused(self):
        folder = self.made()
        with subprocess.Popen(["flock", folder / MARKER, "sh", "-c", "echo locked; read line"], text=True,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as other:
            self.assertEqual(other.stdout.readline(), "locked\n")
            self.assertRefused(folder, "another demo is running in it")
            other.communicate("\n")
        self.assertEqual(self.demo(folder)[0], 1)


class CommandLine(Case):
    def test_the_demo_explains_itself(self):
        for words in (["--help"], ["-h"], ["/bin/false", "--help"]):
            self.assertEqual(self.outcome(DEMO, *words), (0, DEMO_HELP, ""))

    def test_the_demo_refuses_what_it_does_not_know(self):
        hint = "pci_agent_demo: try --help\n"
        programs = ["/bin/false", "/bin/false"]
        for words, line in ((programs + ["--frob"], "pci_agent_demo: unknown option --frob\n"),
                            (programs + ["-x", "folder"], "pci_agent_demo: unknown option -x\n"),
                            (programs + ["a", "b"], "pci_agent_demo: too many words: b\n"),
                            (programs + [""], "pci_agent_demo: the folder has no name\n"),
                            (["/bin/false"], "pci_agent_demo: the agent and the trace reader must be named\n"),
                            ([], "pci_agent_demo: the agent and the trace reader must be named\n")):
            self.assertEqual(self.outcome(DEMO, *words, cwd=self.place), (2, "", line + hint))
        self.assertEqual(contents(self.place), {})

    # Without a PATH the script can neither install nor build: what answers here answers before it does.
    def script(self, *words):
        return self.outcome("/bin/bash", SCRIPT, *words, cwd=self.place, env={"PATH": "/nowhere"})

    def test_the_script_explains_itself_before_it_installs_or_builds(self):
        for words in (["--help"], ["-h"], ["--64", "--help"], ["folder", "--help"]):
            self.assertEqual(self.script(*words), (0, SCRIPT_HELP, ""))

    def test_the_script_refuses_what_it_does_not_know_before_it_installs_or_builds(self):
        hint = "demo: try scripts/demo --help\n"
        for words, line in ((["--frob"], "demo: unknown option --frob\n"), (["folder", "-x"], "demo: unknown option -x\n"),
                            (["--32"], "demo: unknown option --32\n"), (["a", "b"], "demo: too many words: b\n"),
                            ([""], "demo: the folder has no name\n")):
            self.assertEqual(self.script(*words), (2, "", line + hint))
        self.assertEqual(contents(self.place), {})


if __name__ == "__main__":
    DEMO, SCRIPT = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
