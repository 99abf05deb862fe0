#!/usr/bin/env python3
"""How tools/bench_table.py judges ratios and what it writes, without running a benchmark."""
import importlib.util
import json
import pathlib
import re
import unittest
import unittest.mock
import xml.dom.minidom

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SPEC = importlib.util.spec_from_file_location("bench_table", ROOT / "tools" / "bench_table.py")
bench_table = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(bench_table)

ROW = {"row": 7, "title": "Loading & more", "program": "tables", "cells": {
    "load/small": {"best": 1.0, "floor": 2.0},
    "load/*": {"a c": 0.5}}}
RESULTS = {"load/large": {"a": 0.25, "b": 4.0, "plain": 0.9},
           "load/small": {"a": 0.2, "b": 0.8, "floor": 3.0},
           "lookup": {"a": 1.0}}


class RatioText(unittest.TestCase):
    def test_has_at_least_three_significant_digits(self):
        for ratio, text in [(1, "1.00"), (1.234, "1.23"), (1.236, "1.24"), (12.34, "12.3"),
                            (123.4, "123"), (1234.5, "1234"), (0.5, "0.500"), (0.04123, "0.0412"),
                            (0.0033912, "0.00339"), (1e-9, "0.00000000100")]:
            self.assertEqual(text, bench_table.ratio_text(ratio), ratio)

    def test_keeps_three_digits_where_rounding_adds_one(self):
        for ratio, text in [(0.9996, "1.00"), (9.996, "10.0"), (99.96, "100"), (0.0009996, "0.00100")]:
            self.assertEqual(text, bench_table.ratio_text(ratio), ratio)

    def test_is_never_zero(self):
        for exponent in range(-12, 6):
            for digit in range(1, 10):
                text = bench_table.ratio_text(digit * 10.0 ** exponent)
                self.assertRegex(text, "[1-9]", (digit, exponent))
                self.assertRegex(text, r"^[0-9]+(\.[0-9]+)?$")

    def test_refuses_what_is_no_ratio_of_times(self):
        for ratio in [0, -1]:
            with self.assertRaises(ValueError):
                bench_table.ratio_text(ratio)


class Ratios(unittest.TestCase):
    def test_come_from_one_round_each_before_the_median_is_taken(self):
        # The second round is slow for both libraries, the third for the peer alone.
        rounds = [{"tova": 10.0, "a": 20.0}, {"tova": 60.0, "a": 100.0}, {"tova": 10.0, "a": 50.0}]
        self.assertEqual({"a": 0.5}, bench_table.ratios(rounds))

    def test_leave_out_a_library_that_failed_in_a_round(self):
        rounds = [{"tova": 1.0, "a": 1.0, "b": 1.0}, {"tova": 1.0, "b": 1.0}]
        self.assertEqual({"b": 1.0}, bench_table.ratios(rounds))

    def test_are_read_from_a_report_in_nanoseconds(self):
        report = {"benchmarks": [
            {"run_name": "load/small/tova", "run_type": "iteration", "cpu_time": 2.0, "time_unit": "us"},
            {"run_name": "load/small/a/iterations:20", "run_type": "iteration", "cpu_time": 3.0,
             "time_unit": "ms"},
            {"run_name": "load/small/b", "error_occurred": True, "error_message": "has another result"}]}
        self.assertEqual(({"tova": 2e3, "a": 3e6}, ["load/small/b has another result"]),
                         bench_table.times_of(report))


    def test_of_the_plain_form_come_from_the_portable_library_where_the_row_says_so(self):
        rows = [{"row": 1, "program": "tables", "kernels": True, "cells": {"load/*": {"best": 1}}},
                {"row": 2, "program": "tables", "cells": {"lookup": {"best": 1}}}]
        self.assertTrue(bench_table.uses_kernels(rows, "tables", "load/small"))
        self.assertFalse(bench_table.uses_kernels(rows, "tables", "lookup"))
        self.assertFalse(bench_table.uses_kernels(rows, "chairs", "load/small"))

    def test_of_the_plain_form_are_those_of_the_cell_if_it_has_any(self):
        calls = []

        def run(program, cell, libraries, seconds, environment=None):
            calls.append((libraries, environment and environment["LD_LIBRARY_PATH"]))
            times = {"tova": 7.0} if environment else {"tova": 2.0, "a": 1.0}
            return (times if cell == "load/small" else {**times, "plain": 3.0}), []

        with unittest.mock.patch.object(bench_table, "run_program", run):
            self.assertEqual(({"tova": 2.0, "a": 1.0, "plain": 7.0}, []),
                             bench_table.run_cell("program", "load/small", 1, "forms/portable"))
            self.assertEqual([("[^/]+", None), ("tova", "forms/portable")], calls)
            self.assertEqual({"tova": 2.0, "a": 1.0, "plain": 3.0},
                             bench_table.run_cell("program", "load/large", 1, "forms/portable")[0])
            self.assertEqual({"tova": 2.0, "a": 1.0},
                             bench_table.run_cell("program", "load/small", 1)[0])


