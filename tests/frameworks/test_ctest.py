"""Tests of the ctest cases that modiff_add_suite makes: test_ctest.py BUILD-DIR"""

import re
import unittest

from frameworks_case import FrameworksCase

PROJECT = """
cmake_minimum_required(VERSION 3.22)
project(Night LANGUAGES NONE)
enable_testing()
find_package(MoDiffEngine REQUIRED)
modiff_add_suite(reports server/run/modiff.toml SHARDS 4 JOBS 2 LABELS nightly TIMEOUT 120)
modiff_add_suite(pages server/run/modiff.toml JOBS 2 OUT "some where" ARGS --format html "Sales.html")
"""


class CtestTest(FrameworksCase):
    def configure(self, project, *options, status=0):
        (self.root / "CMakeLists.txt").write_text(project)
        return self.call("cmake", "-S", self.root, "-B", self.root / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                         *options, status=status)

    def ctest(self, *options, status, **environment):
        """What failed, with ctest's word for it, and all that was said."""
        text = self.call("ctest", "--output-on-failure", *options, cwd=self.root / "build", status=status,
                         environment=environment)
        return dict(re.findall(r"^\s+\d+ - (\S+) \((.*)\)$", text, re.MULTILINE)), text

    def test_shards_give_the_counts_of_one_run(self):
        self.configure(PROJECT)
        out = self.root / "build/reports"
        failed, text = self.ctest("-j2", status=8, CI_NODE_TOTAL="3", CI_NODE_INDEX="2")
        self.assertEqual(failed, {"reports": "Failed"})  # differences, told once
        self.assertEqual(text.count("different  csv:reports/logistics/Masters/CSV/Consignments.csv"), 1)
        self.assertEqual(self.counts(out / "all"), self.local)
        self.assertIn(f'tests="{sum(self.local.values())}"', (out / "junit.xml").read_text(encoding="utf-8"))
        self.assertEqual(sum(self.counts(self.root / "build/some where/all").values()), 2)
        self.assertIn("Total Tests: 6", self.ctest("-N", "-L", "nightly", status=0)[1])
        described = self.call("ctest", "--show-only=json-v1", cwd=self.root / "build")
        self.assertEqual((described.count('"TIMEOUT"'), described.count('"PROCESSORS"')), (4, 5))

        failed, _ = self.ctest("-R", "^reports$", status=8, VICTIM="3")  # brings all that it needs
        self.assertEqual(failed, {"reports.shard3of4": "Failed", "reports": "Not Run"})
        self.assertFalse((out / "all/run.jsonl").exists())
        self.ctest("--rerun-failed", status=8)
        self.assertEqual(self.counts(out / "all"), self.local)
        (out / "3/run.jsonl").write_text((out / "2/run.jsonl").read_text(encoding="utf-8"), encoding="utf-8")
        self.ctest("-R", "^reports$", "-FS", ".*", status=8)  # without begin and shards: what lies there does not fit
        self.assertEqual(self.counts(out / "all"), self.local)  # as it was

    def test_what_passes_and_what_compares_nothing(self):
        self.configure(PROJECT.replace("SHARDS 4", "SHARDS 4 ARGS --format csv Journal").replace(
            "Sales.html", "NoSuchPair"))
        failed, text = self.ctest(status=8)
        self.assertEqual(failed, {"pages": "Failed"})  # three of the shards are empty, which is no failure
        self.assertIn("the filter NoSuchPair meets no pair", text)

    def test_mistakes_are_told(self):
        for old, new, message in (("modiff.toml S", "no.toml S", "there is no configuration"),
                                  ("SHARDS 4", "SHARDS 0", "SHARDS takes a number from 1, not \"0\""),
                                  ("LABELS nightly", "nightly", "not understood, or lacks a value: nightly")):
            self.assertIn(message, self.configure(PROJECT.replace(old, new), status=1))
        hidden = self.prefix / "bin/hidden"
        self.modiff.rename(hidden)
        self.addCleanup(hidden.rename, self.modiff)
        text = " ".join(self.configure(PROJECT, "-UMODIFF_EXECUTABLE", status=1).split())
        self.assertIn("there is no program modiff", text)
        self.configure(PROJECT, f"-DMODIFF_EXECUTABLE={hidden}")


if __name__ == "__main__":
    unittest.main()
