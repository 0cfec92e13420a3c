"""Tests of what `modiff verify` says where there is no plain verdict: test_verify_corners.py MODIFF"""

import os
import pathlib
import signal
import subprocess
import time
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase

HTML = ["verify", "--format", "html"]


class VerifyCornersTest(DriverCase):
    def web(self, name):
        return self.root / "server/webcontent/v5DebugHTML" / name

    def add_script(self, text):
        """Puts a script in the place of the one that compares vmd files."""
        if not (self.root / "src").exists():
            self.run_modiff("install-tools", self.root, status=0)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text(text)
        self.add("r.vmd", b"1", b"2", "v5DebugVMD", "Masters/vmd")

    def test_what_cannot_be_read_is_neither_missing_nor_without_master(self):
        def fifo(path):
            os.mkfifo(path)
        for make, reason in ((fifo, "FIFO"), (pathlib.Path.mkdir, "directory"),
                             (lambda path: path.symlink_to("/dev/null"), "device"),
                             (lambda path: path.symlink_to(path), "symbolic links")):
            self.add("r.html", b"1", None)
            self.add("r2.html", b"1", b"1")
            make(self.web("r.html"))
            out, _ = self.run_modiff(*HTML, "r", status=2)
            self.assertRegex(out.decode(), rf"error +./Masters/r.html .*v5DebugHTML/r.html: .*{reason}")
            self.assertIn(b"\npassed     ./Masters/r2.html", out)
            path = self.web("r.html")
            path.rmdir() if path.is_dir() else path.unlink()
        (self.cwd / "d").mkdir()
        (self.cwd / "d/Masters").touch()
        _, error = self.run_modiff(*HTML, "d/r", "r2", status=2)
        self.assertIn(b"the report d/r was not verified: cannot search d/Masters: Not a directory", error)
        out, error = self.run_modiff(*HTML, "--quiet", "r", status=1)
        self.assertEqual(out + error, b"")

    def test_a_script_that_could_not_compare_gives_no_verdict(self):
        for text, outcome, words, status in (
                ("print('same')", "passed", "", 0),
                ("print('a1: 1 and 2')\nraise SystemExit(1)", "different", "a1: 1 and 2", 1),
                ("import sys\nprint('no workbook \\x1b', file=sys.stderr)\nraise SystemExit(2)", "error",
                 "no workbook \\x1b", 2),
                ("def", "error", "SyntaxError", 2), ("", "error", "", 2), ("raise SystemExit(0)", "error", "", 2),
                ("import os\nos.kill(os.getpid(), 11)", "crashed", "SIGSEGV", 2)):
            self.add_script(text)
            out, _ = self.run_modiff("verify", "--format", "vmd", "r", status=status, env=DEBIAN_PATH)
            self.assertTrue(out.startswith(outcome.encode()), (text, out))
            self.assertIn(words.encode(), out)

    def test_a_pass_is_a_whole_pass(self):
        for master, actual, status, words in ((b"a\0b", b"a\0c", 2, b"a NUL stands at byte 1, from which on nothing"),
                                              (b"a\0b", b"a\0b", 0, b"1 passed"),
                                              (b"\xef\xbb\xbfa", b"a", 1, b"only the master begins with a byte-order"),
                                              (b"\xe9", b"\xe9", 0, b"not UTF-8, the first at byte 0")):
            self.add("r.html", master, actual)
            self.assertIn(words, self.run_modiff(*HTML, "r", status=status)[0])

    def test_warnings_beside_the_verdict(self):
        self.add("Sales_region.html", b"1", b"1")
        out, _ = self.run_modiff(*HTML, "Sales", status=0)
        self.assertIn(b"warning    Sales  has no master of its own name", out)
        self.assertTrue(out.endswith(b"; 1 warning\n"))
        self.add("Sales.html", b"1", None, masters="d/Masters")
        self.add("Sales.html", b"1", None)
        os.link(self.cwd / "Masters/Sales.html", self.web("Sales.html"))
        os.utime(self.web("Sales.html"), (0, 0))
        out, _ = self.run_modiff(*HTML, "--max-age", "1d", "Sales", "d/Sales", status=0)
        for words in (b"one and the same file", b"is older than 1 day",
                      b"warning    d/Masters/Sales.html  its actual file is also that of html:Masters/Sales.html"):
            self.assertIn(words, out)
        self.run_modiff(*HTML, "--max-age", "soon", "Sales", status=2)

    def test_no_output_takes_the_place_of_another_file(self):
        self.add("r.html", b"1", b"2")
        (self.cwd / "link").symlink_to("Masters/r.html")
        os.link(self.web("r.html"), self.cwd / "hard")
        for options in (["--summary", "Masters/r.html"], ["--summary", "link"], ["--log", "hard"],
                        ["--log", self.web("r.html")], ["--summary", "x", "--log", "./x"]):
            _, error = self.run_modiff(*HTML, *options, "r", status=2)
            self.assertIn(b"would overwrite", error)
        self.assertEqual((self.cwd / "Masters/r.html").read_bytes() + self.web("r.html").read_bytes(), b"12")
        self.web("r.html.normalized_master").symlink_to(self.cwd / "Masters/r.html")
        out, _ = self.run_modiff(*HTML, "--normalized", "r", status=2)
        self.assertIn(b"would overwrite a master", out)
        self.assertEqual((self.cwd / "Masters/r.html").read_bytes(), b"1")

    def test_a_summary_behind_a_link_and_to_a_pipe(self):
        self.add("r.html", b"1", b"1")
        (self.cwd / "link").symlink_to("s.xml")
        self.run_modiff(*HTML, "--summary", "link", "r", status=0)
        self.assertTrue((self.cwd / "link").is_symlink())
        out, _ = self.run_modiff(*HTML, "--summary", "/dev/stdout", "r", status=0)
        self.assertIn((self.cwd / "s.xml").read_bytes(), out)

    def test_order_and_bytes_do_not_depend_on_the_jobs(self):
        for number in range(60):
            self.add(f"r{number}.html", b"1", b"1" if number % 3 else b"2")
        reports = [f"r{number}" for number in (*range(59, 30, -1), 3, 3, 1)]
        one, _ = self.run_modiff(*HTML, "--summary", "1", *reports, status=1)
        four, _ = self.run_modiff(*HTML, "--summary", "4", "-j", "4", *reports, status=1)
        self.assertEqual(one, four)
        self.assertEqual((self.cwd / "1").read_bytes(), (self.cwd / "4").read_bytes())

    def test_a_signal_is_no_difference_and_leaves_nothing_behind(self):
        self.add_script("import os, subprocess, time\nsubprocess.Popen(['sleep', '987'])\n"
                        "open('started', 'w').close()\ntime.sleep(987)")
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
            (self.cwd / "started").unlink(missing_ok=True)
            with subprocess.Popen([MODIFF, "verify", "--format", "vmd", "--summary", "s", "--log", "l", "r"],
                                  cwd=self.cwd, env=DEBIAN_PATH, stdout=subprocess.PIPE) as process:
                while not (self.cwd / "started").exists():
                    time.sleep(0.05)
                process.send_signal(number)
                out = process.communicate(timeout=10)[0]
            self.assertEqual(process.returncode, status)
            self.assertIn(b"0 masters compared", out)
            self.assertTrue((self.cwd / "s").read_bytes().endswith(b"</TestSummary>\n"))
            self.assertIn(b"= TOTALS", (self.cwd / "l").read_bytes())
            left = [pid for pid in os.listdir("/proc") if pid.isdigit() and self.is_ours(pid)]
            self.assertEqual(left, [])

    def is_ours(self, pid):
        try:
            return os.readlink(f"/proc/{pid}/cwd") == str(self.cwd)
        except OSError:
            return False


if __name__ == "__main__":
    unittest.main()
