"""Tests of suites in the hands of runners: test_frameworks.py BUILD-DIR. Each gives the counts of one local run, and
notices a shard that is killed."""

import ast
import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = os.path.abspath(sys.argv.pop(1))
DYING = """#!/bin/sh
case " $* ${TEST_SHARD_INDEX-}${CI_NODE_INDEX-}" in *" --shard $VICTIM/"* | " run "*" $VICTIM") kill -9 $$ ;; esac
exec "${0%/*}/modiff.real" "$@"
"""
PROJECT = """
cmake_minimum_required(VERSION 3.22)
project(Night LANGUAGES NONE)
enable_testing()
find_package(MoDiffEngine REQUIRED)
modiff_add_suite(reports server/run/modiff.toml SHARDS 4 JOBS 2 LABELS nightly TIMEOUT 120)
modiff_add_suite(pages server/run/modiff.toml JOBS 2 OUT "some where" ARGS --format html "Sales.html")
"""


class FrameworksTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.prefix = pathlib.Path(os.path.realpath(cls.enterClassContext(tempfile.TemporaryDirectory())))
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True, stdout=subprocess.DEVNULL)
        cls.share = cls.prefix / "share/modiff"
        cls.modiff = cls.prefix / "bin/modiff"
        cls.modiff.rename(cls.prefix / "bin/modiff.real")
        cls.modiff.write_text(DYING)
        cls.modiff.chmod(0o755)

    def setUp(self):
        self.root = pathlib.Path(os.path.realpath(self.enterContext(tempfile.TemporaryDirectory())))
        self.run_dir = self.root / "server/run"
        shutil.copytree(SOURCE / "samples/server", self.root / "server")
        self.call("modiff", "install-tools", self.root)
        self.call("modiff", "run", "--out", self.root / "local", cwd=self.run_dir, status=1)
        self.local = self.counts("local")
        self.assertGreater(len(self.local), 2)

    def counts(self, directory):
        """The counts of a complete record."""
        end = json.loads((self.root / directory / "run.jsonl").read_text(encoding="utf-8").splitlines()[-1])
        return +collections.Counter(end["counts"] if end["complete"] else [])

    def call(self, *command, status=0, environment=(), **options):
        """Runs a program without the variables of this one's runner, and returns all that it says."""
        variables = {"PATH": f"{self.prefix}/bin:/usr/bin:/bin", "HOME": str(self.root), "VICTIM": "none"}
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, check=False,
                              env={**variables, **dict(environment)}, **options)
        self.assertEqual(done.returncode, status, done.stdout.decode(errors="replace"))
        return done.stdout.decode(errors="replace")

    def ctest(self, *options, status=8, **environment):
        """What failed, with ctest's word for it, and all that was said."""
        text = self.call("ctest", "--output-on-failure", *options, cwd=self.root / "build", status=status,
                         environment=environment)
        return dict(re.findall(r"^\s+\d+ - (\S+) \((.*)\)$", text, re.MULTILINE)), text

    def configure(self, project, *options, status=0):
        (self.root / "CMakeLists.txt").write_text(project)
        return self.call("cmake", "-S", self.root, "-B", self.root / "build", *options, status=status)

    def test_ctest(self):
        self.configure(PROJECT)
        failed, text = self.ctest("-j2", CI_NODE_TOTAL="3", CI_NODE_INDEX="2")
        self.assertEqual((failed, text.count("different  csv:")), ({"reports": "Failed"}, 1))  # differences, told once
        self.assertEqual(self.counts("build/reports/all"), self.local)
        self.assertIn(f'tests="{self.local.total()}"', (self.root / "build/reports/junit.xml").read_text("utf-8"))
        self.assertEqual(self.counts("build/some where/all"), {"passed": 2})
        text = self.call("ctest", "--show-only=json-v1", cwd=self.root / "build")
        self.assertEqual([text.count(f'"{word}"') for word in ("TIMEOUT", "PROCESSORS", "nightly")], [4, 5, 6])

        failed, _ = self.ctest("-R", "^reports$", VICTIM="3")  # brings all that it needs
        self.assertEqual(failed, {"reports.shard3of4": "Failed", "reports": "Not Run"})
        self.assertFalse((self.root / "build/reports/all/run.jsonl").exists())
        self.ctest("--rerun-failed")
        self.assertEqual(self.counts("build/reports/all"), self.local)

        self.configure(PROJECT.replace("SHARDS 4", "SHARDS 4 ARGS Journal").replace("Sales.html", "NoSuchPair"))
        self.assertEqual(self.ctest()[0], {"pages": "Failed"})  # three of the shards are empty, which is no failure

    def test_mistakes_in_a_project(self):
        for old, new, message in (("modiff.toml S", "no.toml S", "there is no configuration"),
                                  ("SHARDS 4", "SHARDS 0", 'SHARDS takes a number from 1, not "0"'),
                                  ("LABELS nightly", "nightly", "not understood, or lacks a value: nightly")):
            self.assertIn(message, self.configure(PROJECT.replace(old, new), status=1))
        hidden = self.modiff.rename(self.prefix / "hidden")
        self.addCleanup(hidden.rename, self.modiff)
        self.assertIn("there is no program modiff", self.configure(PROJECT, "-UMODIFF_EXECUTABLE", status=1))
        self.configure(PROJECT, f"-DMODIFF_EXECUTABLE={hidden}")

    def bazel(self, index, *options, shards=4, status, **environment):
        """Runs a shard as Bazel does: among links to the files."""
        outputs = self.root / f"outputs{index}"
        variables = {"TEST_SRCDIR": self.root / "runfiles", "TEST_WORKSPACE": "night", "TEST_TMPDIR": self.root,
                     "TEST_TOTAL_SHARDS": shards, "TEST_SHARD_INDEX": index, "TEST_UNDECLARED_OUTPUTS_DIR": outputs,
                     "TEST_SHARD_STATUS_FILE": self.root / f"status{index}", "XML_OUTPUT_FILE": f"{outputs}.xml"}
        return self.call(self.share / "bazel/modiff_test.sh", "server/run/modiff.toml", "modiff", *options, status=status,
                         cwd=self.root / "runfiles/night",
                         environment={**{name: str(value) for name, value in variables.items()}, **environment})

    def test_bazel(self):
        ast.parse((self.share / "bazel/modiff.bzl").read_text(encoding="utf-8"))
        for file in [*self.root.glob("server/**/*"), *self.root.glob("src/**/*")]:
            if file.is_file():
                link = self.root / "runfiles/night" / file.relative_to(self.root)
                link.parent.mkdir(parents=True, exist_ok=True)
                link.symlink_to(file)
        for index in range(4):
            self.bazel(index, status=1)
            self.assertTrue((self.root / f"status{index}").exists() and (self.root / f"outputs{index}.xml").exists())
            self.assertTrue((self.root / f"outputs{index}/pages/index.html").exists())
        sums = sum((self.counts(f"outputs{index}/record") for index in range(4)), collections.Counter())
        self.assertEqual(sums, self.local)
        self.bazel(2, status=137, VICTIM="2")
        for index, words in enumerate(("1 passed", "0 passed")):
            self.assertIn(words, self.bazel(index, status=0, TESTBRIDGE_TEST_ONLY="Journal"))
        self.bazel(0, "--exclude", "reports", status=3)  # a suite without any pair


if __name__ == "__main__":
    unittest.main()