class Judging(unittest.TestCase):
    def test_takes_the_slowest_ratio_as_that_to_the_best_peer(self):
        self.assertEqual(("b", 0.8), bench_table.best_peer(RESULTS["load/small"]))
        self.assertEqual(("a", 0.2), bench_table.best_peer(RESULTS["load/small"], ["a"]))
        self.assertIsNone(bench_table.best_peer({"floor": 1.0, "plain": 1.0}))

    def test_of_a_limit_that_is_reached_exactly_says_met(self):
        for ratio, verdict in [(0.49, True), (0.5, True), (0.51, False)]:
            self.assertIs(verdict, bench_table.is_met(bench_table.judge({"a": ratio}, {"a": 0.5})))

    def test_needs_every_limit_that_could_be_measured(self):
        limits = bench_table.judge(RESULTS["load/small"], {"best": 1.0, "floor": 2.0, "missing": 0.1})
        self.assertEqual([0.8, 3.0, None], [limit.ratio for limit in limits])
        self.assertIs(False, bench_table.is_met(limits))
        self.assertIs(True, bench_table.is_met(limits[:1] + limits[2:]))
        self.assertIsNone(bench_table.is_met(limits[2:]))

    def test_says_what_each_limit_refers_to(self):
        limits = bench_table.judge(RESULTS["load/small"], {"best": 1, "floor": 2, "a b": 0.5, "c": 0.1})
        self.assertEqual(["1 of the best peer: met", "2 of the floor: missed (3.00)",
                          "0.5 of a, b: missed (0.800)", "0.1 of c: skipped, not installed"],
                         [bench_table.limit_text(limit) for limit in limits])

    def test_uses_the_first_pattern_that_matches(self):
        self.assertEqual({"best": 1.0, "floor": 2.0}, bench_table.limits_of(ROW, "load/small"))
        self.assertEqual({"a c": 0.5}, bench_table.limits_of(ROW, "load/large"))
        self.assertIsNone(bench_table.limits_of(ROW, "lookup"))


class Regressions(unittest.TestCase):
    baseline = {"load": {"a": 1.0, "floor": 2.0}}

    def found(self, **ratios):
        return bench_table.regressions({"load": ratios}, self.baseline)

    def test_are_cells_more_than_a_quarter_slower_than_before(self):
        self.assertEqual([], self.found(a=1.25, floor=2.5))
        self.assertEqual(["load: 1.30 of a, was 1.00"], self.found(a=1.3, floor=2.7))

    def test_are_not_reported_where_one_reference_alone_has_changed(self):
        self.assertEqual([], self.found(a=5.0, floor=2.0))
        self.assertEqual([], self.found(a=1.0, floor=9.0))

    def test_need_a_reference_that_both_runs_have(self):
        self.assertEqual([], self.found(b=9.0))
        self.assertEqual([], bench_table.regressions({"new": {"a": 9.0}}, self.baseline))


