#!/usr/bin/python3
"""What the table of the benchmarks says, from figures given by hand."""
import importlib.util
import os
import unittest

PATH = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../bench/report.py")
spec = importlib.util.spec_from_file_location("report", PATH)
report = importlib.util.module_from_spec(spec)
spec.loader.exec_module(report)


def figure(value, **more):
    return {"name": "a click to the first frame", "value": value, "unit": "ms", **more}


class ReportTest(unittest.TestCase):
    def test_several_runs_give_their_median(self):
        merged = report.median_of([[figure(9, goal=50)], [figure(100, goal=50)], [figure(10, goal=50)]])
        self.assertEqual(merged, [figure(10, goal=50)])

    def test_a_tenth_more_is_not_worse(self):
        self.assertFalse(report.got_worse(figure(11), figure(10)))

    def test_more_than_a_tenth_is_worse(self):
        self.assertTrue(report.got_worse(figure(12), figure(10)))

    def test_a_small_difference_is_noise_whatever_its_share(self):
        self.assertFalse(report.got_worse(figure(0.5), figure(0.1)))

    def test_beside_a_floor_only_the_ratio_counts(self):
        self.assertFalse(report.got_worse(figure(40, ratio=1.5), figure(30, ratio=1.5)))
        self.assertTrue(report.got_worse(figure(30, ratio=1.7), figure(30, ratio=1.5)))

    def test_a_figure_that_was_not_saved_is_not_worse(self):
        self.assertFalse(report.got_worse(figure(10), None))

    def test_what_got_worse_is_marked(self):
        self.assertIn("WORSE", report.row(figure(20), figure(10)))
        self.assertNotIn("WORSE", report.row(figure(10), figure(10)))

    def test_a_goal_is_met_or_missed(self):
        self.assertTrue(report.row(figure(50, goal=50), None).endswith("met"))
        self.assertTrue(report.row(figure(51, goal=50), None).endswith("MISSED"))
        self.assertTrue(report.row(figure(51, ratio=1.4, goal=1.5), None).endswith("met"))

    def test_the_machine_is_named(self):
        self.assertIn(f"{os.cpu_count()} cores", report.machine())


unittest.main()
