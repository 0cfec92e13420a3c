"""Tests of `modiff run` and `modiff merge`: test_run.py MODIFF"""

import json
import os
import pathlib
import runpy
import signal
import subprocess
import sys
import time
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase

SHARDS = ("GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX", "GTEST_SHARD_STATUS_FILE", "TEST_TOTAL_SHARDS", "TEST_SHARD_INDEX",
          "CI_NODE_TOTAL", "CI_NODE_INDEX")
PLAIN = {name: value for name, value in DEBIAN_PATH.items() if name not in SHARDS}


class RunTest(DriverCase):
    def modiff(self, *arguments, status, env=None, **options):
        out, error = self.run_modiff(*arguments, status=status, env={**PLAIN, **(env or {})}, **options)
        return out.decode(), error.decode()

    def record(self, directory="modiff-run"):
        """The pairs of a record by id, its first line and its last lines."""
        lines = [json.loads(line) for line in (self.cwd / directory / "run.jsonl").read_bytes().splitlines()]
        return {line["id"]: line for line in lines if "id" in line}, lines[0], [line for line in lines[1:] if "id" not in line]

    def outcomes(self, directory="modiff-run"):
        return {key: pair["outcome"] for key, pair in self.record(directory)[0].items()}

    def add_usual(self):
        self.add("same.html", b"text", b"text")
        self.add("other.html", b"text 1", b"text 2", masters="a/Masters")
        self.add("gone.xml", b"text", None, "v5DebugXHTML")
        self.add("new.html", None, b"text")

    def test_what_is_told(self):
        self.add_usual()
        out, _ = self.modiff("run", "--summary", "s.xml", status=1)
        self.assertRegex(out, "(?s)" + r"""^(.*\n){2}
Not passed:
different  html:a/Masters/other.html  at byte 5 of the normalized texts
           master  text 1
           actual  text 2
                        \^
missing    xhtml:Masters/gone.xml  no actual file
new        ../webcontent/v5DebugHTML/new.html  no master

format        pairs  passed  different  missing
html              2       1          1        -
xhtml             1       -          -        1
(\nslowest\n.*\n)?
3 pairs in .* s: 1 passed, 1 different, 1 missing
record     modiff-run/run.jsonl
next       modiff show --groups .*
           modiff run --failed .*\n$""")
        self.assertEqual((self.cwd / "s.xml").read_text().count("<TestCasePassDiff>"), 1)
        out, _ = self.modiff("run", "-v", "Masters/same", status=0)
        self.assertIn("passed     html:Masters/same.html\n", out)
        self.assertNotIn("new.html", out)

    def test_selection(self):
        self.add_usual()
        for arguments, ids, status in (
                ([], {"html:Masters/same.html", "html:a/Masters/other.html", "xhtml:Masters/gone.xml"}, 1),
                (["same", "gone"], {"html:Masters/same.html", "xhtml:Masters/gone.xml"}, 1),
                (["--format", "xhtml"], {"xhtml:Masters/gone.xml"}, 1), (["html:Masters/*"], {"html:Masters/same.html"}, 0),
                (["--root", "a"], {"html:a/Masters/other.html"}, 1)):
            self.modiff("run", "--out", "o", *arguments, status=status)
            self.assertEqual(set(self.outcomes("o")), ids)
            out, _ = self.modiff("run", "--list", *arguments, status=0)
            self.assertEqual(out.splitlines(), sorted(ids))
        self.modiff("run", status=1)
        self.modiff("run", "--out", "o", "--failed", "modiff-run", status=1)
        self.assertEqual(len(self.outcomes("o")), 2)
        (self.root / "server/webcontent/v5DebugXHTML/gone.xml").write_text("text")
        self.modiff("run", "--failed", status=1)
        self.modiff("run", "--failed", status=1)
        self.assertEqual(set(self.outcomes()), {"html:a/Masters/other.html"})
        for arguments, message in ((["none"], "none"), (["--failed", "nowhere"], "nowhere"), (["--format", "htm"], "html"),
                                   (["--shard", "3/2"], "there is no shard 3 of 2"), (["--jobs", "many"], "many"),
                                   (["--progress", "fast"], "choose one of auto, lines, moving, none"),
                                   (["--config", "none.toml"], "none.toml"), (["--timelimit", "1s"], "--time-limit")):
            self.assertIn(message, self.modiff("run", *arguments, status=2)[1])

    def test_nothing_to_compare(self):
        _, error = self.modiff("run", status=3)
        self.assertIn("no folder is named Masters", error)
        (self.cwd / "Masters").mkdir()
        _, error = self.modiff("run", status=3)
        self.assertIn("hold no file of the formats", error)
        (self.cwd / "modiff.toml").write_text('working-directory = "gone"')
        self.assertIn("gone", self.modiff("run", status=2)[1])

    def test_configuration(self):
        self.add_usual()
        (self.cwd / "modiff.toml").write_text('jobs = 3\nnew = "fail"\nformats = ["html"]\n'
                                              '[[expected]]\npair = "html:a/**"\nreason = "TRACK-1"\n')
        out, _ = self.modiff("run", "--print-config", "-j", "2", status=0)
        self.assertRegex(out, r"(?m)^jobs = 2 .*--jobs")
        self.assertRegex(out, r"(?m)^new = .fail. .*modiff.toml:2:")
        (self.cwd / "a/b").mkdir()
        self.modiff("run", status=1, cwd=self.cwd / "a/b")
        self.assertEqual(self.outcomes(), {"html:Masters/same.html": "passed", "html:a/Masters/other.html": "expected"})
        self.modiff("run", "--new", "warn", status=0)
        (self.cwd / "modiff.toml").write_text('job = 3\n')
        self.assertIn("modiff.toml:1:", self.modiff("run", status=2)[1])

    def test_kinds_to_be_ignored_are_those_of_the_scripts(self):
        tools = pathlib.Path(__file__).resolve().parents[2] / "tools"
        sys.path.insert(0, str(tools))
        self.add("r.html", b"1", b"1")
        for word, script in (("xlsx", "DiffXlsx/DiffXlsx.py"), ("pdf", "diffpdf/diffPdfFiles.py")):
            names = [kind.name for kind in runpy.run_path(str(tools / script))["KINDS"]]
            self.modiff("run", *(f"--ignore={word}:{name}" for name in names), status=0)
            self.assertIn(f"choose one of {', '.join(names)}\n",
                          self.modiff("run", "--ignore", f"{word}:zzzzzzzzzzz", status=2)[1])

    def test_shards_of_runners_are_disjoint_and_merge_into_one(self):
        for number in range(20):
            self.add(f"r{number}.html", b"1", b"1" if number else b"2")
        self.add("new.html", None, b"1")
        self.modiff("run", "--out", "whole", status=1)
        for variables in (lambda index: {"GTEST_TOTAL_SHARDS": "3", "GTEST_SHARD_INDEX": str(index),
                                         "GTEST_SHARD_STATUS_FILE": "touched"},
                          lambda index: {"CI_NODE_TOTAL": "3", "CI_NODE_INDEX": str(index + 1)}):
            parts = [f"part{index}" for index in range(3)]
            for index, part in enumerate(parts):
                self.run_modiff("run", "--out", part, "--timings", "whole", env={**PLAIN, **variables(index)},
                                status=1 if "html:Masters/r0.html" in self.part_ids(index) else 0)
            joined = [key for part in parts for key in self.outcomes(part)]
            self.assertEqual(sorted(joined), sorted(self.outcomes("whole")))
            self.modiff("merge", *parts, "--out", "joined", status=1)
            self.assertEqual(self.outcomes("joined"), self.outcomes("whole"))
            self.assertEqual(self.record("joined")[2][0], self.record("whole")[2][0])
        self.assertTrue((self.cwd / "touched").exists())
        for parts, message in ((parts[:2], "shard"), ([*parts, parts[0]], "part0"), (["whole", "none"], "none")):
            self.assertIn(message, self.modiff("merge", *parts, "--out", "bad", status=2)[1])
        self.assertFalse((self.cwd / "bad/run.jsonl").exists())
        self.modiff("run", status=2, env={"CI_NODE_TOTAL": "3"})
        self.modiff("run", status=1, env={"CI_NODE_TOTAL": "1"})

    def part_ids(self, index):
        out, _ = self.modiff("run", "--list", "--shard", f"{index + 1}/3", "--timings", "whole", status=0)
        return out.split("\n")

    def test_a_run_that_was_ended_is_taken_up(self):
        self.run_modiff("install-tools", self.root, status=0)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text(
            "import os, time\nprint(os.getpid(), file=open('started', 'w', 1))\ntime.sleep(0 if os.path.exists('go') else 987)\nprint(1)\n")
        self.add("slow.vmd", b"1", b"1", "v5DebugVMD", "Masters/vmd")
        for number in range(50):
            self.add(f"r{number}.html", b"1", b"1")
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129), (signal.SIGKILL, -9)):
            (self.cwd / "started").unlink(missing_ok=True)
            with subprocess.Popen([MODIFF, "run", "-j2"], cwd=self.cwd, env=PLAIN, stdout=subprocess.PIPE) as process:
                while not (self.cwd / "started").exists():
                    time.sleep(0.05)
                time.sleep(0.3)
                process.send_signal(number)
                out = process.communicate(timeout=10)[0]
            self.assertEqual(process.returncode, status)
            script = pathlib.Path("/proc", (self.cwd / "started").read_text().strip(), "stat")
            patience = 0 if status > 0 else 10    # nobody is left to wait for the end of what a killed run started
            while patience and script.exists() and script.read_text().rpartition(")")[2].split()[0] != "Z":
                time.sleep(1)
                patience -= 1
            self.assertTrue(patience or not script.exists(), number)
            self.assertEqual(sorted(path.name for path in (self.cwd / "modiff-run").iterdir()), ["run.jsonl"])
            self.assertEqual(b"--resume" in out, status > 0)
            self.assertNotIn("vmd:Masters/vmd/slow.vmd", self.outcomes())
        self.assertIn("nothing failed in the record", self.modiff("run", "--failed", status=3)[1])
        (self.cwd / "go").touch()
        self.modiff("run", "--resume", status=0)
        self.assertEqual((len(self.outcomes()), self.record()[2][-1]["complete"]), (51, True))
        self.assertIn("complete", self.modiff("run", "--resume", status=2)[1])

    def test_outputs(self):
        self.add_usual()
        before = {path: path.stat().st_mtime_ns for path in self.root.rglob("*") if path.is_file()}
        for summary in ("Masters/same.html", "modiff-run/run.jsonl", ""):
            self.modiff("run", status=1)
            self.modiff("run", "--summary", summary, status=2)
        self.modiff("run", "--out", "/dev/null/x", status=2)
        with open("/dev/full", "wb") as full:
            self.run_modiff("run", env=PLAIN, status=2, stdout=full)
        self.assertEqual(len(self.outcomes()), 3)
        after = {path: path.stat().st_mtime_ns for path in self.root.rglob("*") if path.is_file()}
        self.assertEqual(set(after) - set(before), {self.cwd / "modiff-run/run.jsonl"})
        self.assertLessEqual(before.items(), after.items())

    def test_outputs_spare_what_a_run_reads(self):
        self.add("r.html", b"1", b"1")
        script = self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py"
        script.parent.mkdir(parents=True)
        for path in (self.cwd / "modiff.toml", script):
            path.write_text("")
            self.modiff("run", "--summary", path, status=2)
            self.assertEqual(path.read_text(), "")

    def test_what_would_silently_drop_pairs(self):
        self.add("r.html", b"1", b"1")
        for arguments in ((""), ("--sub-directory", "en-uk"), ("--fail-fast=0",), ("--fail-fast=-1",), ("--resume",)):
            with self.subTest(arguments):
                self.modiff("run", *(arguments or ("",)), status=2)

    def test_fail_fast(self):
        for number in range(200):
            self.add(f"r{number}.html", b"1", b"2")
        for option, count in (("--fail-fast", 1), ("--fail-fast=3", 3)):
            out, _ = self.modiff("run", "-j1", option, status=1)
            self.assertIn("--resume", out)
            self.assertEqual(len(self.outcomes()), count)

    def test_names_that_terminals_would_obey(self):
        for name in (b"a\nb", b"\x1b[2J", b'"', b"\xe9"):
            self.add(name + b".html", b"1", b"2")
        out, _ = self.modiff("run", status=1)
        self.assertTrue(out.isascii() and out.replace("\n", "").isprintable(), out)
        out, _ = self.modiff("run", "--failed", "--list", status=0)
        self.assertEqual(len(out.splitlines()), 4)

    def test_the_moving_line(self):
        self.run_modiff("install-tools", self.root, status=0)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text("import time\ntime.sleep(2)\nprint(1)\n")
        self.add("slow.vmd", b"1", b"1", "v5DebugVMD", "Masters/vmd")
        self.add("other.html", b"1", b"2")
        out = self.on_terminal("run")
        self.assertRegex(out, rb"\r\x1b\[K1/2  1 failed  .*: vmd:Masters/vmd/slow.vmd")
        self.assertRegex(out, rb"\r\x1b\[K\r?\n?.*Not passed")
        self.assertIn(b"\x1b[31m", out)
        self.assertNotIn(b"\x1b[31m", self.on_terminal("run", NO_COLOR="1"))
        self.assertNotIn(b"\x1b", self.on_terminal("run", TERM="dumb"))

    def on_terminal(self, *arguments, **variables):
        command = " ".join((MODIFF, *arguments))
        done = subprocess.run(["script", "-qec", command, "/dev/null"], cwd=self.cwd, check=False, capture_output=True,
                              stdin=subprocess.DEVNULL, env={**PLAIN, "TERM": "xterm", **variables})
        return done.stdout


if __name__ == "__main__":
    unittest.main()