class Selection(unittest.TestCase):
    programs = {"tables": ["lookup", "load/small"], "other": ["load/small"]}

    def test_without_arguments_is_every_cell_that_has_limits(self):
        self.assertEqual([("tables", "load/small")], bench_table.select([ROW], self.programs, []))

    def test_of_a_row_is_its_cells_and_of_a_program_all_of_them(self):
        self.assertEqual([("tables", "load/small")], bench_table.select([ROW], self.programs, ["7"]))
        self.assertEqual([("tables", "lookup"), ("tables", "load/small")],
                         bench_table.select([ROW], self.programs, ["tables"]))

    def test_refuses_what_is_neither(self):
        with self.assertRaises(SystemExit):
            bench_table.select([ROW], self.programs, ["8"])


class Page(unittest.TestCase):
    cpuinfo = ("processor\t: 0\nvendor_id\t: Some\nmodel name\t: Some CPU 9000\n"
               "processor\t: 1\nmodel name\t: Some CPU 9000\n")
    meminfo = "MemTotal:       25165824 kB\nMemFree:  1 kB\n"
    os_release = 'NAME="Some"\nPRETTY_NAME="Some Linux 12 (name)"\n'
    notes = {"row 7": "Always here.", "load/sm*": "Small ones cost more.", "load/large": "Not here.",
             "row 8": "Nor here."}

    def test_names_processor_distribution_and_compiler(self):
        line = bench_table.describe_machine(self.cpuinfo, self.meminfo, self.os_release, "12.2.0")
        self.assertEqual("Some CPU 9000, 2 cores, 24 GiB; Some Linux 12 (name); g++ 12.2.0, -O2", line)

    def test_names_the_machine_where_the_processor_has_no_model(self):
        line = bench_table.describe_machine("processor\t: 0\n", self.meminfo, "", "12.2.0")
        self.assertRegex(line, r"^\S+, 1 cores, 24 GiB; unknown distribution; g\+\+ 12\.2\.0, -O2$")

    def test_has_a_table_for_each_row_with_its_chart_and_the_notes_on_what_is_missed(self):
        text = bench_table.page("the machine", [ROW], {"tables": RESULTS}, self.notes)
        self.assertTrue(text.startswith("# Performance\n"))
        self.assertIn("\nMeasured on: the machine.\n\n1 of 2 cells are within their limits.\n", text)
        self.assertTrue(text.endswith(
            "\n## 7. Loading & more\n"
            "\n![Ratios and limits: Loading & more](images/performance_07.svg)\n"
            "\n| cell | best peer | of the best peer | of the floor | of the plain form | limits |\n"
            "|---|---|---:|---:|---:|---|\n"
            "| load/small | b | 0.800 | 3.00 |  | 1 of the best peer: met; "
            "2 of the floor: missed (3.00) |\n"
            "| load/large | b | 4.00 |  | 0.900 | 0.5 of a, c: met |\n"
            "\nAlways here.\n"
            "\nSmall ones cost more.\n"), text)

    def test_is_the_same_from_the_baseline_that_is_written_with_it(self):
        exact = {"tables": {"load/large": {"c": 0.50004}, "load/small": {"a": 0.99996}}}
        kept = json.loads(json.dumps(bench_table.rounded(exact)))
        self.assertEqual(bench_table.page("X", [ROW], bench_table.rounded(exact), {}),
                         bench_table.page("X", [ROW], kept, {}))
        self.assertEqual({"c": 0.5}, kept["tables"]["load/large"])

    def test_leaves_out_a_row_without_results(self):
        self.assertNotIn("Loading", bench_table.page("the machine", [ROW], {}, {}))

    def test_reads_notes_by_their_headings(self):
        self.assertEqual({"row 1": "One.\n\nTwo.", "a/*": "Three."},
                         bench_table.read_notes("# Title\n\nIntro.\n\n## row 1\n\nOne.\n\nTwo.\n\n"
                                                "## a/*\n\nThree.\n"))


