#!/usr/bin/env python3
"""story_test.py DEMO AGENT TRACE_READER - what the demo tells is what happened, and it notices when something is lost.

The demo runs on this machine's devices and on trees that stand for other machines. Where the kills hit is random; the test
reads the numbers and expects them to agree with each other wherever they come again.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

KILLED_FILLING = re.compile(r"  SIGKILL to process (\d+) in the first fill: (\d+) of (\d+) entries written\.")
KILLED_REWRITING = re.compile(r"  SIGKILL to process (\d+) in round (\d+), after (\d+) writes of its own\.")
OPENS = re.compile(r"  Process (\d+) opens the tables and finds:")
FILLING = re.compile(r"    (\S.*?) +\[(#*)(\.*)\] +(\d+) of +(\d+) entries")
VALUE = re.compile(r"    (\S+) +(0x\w{3})  (.*?) +(\w+|not there)")
IN_FLIGHT = re.compile(r"  In flight at the kill: (?:nothing|(\S+ 0x\w{3}) = 0x\w{8}\. There: (.*?)(?:,? 0x\w{8})?)\.")
COMPLETED = re.compile(
    r"  Completed: (\d+) entries\. Found again byte for byte: (\d+)\. Lost: (\d+)\. Found but never written: (\d+)\.")
FATES = {None: "", "nothing yet": "in flight: absent", "its key, not yet its value": "in flight: key only",
         "the same value as before": "in flight: same value", "this new value": "in flight: new value",
         "still the old value": "in flight: old value", "torn": "in flight: torn"}


def network(root):
    """A machine without a PCI bus: one interface of 24 counters."""
    interface = root / "class/net/wire0"
    (interface / "statistics").mkdir(parents=True)
    (interface / "ifindex").write_text("5\n")
    (interface / "statistics/rx_bytes").write_text("4294971392\n")  # 2^32 + 4096
    for number in range(23):
        (interface / f"statistics/tx_{number}").write_text(f"{number}\n")


def pci(root, devices):
    """A machine with so many PCI functions of 64 registers."""
    for device in range(devices):
        function = root / f"bus/pci/devices/0000:00:{device:02x}.0"
        function.mkdir(parents=True)
        for name, value in (("vendor", "0x1234"), ("device", "0x5678"), ("class", "0x020000")):
            (function / name).write_text(value + "\n")
        (function / "config").write_bytes(b"".join((0x56781234 + i).to_bytes(4, "little") for i in range(64)))


PCI_EXAMPLE = ("00:00.0", "0x000", "device and vendor id", "0x56781234")


class Story(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = Path(place.name)
        (self.place / "sys").mkdir()

    def agent(self, before=""):
        """The agent on the tree `sys`. $START counts its starts; `before` is shell text that runs before each."""
        script = self.place / "agent"
        script.write_text(f"#!/bin/sh\nSTART=$(($(cat '{self.place}/start' 2>/dev/null || echo 0) + 1))\n"
                          f"echo $START >'{self.place}/start'\n{before}\n"
                          f"exec '{AGENT}' --sysfs '{self.place}/sys' \"$@\"\n")
        script.chmod(0o700)
        return script

    def tell(self, agent):
        """(exit code, lines) of the demo"""
        done = subprocess.run([DEMO, str(agent), TRACE_READER, str(self.place / "folder")], text=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertNotIn("\033", done.stdout)
        self.assertNotIn("\r", done.stdout)
        lines = done.stdout.splitlines()
        self.assertEqual([line for line in lines if len(line) > 100], [])
        return done.returncode, lines

    def every(self, pattern, lines):
        return [match.groups() for line in lines if (match := pattern.fullmatch(line))]

    def lives(self, lines):
        """The lines of each life, each with what belongs to it."""
        starts = [i for i, line in enumerate(lines) if re.match(r"Life \d:", line)] + [lines.index("What happened")]
        self.assertEqual(len(starts), 5, lines)
        return [lines[starts[i]:starts[i + 1]] for i in range(4)]

    def assertTold(self, lines, registers, example):
        """All lives agree with each other, and each reads the example."""
        first, *others = self.lives(lines)
        ((process, written, of),) = self.every(KILLED_FILLING, first)
        self.assertEqual(int(of), registers)
        self.assertTrue(0 < int(written) < registers, written)
        kills = [(process, "1", written)] + [kill for life in others for kill in self.every(KILLED_REWRITING, life)]
        self.assertEqual(len(kills), 3)
        processes, fates, equals = [process], [], []
        for number, life in enumerate(others, 1):
            dead, last_round, _ = kills[number - 1]
            ((process,),) = self.every(OPENS, life)
            processes.append(process)
            ((in_flight, fate),) = self.every(IN_FLIGHT, life)
            ((completed, equal, lost, strange),) = self.every(COMPLETED, life)
            expected = int(written) if number == 1 else registers - (in_flight is not None)
            self.assertEqual([int(n) for n in (completed, equal, lost, strange)], [expected, expected, 0, 0], life)
            found = sum(int(row[3]) for row in self.every(FILLING, life))
            self.assertEqual(found, expected + (in_flight is not None and fate != "nothing yet"), life)
            values = self.every(VALUE, life)
            if in_flight not in ("agent 0x000", "agent 0x004", "agent 0x008"):
                self.assertEqual(values[:3], [("agent", "0x000", "written by process", dead), ("agent", "0x004", "in life", str(number)),
                                              ("agent", "0x008", "in round", last_round)], life)
            if example is not None:
                self.assertEqual(values[3:], example, life)
            fates.append(fate)
            equals.append(equal)
        self.assertEqual(len(set(processes)), 4)
        self.assertPicture(lines, registers, processes, kills, fates, equals, int(kills[2][1]) + 1)

    def assertPicture(self, lines, registers, processes, kills, fates, equals, last_round):
        _, *others = self.lives(lines)
        writes = [kill[2] for kill in kills] + [str(registers)]
        entries = [int(kills[0][2])] + 3 * [registers]
        found = ["nothing"] + [str(sum(int(row[3]) for row in self.every(FILLING, life))) for life in others]
        within = ["within a write" if fate else "between two writes" for fate in fates]

        def row(name, *cells):
            return (name.ljust(11) + "".join(cell.ljust(22) for cell in cells)).rstrip()

        def box(*texts):
            return ["| " + text.ljust(17) + "|" for text in texts]

        def bar(part):
            filled = 18 if part == registers else min(max(18 * part // registers, 1), 17)
            return "[" + filled * "#" + (18 - filled) * "." + "]"

        picture = [
            row("", "life 1", "life 2", "life 3", "life 4"),
            row("", *4 * ["+------------------+"]),
            row("processes", *box(*("process " + process for process in processes))),
            row("", *box(*("finds " + number for number in found))),
            row("", *box(*(number + " writes" for number in writes))),
            row("", *3 * ["+XXXXX SIGKILL XXXX+"], "+-- ends by itself -+"),
            row("", "            | writes", *3 * ["  ^ finds   | writes"]),
            row("", "            v", *3 * ["  |         v"]),
            "memory     " + 86 * "=",
            row("", *map(bar, entries)),
            row("entries", *(f"{number} of {registers}" for number in entries)),
            row("round", *(kill[1] for kill in kills), str(last_round)),
            "",
            row("kill hit", "the first fill,", "the rewriting,", "the rewriting,"),
            row("", *within),
            row("next found", *(equal + " as written" for equal in equals)),
            row("", *(FATES[fate] for fate in fates)),
            row("lost", "0", "0", "0"),
            "",
            "Every completed write survived 3 kills.",
            f"  The regions and the trace are plain files in {self.place}/folder;",
            "  od -A d -t x4 shows what is in a region.",
        ]
        self.assertEqual(lines[lines.index("What happened") + 1:], picture)

    def test_on_this_machine(self):
        code, lines = self.tell(AGENT)
        self.assertEqual(code, 0, lines)
        self.assertTold(lines, int(self.every(KILLED_FILLING, lines)[0][2]), None)

    def test_on_a_machine_with_many_pci_devices(self):
        pci(self.place / "sys", 12)
        code, lines = self.tell(self.agent())
        self.assertEqual(code, 0, lines)
        self.assertTold(lines, 12 * 64 + 3, [PCI_EXAMPLE])
        at = lines.index("  device          what it is                 region                       agreed addr.  slots")
        self.assertEqual(lines[at + 1:at + 15], [
            "  agent           synthetic: its own state   CacheTable-7-0-493514399     0x40000000        3",
            *(f"  {f'00:{device:02x}.0':15} 1234:5678 network          {f'CacheTable-7-{8 * device}-2040173435':28} "
              f"0x{0x40001000 + 0x1000 * device:08x}       64" for device in range(9)),
            "  and 3 more",
            "  agreed addr.: the same for every process, but made up by the `shm` back end; no bus knows it",
            "  agent: synthetic, 3 registers of its own that change all the time, as hardware's seldom do",
            "  The agent spreads its first fill over 2 s, for the kill to come in between.",
        ])
        _, second, third, _ = self.lives(lines)
        self.assertEqual([row[0] for row in self.every(FILLING, second)],
                         ["agent", *(f"00:{device:02x}.0" for device in range(9)), "and 3 more"])
        self.assertEqual(self.every(FILLING, third), [("all tables", 40 * "#", "", "771", "771")])

    def test_on_a_machine_without_a_pci_bus(self):
        network(self.place / "sys")
        code, lines = self.tell(self.agent())
        self.assertEqual(code, 0, lines)
        self.assertIn("  wire0           counters                   CacheTable-7-5-2040173435    0x40001000       24", lines)
        self.assertTold(lines, 27, [("wire0", "0x000", "rx_bytes", "0x00001000")])

    def test_on_a_machine_without_devices(self):
        code, lines = self.tell(self.agent())
        self.assertEqual(code, 0, lines)
        self.assertIn("  This machine shows neither PCI devices nor network interfaces: there is no more.", lines)
        self.assertEqual([row[3] for row in self.every(FILLING, lines)], ["2", "3", "3"])
        self.assertEqual(lines[-3], "Every completed write survived 3 kills.")

    def test_what_is_lost_or_was_never_written_is_noticed(self):
        pci(self.place / "sys", 12)
        region = "$PINBUF_DIR/CacheTable-7-{}-2040173435"
        code, lines = self.tell(self.agent(f"""
            poke() {{ printf "$1" | dd of="$2" bs=1 seek=$3 conv=notrunc status=none; }}
            case $START in
                2) poke '\\004\\000\\000\\000' "{region.format(11 * 8)}" {8 + 5 * 8} ;; # key 4 in slot 5 of 00:0b.0
                3) poke '\\252\\252\\252\\252' "{region.format(0)}" {8 + 4} ;; # the value in slot 0 of 00:00.0
            esac"""))
        self.assertEqual(code, 1, lines)
        _, second, third, fourth = self.lives(lines)
        written = self.every(KILLED_FILLING, lines)[0][1]
        self.assertEqual(self.every(COMPLETED, second), [(written, written, "0", "1")])
        ((in_flight, _),) = self.every(IN_FLIGHT, third)
        ((completed, equal, lost, strange),) = self.every(COMPLETED, third)
        lines_lost = [line for line in third if line.startswith("  LOST")]
        if in_flight != "00:00.0 0x000":  # a write in flight to that very register says nothing of what is there
            self.assertEqual(lines_lost, ["  LOST 00:00.0 register 0x000: written 0x56781234, found 0xaaaaaaaa"])
            self.assertEqual((int(completed) - int(equal), lost, strange), (1, "1", "0"))
            self.assertIn("lost       0                     1                     0", lines)
        self.assertEqual(self.every(COMPLETED, fourth)[0][2:], ("0", "0"))
        self.assertEqual(lines[-3], "Something was lost, or found that was never written.")


if __name__ == "__main__":
    DEMO, AGENT, TRACE_READER = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
