#!/usr/bin/env python3
"""What tools/bench_table.py writes into docs/performance.md, without running a benchmark."""
import importlib.util
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SPEC = importlib.util.spec_from_file_location("bench_table", ROOT / "tools" / "bench_table.py")
bench_table = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(bench_table)


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


class Table(unittest.TestCase):
    def test_has_a_row_for_each_operation_and_a_column_for_each_peer(self):
        times = {"load/small/tova": 100.0, "load/small/b": 41.0, "load/small/a": 0.34,
                 "lookup/tova": 3.0, "lookup/a": 6.0, "alone/tova": 1.0, "missing/a": 1.0}
        self.assertEqual("| operation | a | b |\n"
                         "|---|---:|---:|\n"
                         "| load/small | 0.00340 | 0.410 |\n"
                         "| lookup | 2.00 |  |", bench_table.table(times))


class Page(unittest.TestCase):
    cpuinfo = ("processor\t: 0\nvendor_id\t: Some\nmodel name\t: Some CPU 9000\n"
               "processor\t: 1\nmodel name\t: Some CPU 9000\n")
    meminfo = "MemTotal:       25165824 kB\nMemFree:  1 kB\n"
    os_release = 'NAME="Some"\nPRETTY_NAME="Some Linux 12 (name)"\n'

    def test_names_processor_distribution_and_compiler(self):
        line = bench_table.describe_machine(self.cpuinfo, self.meminfo, self.os_release, "12.2.0")
        self.assertEqual("Some CPU 9000, 2 cores, 24 GiB; Some Linux 12 (name); g++ 12.2.0, -O2", line)

    def test_names_the_machine_where_the_processor_has_no_model(self):
        line = bench_table.describe_machine("processor\t: 0\n", self.meminfo, "", "12.2.0")
        self.assertRegex(line, r"^\S+, 1 cores, 24 GiB; unknown distribution; g\+\+ 12\.2\.0, -O2$")

    def test_begins_with_the_machine_and_has_a_section_for_each_family(self):
        text = bench_table.page("the machine", [("dates", "| a |"), ("xml", "| b |")])
        self.assertTrue(text.startswith("# Performance\n"))
        self.assertIn("\nMeasured on: the machine.\n", text)
        self.assertTrue(text.endswith("\n## dates\n\n| a |\n\n## xml\n\n| b |\n"))

    def test_of_the_tree_is_one_that_the_script_writes(self):
        text = (ROOT / "docs" / "performance.md").read_text()
        head = bench_table.page("X", []).split("X")[0]
        self.assertTrue(text.startswith(head))
        self.assertRegex(text, r"\nMeasured on: [^;\n]+ cores, \d+ GiB; [^;\n]+; g\+\+ [\d.]+, -O2\.\n")
        self.assertNotRegex(text, r"\| 0\.0+ \|")
        self.assertIsNone(re.search(r"Linux \d+\.\d+", text), "a kernel version")


if __name__ == "__main__":
    unittest.main()