class Chart(unittest.TestCase):
    def setUp(self):
        self.text = bench_table.chart(ROW, bench_table.judged(ROW, RESULTS))
        self.svg = xml.dom.minidom.parseString(self.text)

    def all_of(self, name, kind):
        return [one for one in self.svg.getElementsByTagName(name) if one.getAttribute("class") == kind]

    def test_shows_the_limit_that_is_furthest_from_being_met(self):
        # load/small is at 0.8 of its bound for the best peer, and at 1.5 times its bound for the floor.
        self.assertIn(">3.00 of floor, missed</text>", self.text)
        self.assertIn(">0.250 of a, met</text>", self.text)
        self.assertNotIn("of b", self.text)

    def test_has_a_longer_bar_for_a_larger_ratio_and_a_mark_at_each_limit(self):
        missed, met = self.all_of("rect", "missed"), self.all_of("rect", "met")
        self.assertEqual((1, 1), (len(missed), len(met)))
        self.assertGreater(float(missed[0].getAttribute("width")), float(met[0].getAttribute("width")))
        marks = [float(one.getAttribute("x1")) for one in self.all_of("line", "limit")]
        ends = [float(one.getAttribute("x")) + float(one.getAttribute("width"))
                for one in missed + met]
        self.assertEqual(2, len(marks))
        self.assertLess(marks[0], ends[0])
        self.assertGreater(marks[1], ends[1])

    def test_leaves_out_a_cell_whose_peers_are_not_installed(self):
        cells = bench_table.judged(ROW, {"load/large": {"b": 1.0}})
        self.assertNotIn("<rect", bench_table.chart(ROW, cells))

    def test_follows_the_color_scheme_and_has_no_background(self):
        self.assertIn("@media (prefers-color-scheme: dark)", self.text)
        self.assertNotIn('width="100%"', self.text)

    def test_stays_within_its_width(self):
        for mark in self.svg.getElementsByTagName("rect"):
            self.assertLessEqual(float(mark.getAttribute("x")) + float(mark.getAttribute("width")), 600)


class Tree(unittest.TestCase):
    rows = json.loads(bench_table.ROWS.read_text())

    def test_numbers_its_rows_in_order_and_names_programs_that_are_there(self):
        self.assertEqual(list(range(1, len(self.rows) + 1)), [row["row"] for row in self.rows])
        for row in self.rows:
            self.assertTrue((ROOT / "benchmarks" / f"{row['program']}.cpp").exists(), row["program"])
            for pattern, limits in row["cells"].items():
                self.assertTrue(limits, pattern)
                for bound in limits.values():
                    self.assertGreater(bound, 0, pattern)

    def test_has_notes_on_rows_that_are_there(self):
        numbers = {f"row {row['row']}" for row in self.rows}
        for heading in bench_table.read_notes(bench_table.NOTES.read_text()):
            self.assertTrue("/" in heading or heading in numbers, heading)

    def test_has_the_page_and_the_charts_that_its_baseline_gives(self):
        text = bench_table.PAGE.read_text()
        self.assertRegex(text, r"\nMeasured on: [^;\n]+ cores, \d+ GiB; [^;\n]+; g\+\+ [\d.]+, -O2\.\n")
        self.assertIsNone(re.search(r"Linux \d+\.\d+", text), "a kernel version")
        if not bench_table.BASELINE.exists():
            self.skipTest("no baseline: the page is from before it")
        baseline = json.loads(bench_table.BASELINE.read_text())
        notes = bench_table.read_notes(bench_table.NOTES.read_text())
        self.assertEqual(bench_table.page(baseline["machine"], self.rows, baseline["ratios"], notes),
                         text)
        for row in self.rows:
            cells = bench_table.judged(row, bench_table.program_results(baseline["ratios"], row))
            if cells:
                self.assertEqual(bench_table.chart(row, cells),
                                 (bench_table.IMAGES / bench_table.chart_name(row)).read_text())


if __name__ == "__main__":
    unittest.main()
