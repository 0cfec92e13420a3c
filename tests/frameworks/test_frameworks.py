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

import yaml

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = os.path.abspath(sys.argv.pop(1))
DYING = """#!/bin/sh
case " $* ${TEST_SHARD_INDEX-}${CI_NODE_INDEX-}" in *" --shard $VICTIM/"* | " run "*" $VICTIM") kill -9 $$ ;; esac
exec "${0%/*}/modiff.real" "$@"
"""
PROJECT = """cmake_minimum_required(VERSION 3.22)
project(Night LANGUAGES NONE)
enable_testing()
find_package(MoDiffEngine REQUIRED)
modiff_add_suite(reports server/run/modiff.toml SHARDS 4 JOBS 2 LABELS nightly TIMEOUT 120)
modiff_add_suite(pages server/run/modiff.toml JOBS 2 OUT "some where" ARGS --format html "Sales.html")
"""


def gitlab(text):  # the scripts of the jobs that compare, and of the one that joins
    return [["\n".join(yaml.safe_load(text)[job]["script"])] for job in ("compare", "verdict")]


def github(text):
    text = text.replace("${{ matrix.shard }}", "$SHARD").replace("${{ strategy.job-total }}", "4")
    jobs = yaml.safe_load(text)["jobs"]
    return [[step["run"] for step in jobs[job]["steps"] if "run" in step] for job in ("compare", "verdict")]


def jenkins(text):
    code = re.sub(r"'[^']*'|\"[^\"]*\"|//.*", "", text)
    while (fewer := re.sub(r"\{[^{}()]*\}|\([^{}()]*\)", "", code)) != code:
        code = fewer
    assert code.strip() == "pipeline", code  # no bracket is left
    return [re.findall(r"\bsh '([^']*)'", stage) for stage in text.split("stage('Verdict')")]


class FrameworksTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(os.path.realpath(cls.enterClassContext(tempfile.TemporaryDirectory())))
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.root], check=True, stdout=subprocess.DEVNULL)
        cls.modiff = cls.root / "bin/modiff"
        shutil.copy(cls.modiff.rename(cls.root / "bin/modiff.real"), cls.modiff)
        cls.modiff.write_text(DYING)
        shutil.copytree(SOURCE / "samples/server", cls.root / "server")
        cls.run_in("", "modiff install-tools .; cd server/run; modiff run --out ../../local", 1)
        cls.local = cls.counts("local")

    @classmethod
    def run_in(cls, directory, script, status=0, **environment):
        """Runs a script as CI servers do, with no other variables, and returns what it says."""
        done = subprocess.run(["bash", "-eo", "pipefail", "-c", script], cwd=cls.root / directory, timeout=300,
                              env={"PATH": f"{cls.root}/bin:/usr/bin:/bin", "VICTIM": "none", **environment},
                              check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == status, (script, done.returncode, done.stdout.decode())
        return done.stdout.decode()

    @classmethod
    def counts(cls, directory):
        end = json.loads((cls.root / directory / "run.jsonl").read_text(encoding="utf-8").splitlines()[-1])
        return +collections.Counter(end["counts"] if end["complete"] else [])

    def configure(self, project, options="", status=0):
        (self.root / "CMakeLists.txt").write_text(project)
        return self.run_in("", f"rm -rf build; cmake -B build {options}", status)

    def ctest(self, options="", **environment):
        """What failed, with ctest's word for it, and all that was said."""
        text = self.run_in("build", f"ctest --output-on-failure {options}", 8, **environment)
        return dict(re.findall(r"^\s+\d+ - (\S+) \((.*)\)$", text, re.MULTILINE)), text

    def test_ctest(self):
        self.configure(PROJECT)
        failed, text = self.ctest("-j2", CI_NODE_TOTAL="3", CI_NODE_INDEX="2")
        self.assertEqual((failed, text.count("different  csv:")), ({"reports": "Failed"}, 1))  # differences, told once
        self.assertEqual(self.counts("build/reports/all"), self.local)
        self.assertEqual(self.counts("build/some where/all"), {"passed": 2})
        self.assertIn(f'tests="{self.local.total()}"', (self.root / "build/reports/junit.xml").read_text("utf-8"))
        text = self.run_in("build", "ctest --show-only=json-v1")
        self.assertEqual([text.count(f'"{word}"') for word in ("TIMEOUT", "PROCESSORS", "nightly")], [4, 5, 6])
        failed, _ = self.ctest("-R '^reports$'", VICTIM="3")  # brings all that it needs
        self.assertEqual(failed, {"reports.shard3of4": "Failed", "reports": "Not Run"})
        self.assertFalse((self.root / "build/reports/all/run.jsonl").exists())
        self.ctest("--rerun-failed")
        self.assertEqual(self.counts("build/reports/all"), self.local)
        self.configure(PROJECT.replace("SHARDS 4", "SHARDS 4 ARGS Journal").replace("Sales.html", "NoSuchPair"))
        self.assertEqual(self.ctest()[0], {"pages": "Failed"})  # three of the shards are empty, which is no failure
        self.configure(PROJECT.replace("SHARDS 4", "SHARDS 4 ARGS --fail-fast"))
        self.assertEqual(self.ctest()[0]["reports"], "Not Run")  # shards that stopped
        hidden = self.modiff.rename(self.root / "hidden")
        self.addCleanup(hidden.rename, self.modiff)
        self.assertIn("there is no program modiff", self.configure(PROJECT, status=1))
        self.configure(PROJECT, f"-DMODIFF_EXECUTABLE={hidden}")

    def test_bazel(self):
        ast.parse((self.root / "share/modiff/bazel/modiff.bzl").read_text(encoding="utf-8"))
        for directory in ("server", "src"):  # links to files, one by one
            shutil.copytree(self.root / directory, self.root / "night" / directory, copy_function=os.symlink)

        def shard(index, status, options="", **more):
            out = f"{self.root}/outputs{index}"
            return self.run_in("night", f"../share/modiff/bazel/modiff_test.sh server/run/modiff.toml modiff {options}",
                               status, TEST_TOTAL_SHARDS="4", TEST_SHARD_INDEX=str(index), TEST_TMPDIR=str(self.root),
                               XML_OUTPUT_FILE=f"{out}.xml", TEST_UNDECLARED_OUTPUTS_DIR=out, **more,
                               TEST_SHARD_STATUS_FILE=f"{out}.status")

        for index in range(4):
            shard(index, 1)
            for file in ("/pages/index.html", ".xml", ".status"):
                self.assertTrue(pathlib.Path(f"{self.root}/outputs{index}{file}").exists(), file)
        parts = [self.counts(f"outputs{index}/record") for index in range(4)]
        self.assertEqual(sum(parts, collections.Counter()), self.local)
        shard(2, 137, VICTIM="2")
        for index in (0, 1):
            self.assertIn(f" {1 - index} passed", shard(index, 0, TESTBRIDGE_TEST_ONLY="Journal"))
        shard(0, 3, "--exclude reports")  # a suite without any pair

    def test_pipelines(self):
        for name, read in (("gitlab-ci.yml", gitlab), ("github.yml", github), ("Jenkinsfile", jenkins)):
            compare, verdict = read((self.root / "share/modiff/ci" / name).read_text(encoding="utf-8"))
            for victim in ("none", "3"):
                whole = self.root / name / victim
                for index in ("1", "2", "3", "4", ""):  # a workspace for each job; that of "" joins
                    (whole / index).mkdir(parents=True, exist_ok=True)
                    (whole / index / "server").symlink_to(self.root / "server")
                    told = {"CI_NODE_TOTAL": "4", "CI_NODE_INDEX": index} if read is gitlab else {"SHARD": index}
                    for script in compare if index else ():
                        status = int(index == victim and "modiff" in script)
                        self.run_in(whole / index, script, status, VICTIM=victim, **told)
                for script in verdict:
                    brings = "mkdir shards; cp -r ?/shards/* shards\n" if " merge " in script else ""
                    status = 0 if script.startswith("rm ") else 2 if victim == "3" else int(" merge " in script)
                    text = self.run_in(whole, brings + script, status, GITHUB_STEP_SUMMARY=f"{whole}/summary")
                    self.assertEqual("shard 3 of 4 is missing" in text, bool(brings) and victim == "3")
            self.assertEqual(self.counts(f"{name}/none/merged"), self.local)
            for file in ("pages/index.html", "report.xml"):
                self.assertTrue((self.root / name / "none" / file).exists(), (name, file))


if __name__ == "__main__":
    unittest.main()
