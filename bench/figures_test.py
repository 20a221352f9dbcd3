#!/usr/bin/env python3
"""figures_test.py - goals are judged as goals.json says they are."""

import re
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import figures  # noqa: E402


def run(values, bits=64, topic="map", unit="ns"):
    """A run of figures: {(what, who): value}."""
    found = [{"what": what, "who": who, "unit": unit, "value": value, "spread": 0} for (what, who), value in values.items()]
    return {"topic": topic, "bits": bits, "figures": found}


def goal(match, at_most, **more):
    return {"row": "4", "part": "insert", "topic": "map", "match": match, "at_most": at_most, **more}


class Judging(unittest.TestCase):
    def verdicts(self, measured, *goals):
        return [(line.what, line.peer, round(line.ratio, 3), line.goal, line.verdict)
                for line in figures.judge(measured, goals)]

    def test_a_goal_is_met_up_to_its_limit_and_near_up_to_a_quarter_above(self):
        self.assertEqual([figures.verdict(ratio, 0.4) for ratio in (0.4, 0.41, 0.5, 0.51)],
                         ["met", "near", "near", "missed"])
        self.assertEqual(figures.verdict(0.1, None), "")

    def test_a_goal_holds_for_what_matches_as_a_whole(self):
        measured = run({("Insert/10", "ours"): 1, ("Insert/10", "std"): 4, ("Insert/100", "ours"): 3, ("Insert/100", "std"): 4})
        self.assertEqual(self.verdicts(measured, goal("Insert/10", {"std": 0.5})),
                         [("Insert/10", "std", 0.25, 0.5, "met"), ("Insert/100", "std", 0.75, None, "")])

    def test_a_goal_may_differ_between_word_sizes_or_hold_for_one_alone(self):
        values = {("Insert/10", "ours"): 3, ("Insert/10", "std"): 4}
        limits = goal("Insert/10", {"std": {"32": 1.0}})
        self.assertEqual(self.verdicts(run(values, bits=32), limits), [("Insert/10", "std", 0.75, 1.0, "met")])
        self.assertEqual(self.verdicts(run(values, bits=64), limits), [("Insert/10", "std", 0.75, None, "")])

    def test_ours_is_compared_with_itself_through_the_replacement(self):
        measured = run({("Hit/random/10", "ours"): 2, ("Hit/stride/10", "ours"): 4})
        self.assertEqual(self.verdicts(measured, goal(r"(\w+)/stride/(\d+)", {"ours": 1.5}, itself=r"\1/random/\2")),
                         [("Hit/stride/10", "Hit/random/10", 2.0, 1.5, "missed")])

    def test_a_limit_is_in_the_figures_own_unit(self):
        measured = run({("SlowestInsert/10", "ours"): 250}, unit="us")
        self.assertEqual(self.verdicts(measured, goal("SlowestInsert/.*", {"limit": 1000})),
                         [("SlowestInsert/10", "limit", 0.25, 1, "met")])

    def test_a_peer_that_was_left_out_has_no_line(self):
        self.assertEqual(self.verdicts(run({("Insert/10", "ours"): 3}), goal("Insert/10", {"std": 0.5})), [])

    def test_sizes_are_sorted_as_numbers(self):
        self.assertEqual(sorted(["Hit/100", "Hit/20", "Fill/3"], key=figures.by_size), ["Fill/3", "Hit/20", "Hit/100"])

    def test_the_summary_counts_verdicts_by_row(self):
        measured = run({("Insert/10", "ours"): 1, ("Insert/10", "std"): 4, ("Insert/20", "ours"): 9, ("Insert/20", "std"): 4})
        self.assertEqual(figures.summary(figures.judge(measured, [goal("Insert/.*", {"std": 0.5})])), {"4": ("insert", 1, 0, 1)})


class Files(unittest.TestCase):
    def test_a_run_that_was_made_again_takes_the_place_of_the_old_one(self):
        old = [run({("Insert/10", "ours"): 1}), run({("Insert/10", "ours"): 2}, bits=32)]
        new = [run({("Insert/10", "ours"): 3})]
        self.assertEqual([(each["bits"], each["figures"][0]["value"]) for each in figures.merge(old, new)], [(64, 3), (32, 2)])

    def test_what_is_saved_is_loaded_with_a_line_for_each_figure(self):
        runs = [run({("Insert/10", "ours"): 1, ("Insert/10", "std"): 2})]
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "figures.json"
            self.assertEqual(figures.load(path), [])
            figures.save(path, runs)
            self.assertEqual(figures.load(path), runs)
            self.assertEqual(path.read_text().count("\n"), 6)  # [, the run, two figures, ]}, ]


class Goals(unittest.TestCase):
    def test_every_goal_is_well_formed(self):
        for each in figures.load(figures.GOALS):
            with self.subTest(each["part"], match=each["match"]):
                self.assertLessEqual(set(each), {"row", "part", "topic", "match", "itself", "at_most"})
                re.compile(each["match"])
                for limit in each["at_most"].values():
                    limits = limit.values() if isinstance(limit, dict) else [limit]
                    self.assertTrue(all(value > 0 for value in limits))


if __name__ == "__main__":
    unittest.main()
