"""Tests of what goes wrong around `modiff run`, `merge` and `doctor`: test_run_corners.py MODIFF"""

import json
import os
import re
import subprocess
import time
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase

PLAIN = {name: value for name, value in DEBIAN_PATH.items() if "SHARD" not in name and not name.startswith("CI_NODE")}
NOBODY = {"user": 65534, "group": 65534, "extra_groups": ()} if os.geteuid() == 0 else {}


class CornersTest(DriverCase):
    def modiff(self, *arguments, status, env=None, **options):
        out, error = self.run_modiff(*arguments, status=status, env={**PLAIN, **(env or {})}, **options)
        return out.decode(), error.decode()

    def shell(self, script, status):
        """Runs a shell script in which $0 is modiff; gives what it prints on both streams."""
        done = subprocess.run(["sh", "-c", script, MODIFF], cwd=self.cwd, env=PLAIN, check=False, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(done.returncode, status, (script, done.stdout))
        return done.stdout.decode()

    def lines(self, directory="modiff-run"):
        return [json.loads(line) for line in (self.cwd / directory / "run.jsonl").read_text().splitlines()]

    def ids(self, directory="modiff-run"):
        return [line["id"] for line in self.lines(directory) if "id" in line]

    def install_script(self, text):
        self.run_modiff("install-tools", self.root, status=0)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text(text)

    def files(self):
        return {path: path.lstat().st_mtime_ns for path in self.root.rglob("*")}

    def test_a_tree_that_is_closed_and_read_only(self):
        self.add("same.html", b"1", b"1")
        self.add("closed.html", b"1", b"1", masters="b/Masters")
        (self.cwd / "modiff.toml").write_text('[[expected]]\npair = "html:b/**"\nreason = "R-1"\n')
        out = self.root / "out"
        out.mkdir(mode=0o777)
        out.chmod(0o777)
        self.root.chmod(0o755)
        (self.cwd / "b/Masters").chmod(0)
        try:
            subprocess.run([MODIFF, "--version"], check=True, stdout=subprocess.DEVNULL, **NOBODY)
        except PermissionError:
            self.skipTest("others may not run this modiff")
        before = {path: state for path, state in self.files().items() if path != out}
        said, error = self.modiff("run", "--out", out, status=2, **NOBODY)
        for words in (said, error):
            self.assertIn("cannot read the directory b/Masters: Permission denied", words)
        lines = self.lines(out)
        self.assertEqual(lines[0]["unreadable"], ["cannot read the directory b/Masters: Permission denied"])
        self.assertEqual(self.ids(out), ["html:Masters/same.html"])
        self.assertEqual((lines[-1]["complete"], lines[-2]), (True, {"new": []}), "closed.html may have its master")
        self.assertIn("b/Masters", self.modiff("show", "--record", out, status=0)[0])
        self.assertIn('errors="1"', self.modiff("junit", "--record", out, status=0)[0], "no green for what is not known")
        self.assertIn("b/Masters", self.modiff("run", "--list", status=2, **NOBODY)[1])
        self.modiff("run", "--out", out, "--exclude", "b/**", status=0, **NOBODY)
        self.assertIn("Permission denied", self.modiff("run", "--exclude", "b/**", status=2, **NOBODY)[1])
        self.assertEqual({path: state for path, state in self.files().items() if out not in (path, path.parent)}, before)
        (self.cwd / "b/Masters").chmod(0o755)

    def test_outputs_do_not_lie_among_inputs(self):
        self.add("r.html", b"1", b"1")
        (self.cwd / "link").symlink_to("Masters")
        (self.root / "server/webcontent/v5DebugPDF").mkdir()
        for option in ("--out", "--summary"):
            for place, words in (("Masters/x", "among the masters"), ("link/x", "among the masters"),
                                 ("new/Masters/en/x", "among the masters"),
                                 ("../webcontent/v5DebugHTML/x", "among the actual files"),
                                 ("../webcontent/v5DebugCSV", "among the actual files")):
                self.assertIn(words, self.modiff("run", option, place, status=2)[1])
        self.assertFalse((self.cwd / "Masters/x").exists() or (self.cwd / "new").exists())
        (self.cwd / "file").write_text("")
        self.assertIn("cannot make the directory", self.modiff("run", "--out", "file", status=2)[1])
        self.assertIn("file is no directory", self.modiff("doctor", "--out", "file", status=2)[0])
        self.modiff("run", "--out", "../webcontent/out", status=0)

    def test_names_that_look_like_options_or_lists(self):
        for name in (b"-x.html", b"[a]", b"y.html"):
            self.add(name + b".html", b"1", b"2")
        for filters, names in ((["--", "-x"], ["-x.html"]), (["x.html.h", "--", "[a]"], ["-x.html", "[a]"]), (["[a]"], ["[a]"])):
            out, _ = self.modiff("run", "--list", *filters, status=0)
            self.assertEqual(out.split(), [f"html:Masters/{name}.html" for name in names])
        self.modiff("run", status=1)
        self.assertIn("-x.html", self.modiff("show", "--", "-x", status=0)[0])

    def test_no_directory(self):
        self.add("r.html", b"1", b"1")
        for command in ("run", "run --list", "verify --format html r", "doctor --config=/dev/null"):
            out = self.shell(f"mkdir -p gone && cd gone && rmdir ../gone && exec $0 {command}", 2)
            self.assertIn("modiff: there is no current directory any more", out)

    def test_shards(self):
        self.add("r.html", b"1", b"2")
        for index, variables in (("3", "GTEST_TOTAL_SHARDS GTEST_SHARD_INDEX"), ("4", "CI_NODE_TOTAL CI_NODE_INDEX"),
                                 ("0", "CI_NODE_TOTAL CI_NODE_INDEX")):
            total, name = variables.split()
            self.assertIn(f"{name}: there is no shard {index} of 3; they are counted from {int('CI' in name)}",
                          self.modiff("run", status=2, env={total: "3", name: index})[1])
        parts = ["p1", "p 2", "p3"]  # more than there are pairs
        for index, part in enumerate(parts):
            self.modiff("run", "--shard", f"{index + 1}/3", "--out", part, status=int(index == 0))
        self.assertIn("next       modiff show --groups --record 'j j'  ",
                      self.modiff("merge", *parts, "--out", "j j", status=1)[0])
        self.modiff("run", "--shard", "2/3", "none", status=2)
        text = (self.cwd / "p1/run.jsonl").read_text()
        for old, new, words in (("Masters/r.html", "Masters/q.html", "a record was changed"),
                                ('"different":1', '"different":0', "its counts do not fit its pairs")):
            (self.cwd / "p1/run.jsonl").write_text(text.replace(old, new))
            self.assertIn(words, self.modiff("merge", *parts, "--out", "k", status=2)[1])
        self.assertFalse((self.cwd / "k").exists())

    def test_timings_balance_shards(self):
        for name in "abcdefgh":
            self.add(f"{name}.html", b"1", b"1")
        self.modiff("run", status=0)
        text = "".join(json.dumps({**line, "seconds": 9.5 if "/c." in line.get("id", "") else 1}) + "\n"
                       for line in self.lines())
        (self.cwd / "modiff-run/run.jsonl").write_text(text)
        shards = [self.modiff("run", "--list", "--shard", f"{index}/2", "--timings", "modiff-run", status=0)[0].split()
                  for index in (1, 2)]
        self.assertEqual(sorted(map(len, shards)), [1, 7])
        self.assertIn(["html:Masters/c.html"], shards)

    def test_the_command_that_takes_up_a_run(self):
        for name in ("a b", "a c", "a d", "e"):
            self.add(f"{name}.html", b"1", b"2")
        out, _ = self.modiff("run", "-j1", "--fail-fast", "--out", "o o", "a ", "/a", status=1)
        command = re.search(r"(?m)^next +(.*)  compares the rest$", out).group(1)
        self.assertEqual(len(self.ids("o o")), 1)
        self.shell(command, 1)
        self.assertEqual((len(self.ids("o o")), self.lines("o o")[-1]["complete"]), (3, True))

    def test_new_files_alone(self):
        self.add("r.html", b"1", b"1")
        self.add("new.html", None, b"1")
        for word, status, is_told in (("fail", 1, True), ("warn", 0, True), ("ignore", 0, False)):
            out, _ = self.modiff("run", "--new", word, status=status)
            self.assertEqual("new        ../webcontent/v5DebugHTML/new.html  no master" in out, is_told)
            self.modiff("run", "--new", word, "r.html", status=0)

    def test_two_runs_into_one_directory(self):
        self.install_script("import os, time\nopen('started', 'w').close()\ntime.sleep(987)\n")
        self.add("slow.vmd", b"1", b"1", "v5DebugVMD", "Masters/vmd")
        with subprocess.Popen([MODIFF, "run"], cwd=self.cwd, env=PLAIN, stdout=subprocess.DEVNULL) as first:
            while not (self.cwd / "started").exists():
                time.sleep(0.05)
            self.assertIn("another run writes this record", self.modiff("run", status=2)[1])
            self.modiff("run", "--out", "other", "--time-limit", "1s", status=2)
            first.terminate()
        self.assertEqual((self.ids(), self.lines()[-1]["stopped"]), ([], "SIGTERM"))

    def test_a_narrow_terminal(self):
        self.install_script("import time\ntime.sleep(1.5)\nprint(1)\n")
        self.add("slow.vmd", b"1", b"1", "v5DebugVMD", "a" * 90 + "/Masters/vmd")
        command = f"stty cols 80 rows 24; exec {MODIFF} run"
        done = subprocess.run(["script", "-qec", command, "/dev/null"], cwd=self.cwd, check=False, capture_output=True,
                              stdin=subprocess.DEVNULL, env={**PLAIN, "TERM": "xterm", "NO_COLOR": "1"})
        moving = re.findall(r"\r\x1b\[K([^\r\n]+)(?=\r\x1b)", done.stdout.decode())
        self.assertTrue(any("vmd/slow.vmd" in line for line in moving), moving)
        self.assertLess(max(map(len, moving)), 80)
        self.assertNotIn("\x1b[3", done.stdout.decode())


if __name__ == "__main__":
    unittest.main()
