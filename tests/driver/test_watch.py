"""Tests of `modiff run --watch`: test_watch.py MODIFF"""

import ctypes
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import threading
import time
import unittest

from driver_case import MODIFF, DriverCase

PATIENCE = 60  # seconds; nothing waits that long unless it fails
BLOCK = re.compile(r"\d\d:\d\d:\d\d   .*?\n\d+ pairs?: [^\n]*\n", re.DOTALL)


class Watch:
    """A running watch; what it writes is taken up piece by piece."""

    def __init__(self, case, *arguments, **options):
        self.case = case
        self.process = subprocess.Popen([MODIFF, "run", "--watch", *arguments], stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, **{"cwd": case.cwd, **options})
        self.text, self.change = "", threading.Condition()
        self.thread = threading.Thread(target=self.read)
        self.thread.start()
        case.addCleanup(self.clean)

    def clean(self):
        self.process.kill()
        self.process.wait()
        self.thread.join()
        self.process.stdout.close()

    def read(self):
        while data := os.read(self.process.stdout.fileno(), 1 << 16):
            with self.change:
                self.text += data.decode()
                self.change.notify()

    def wait_for(self, pattern):
        """Waits for a text, takes it and all before it away, and returns it."""
        with self.change:
            found = self.change.wait_for(lambda: re.search(pattern, self.text), PATIENCE)
            self.case.assertTrue(found, (pattern, self.text))
            self.text = self.text[found.end():]
            return found[0]

    def begin(self):
        self.wait_for(r"watching .*ends\n(note .*\n)?")
        return self

    def block(self):
        return self.wait_for(BLOCK)

    def sleeps(self):
        """How often it has gone to sleep by itself."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(r"\nvoluntary_ctxt_switches:\s+(\d+)", status)[1])

    def end(self, number=signal.SIGINT):
        self.process.send_signal(number)
        return self.process.wait(PATIENCE)


class WatchTest(DriverCase):
    def setUp(self):
        super().setUp()
        self.html = self.root / "server/webcontent/v5DebugHTML"
        self.add("a.html", b"1", b"1")
        self.add("b.html", b"1", b"2")

    def record(self):
        lines = (self.cwd / "modiff-run/run.jsonl").read_bytes().splitlines()
        self.assertTrue(json.loads(lines[-1])["complete"])
        return {pair["id"].split("/")[-1]: line for line in lines if "id" in (pair := json.loads(line))}

    def outcomes(self):
        return {name: json.loads(line)["outcome"] for name, line in self.record().items()}

    def replace(self, path, contents):
        path.with_suffix(".new").write_bytes(contents)
        path.with_suffix(".new").rename(path)

    def test_exactly_what_changes_is_compared_again(self):
        watch = Watch(self).begin()
        steps = (
            ("actual written", lambda: (self.html / "a.html").write_bytes(b"3"),
             ["different  html:Masters/a.html"], "0 passed, 2 different"),
            ("actual replaced", lambda: self.replace(self.html / "a.html", b"1"),
             ["passed     html:Masters/a.html"], "1 passed, 1 different"),
            ("master written", lambda: (self.cwd / "Masters/b.html").write_bytes(b"2"),
             ["passed     html:Masters/b.html"], "2 passed"),
            ("new folder", lambda: self.add("c.html", b"1", None, masters="x/Masters/en"),
             ["missing    html:x/Masters/en/c.html"], "2 passed, 1 missing"),
            ("new directory", lambda: self.add("c.html", None, b"1", output="v5DebugHTML/en"),
             ["passed     html:x/Masters/en/c.html"], "3 passed"),
            ("in the folder", lambda: (self.cwd / "x/Masters/en/c.html").write_bytes(b"2"),
             ["different  html:x/Masters/en/c.html"], "2 passed, 1 different"),
            ("in the directory", lambda: (self.html / "en/c.html").write_bytes(b"2"),
             ["passed     html:x/Masters/en/c.html"], "3 passed"),
            ("actual gone", lambda: (self.html / "b.html").unlink(),
             ["missing    html:Masters/b.html"], "2 passed, 1 missing"),
            ("master gone", lambda: (self.cwd / "Masters/b.html").unlink(),
             ["gone       html:Masters/b.html"], "2 passed"),
            ("new file", lambda: (self.html / "n.html").write_bytes(b""),
             ["new        ../webcontent/v5DebugHTML/n.html  no master"], "2 passed"),
            ("forbidden", lambda: (self.html / "a.html").chmod(0),
             ["error      html:Masters/a.html"], "1 passed, 1 error"),
            ("allowed", lambda: (self.html / "a.html").chmod(0o644),
             ["passed     html:Masters/a.html"], "2 passed"))
        for name, step, wanted, totals in steps:
            before = self.record()
            step()
            block = watch.block()
            lines = [line for line in block.splitlines()[1:-1] if line[0] != " "]
            self.assertEqual([line[:len(text)] for line, text in zip(lines, wanted)], wanted, (name, block))
            self.assertEqual(len(lines), len(wanted), (name, block))
            self.assertIn(f": {totals}\n", block, name)
            for pair, line in self.record().items():
                self.assertEqual(line == before.get(pair), pair not in block, (name, pair))
        self.assertEqual(watch.end(), 0)

    def test_directories_go_and_come(self):
        watch = Watch(self).begin()
        for path, trouble in ((self.html, False), (self.html.parent, False), (self.cwd / "Masters", True),
                              (self.cwd, True)):
            away = self.root / "away"
            path.rename(away)
            shown = watch.wait_for("waiting for a change: .*" if trouble else BLOCK)
            if not trouble:
                self.assertIn(": 0 passed, 2 missing", shown)
            copy = self.root / "copy"
            shutil.copytree(away, copy)
            shutil.rmtree(away)
            copy.rename(path)
            self.assertIn("2 pairs compared", watch.block(), path)
            (self.html / "a.html").write_bytes(b"3")
            self.assertIn("html:Masters/a.html", watch.block(), path)
            self.replace(self.html / "a.html", b"1")
            self.assertIn("passed     html:Masters/a.html", watch.block(), path)
        self.assertEqual(watch.end(), 1)

    def test_the_configuration_is_read_again(self):
        watch = Watch(self).begin()
        config = self.cwd / "modiff.toml"
        self.replace(config, b"jobs = [")
        self.assertIn("modiff.toml:1:9", watch.wait_for("waiting for a change: .*\n"))
        config.write_text('[[expected]]\npair = "**/b.html"\nreason = "TRACK-1"\n')
        block = watch.block()
        self.assertRegex(block, r"(?s)2 pairs compared.*expected   html:Masters/b.html.*1 passed, 1 expected")
        watch.wait_for("watching ")
        self.assertEqual(watch.end(), 0)

    def test_decisions_of_others_are_followed_and_cause_no_loop(self):
        watch = Watch(self).begin()
        self.run_modiff("show", status=0)
        self.run_modiff("accept", "b.html", status=0)
        self.assertIn("passed     html:Masters/b.html", watch.block())
        shutil.rmtree(self.cwd / "modiff-run")
        (self.html / "a.html").write_bytes(b"3")
        self.assertIn("2 pairs compared", watch.block())
        self.run_modiff("run", "--nul", "warn", status=1)  # may have come to other verdicts
        self.replace(self.html / "a.html", b"1")
        self.assertIn("2 pairs compared", watch.block())
        self.assertEqual(self.outcomes(), {"a.html": "passed", "b.html": "passed"})
        before = watch.sleeps()
        time.sleep(1)  # a loop would compare four times in that
        self.assertLessEqual(watch.sleeps() - before, 1)  # it may just be going to sleep
        self.assertEqual(watch.text, "")
        self.assertEqual(watch.end(), 0)

    def test_selections_are_kept(self):
        self.add("c.csv", b"1", b"1", output="v5DebugCSV", masters="Masters/CSV")
        for arguments, first in ((["html:"], 2), (["--format", "html"], 2), (["--failed"], 1)):
            if arguments == ["--failed"]:
                self.run_modiff("run", status=1)
            watch = Watch(self, *arguments).begin()
            self.assertEqual(len(self.record()), first)
            (self.cwd / "Masters/CSV/c.csv").write_bytes(b"1")
            self.add("d.html", b"1", b"1")
            (self.html / "b.html").write_bytes(b"2")
            while "b.html" not in (block := watch.block()):
                pass
            self.assertNotIn("c.csv", block)
            self.assertEqual("d.html" in self.record(), arguments != ["--failed"])
            self.assertEqual(watch.end(), 1)
            (self.cwd / "Masters/d.html").unlink()

    def test_a_growing_file_is_compared_when_it_rests(self):
        (self.cwd / "Masters/a.html").write_bytes(b"x" * 50)
        (self.html / "b.html").write_bytes(b"1")
        watch = Watch(self).begin()
        with open(self.html / "a.html", "wb", buffering=0) as file:
            for _ in range(50):
                file.write(b"x")
                time.sleep(0.01)
        while "passed     html:Masters/a.html" not in watch.block():
            pass
        self.assertEqual(watch.end(), 0)

    def test_how_it_ends(self):
        for number, status in ((signal.SIGINT, 1), (signal.SIGTERM, 128 + 15), (signal.SIGHUP, 128 + 1)):
            self.assertEqual(Watch(self).begin().end(number), status)
        watch = Watch(self).begin()
        (self.cwd / "Masters").rename(self.cwd / "away")
        watch.wait_for("waiting for a change")
        self.assertEqual(watch.end(), 2)
        self.run_modiff("run", "--watch", status=3)

    def test_a_record_that_cannot_be_written_stays(self):
        watch = Watch(self).begin()
        before = self.record()
        os.rename(self.cwd / "modiff-run", self.cwd / "kept")
        (self.cwd / "modiff-run").write_bytes(b"")
        (self.html / "a.html").write_bytes(b"3")
        self.assertIn("cannot make the directory", watch.wait_for("waiting for a change: .*"))
        os.unlink(self.cwd / "modiff-run")
        os.rename(self.cwd / "kept", self.cwd / "modiff-run")
        self.assertEqual(self.record(), before)
        (self.html / "b.html").write_bytes(b"2")
        self.assertIn("2 pairs compared", watch.block())
        self.assertEqual(watch.end(), 1)

    def test_what_does_not_go_together(self):
        for arguments in (["--list"], ["--resume"], ["--fail-fast"], ["--shard", "1/2"], ["--summary", "s.xml"],
                          ["--junit", "j.xml"], ["--print-config"], ["--timings", "modiff-run"]):
            self.run_modiff("run", status=1)
            _, error = self.run_modiff("run", "--watch", *arguments, status=2)
            self.assertIn(f"does not go together with {arguments[0]}", error.decode())
        _, error = self.run_modiff("run", "--watch", status=2,
                                   env={**os.environ, "CI_NODE_TOTAL": "2", "CI_NODE_INDEX": "1"})
        self.assertIn(b"compares no shards", error)

    def test_looking_where_the_system_does_not_tell(self):
        libc = ctypes.CDLL(None)
        most = int(pathlib.Path("/proc/sys/fs/inotify/max_user_instances").read_text())
        if most > 512:
            self.skipTest("the system has too many instances of inotify to use up all")
        taken = [libc.inotify_init1(os.O_CLOEXEC) for _ in range(most + 1)]
        self.addCleanup(lambda: [os.close(number) for number in taken if number >= 0])
        self.assertEqual(taken[-1], -1)
        watch = Watch(self)
        self.assertIn("max_user_instances; looking every 2 s", watch.wait_for("note  .*\n"))
        (self.html / "a.html").write_bytes(b"3")
        self.assertIn("different  html:Masters/a.html", watch.block())
        self.assertEqual(watch.end(), 1)


if __name__ == "__main__":
    unittest.main()
