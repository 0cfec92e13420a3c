"""Tests of the command-line driver: test_driver.py MODIFF"""

import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

MODIFF = os.path.abspath(sys.argv.pop(1))
SUMMARY = [b"<TestSummary>", b"</TestSummary>"]


def limit_files(size):
    """In the child: no file can have more bytes, as on a disk that is full."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class DriverTest(unittest.TestCase):
    """Each test has a fresh tree: the working directory server/run and server/webcontent beside it."""

    def setUp(self):
        self.root = pathlib.Path(os.path.realpath(self.enterContext(tempfile.TemporaryDirectory())))
        self.cwd = self.root / "server/run"
        self.cwd.mkdir(parents=True)

    def run_modiff(self, *arguments, status, **options):
        """Runs the driver, checks its status and returns what it wrote to standard output and standard error."""
        done = subprocess.run([MODIFF, *arguments], cwd=self.cwd, timeout=120, check=False,
                              **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options})
        self.assertEqual(done.returncode, status, (arguments, done.stdout, done.stderr))
        return done.stdout, done.stderr

    def add(self, name, master, actual, output="v5DebugHTML", masters="Masters"):
        """Lays out a master and an actual file in bytes; None leaves one out."""
        for directory, contents in ((self.cwd / masters, master), (self.root / "server/webcontent" / output, actual)):
            directory.mkdir(parents=True, exist_ok=True)
            if contents is not None:
                (pathlib.Path(os.fsdecode(os.path.join(os.fsencode(directory), os.fsencode(name))))
                 .write_bytes(contents))

    def add_usual(self):
        self.add("same.html", b"text", b"text")
        self.add("other.html", b"text 1", b"text 2")
        self.add("gone.html", b"text", None)
        self.add("broken.html", None, b"text")
        (self.cwd / "Masters/broken.html").symlink_to("/proc/self/mem")  # its first byte cannot be read

    def test_exit_status_and_counts(self):
        self.add_usual()
        for reports, status, counts in (
                ("same", 0, b"1 master compared: 1 passed, 0 different, 0 missing"),
                ("same same other", 1, b"3 masters compared: 2 passed, 1 different, 0 missing"),
                ("gone", 1, b"1 master compared: 0 passed, 0 different, 1 missing"),
                ("none same", 3, b"1 master compared: 1 passed, 0 different, 0 missing; 1 report without a master"),
                ("none other", 1, b"1 master compared: 0 passed, 1 different, 0 missing; 1 report without a master"),
                ("other broken none same", 2, b"2 masters compared: 1 passed, 1 different, 0 missing; "
                                              b"1 report without a master; trouble with 1 report")):
            with self.subTest(reports):
                out, _ = self.run_modiff("verify", "--format", "html", *(f"{name}.html" for name in reports.split()),
                                         status=status)
                self.assertEqual(out.splitlines()[-1], counts)

    def test_lines(self):
        web = b"../webcontent/v5DebugHTML/"
        self.add("same.html", b"x\r\n", b"x")
        self.add("gone.html", b"", None)
        lead = "ä漢".encode() * 40
        self.add("cut.html", lead + b"\x1b\xe9\\" + "é!".encode(), lead + b"\x1b\xe9\\" + "è".encode())
        self.add("end.html", b"a\tb\nc", b"a\tb")
        out, _ = self.run_modiff("verify", "--format", "html", "same.html", "gone.html", "none", "cut.html", "end.html",
                                 status=1)
        shown = "..." + "ä漢" * 7 + "\\x1b\\xe9\\\\"
        self.assertEqual(out, b"".join((
            b"passed     ./Masters/same.html  " + web + b"same.html\n",
            b"missing    ./Masters/gone.html  " + web + b"gone.html  no actual file\n",
            b"no master  none  nothing compared: no file is named ./Masters/none*.html\n",
            b"different  ./Masters/cut.html  " + web + b"cut.html  at byte 204 of the normalized texts\n",
            f"           master  {shown}é!\n           actual  {shown}è\n".encode(),
            b" " * (19 + 3 + 7 * 3 + 10) + b"^\n",
            b"different  ./Masters/end.html  " + web + b"end.html  at byte 3 of the normalized texts\n",
            b"           master  a\\tbc\n           actual  a\\tb\n",
            b"                       ^ the actual ends here\n",
            b"4 masters compared: 1 passed, 2 different, 1 missing; 1 report without a master\n")))

    def test_first_difference_of_files_that_are_not_cleansed(self):
        block = b"line\r\n" * 20000
        for word, output, masters, actual, status in (
                ("xml", "v5DebugXML", "Masters/XML", block.replace(b"\r", b""), 0),
                ("xml", "v5DebugXML", "Masters/XML", block[:-6].replace(b"\r", b"") + b"lime\n", 1),
                ("csv", "v5DebugCSV", "Masters/CSV", block[:-3] + b"E\r\n", 1)):
            self.add(f"r.{word}", block, actual, output, masters)
            out, _ = self.run_modiff("verify", "--format", word, "r", status=status)
            self.assertEqual(b"  in line 20000\n" in out, status == 1, out)

    def test_engine_settings(self):
        self.add("r_de.tvd", b"1.5 a", b"2.5 a", "Charts/s", "Masters/s/folder")
        self.add("r.prp", b"1.5 a", b"2.5 a", "Props", "Masters/p")
        for word, options, status in (
                ("tvd", "--sub-directory s --type-name Charts --master-sub-directory folder --master-suffix de", 0),
                ("tvd", "--type-name Charts --master-sub-directory folder --master-suffix de", 3),
                ("tvd", "--sub-directory s --type-name Charts --master-sub-directory folder --master-suffix en", 3),
                ("prp", "--type-name Props --master-sub-directory p", 1)):
            self.run_modiff("verify", "--format", word, *options.split(), "r", status=status)
        out, _ = self.run_modiff("formats", status=0)
        self.assertEqual([line.split()[0].decode() for line in out.splitlines()[3:-2]],
                         "html mht xhtml xml dataxml pageddataxml rawxml nao xls xlwa singlexls csv csi tvd prp xlsx pdf "
                         "vmd".split())

    def test_bad_command_lines(self):
        for arguments, message in (("", "subcommand"), ("verify x", "--format"), ("verify --format html", "ACTUAL"),
                                   ("verify --format doc x", "no format doc"), ("verify --format html --no x", "--no"),
                                   ("verify --format tvd x", "--type-name"), ("verify --format prp --type-name t "
                                   "--master-suffix s x", "--master-suffix"), ("verify --format csv --type-name t x",
                                   "--type-name"), ("verify --format html --log-level normal x", "--log"),
                                   ("verify --format html --log l --log-level loud x", "loud"),
                                   ("verify --format html dir/", "names no report"), ("numbers x", "ACTUAL")):
            _, error = self.run_modiff(*arguments.split(), status=2)
            self.assertIn(message, error.decode())
        self.assertIn(b"Exit status", self.run_modiff("verify", "--help", status=0)[0])
        self.assertRegex(self.run_modiff("--version", status=0)[0], rb"^modiff \d+\.\d+\.\d+\n$")

    def test_summary_and_log_are_complete_in_spite_of_trouble(self):
        self.add_usual()
        reports = ["same.html", "broken.html", "none.html", "other.html"]
        out, error = self.run_modiff("verify", "--format", "html", "--summary", "s.xml", "--log", "l.qpr", "--log-level",
                                     "concise", *reports, status=2)
        self.assertRegex(error.decode(), r"broken.html was not.*KLT_ASSERT.*\n +KLT_THROW in MoDiffLib, line \d+")
        tags = [element.tag for element in xml.etree.ElementTree.parse(self.cwd / "s.xml").getroot()]
        self.assertEqual(tags, ["TestCasePassDiff", "TestCaseFailureDiff"])
        log = (self.cwd / "l.qpr").read_bytes()
        for line in (b"PASSED: Contents are equivalent: ./Masters/same.html and ", b"Start Test: broken.html",
                     b">> Script Error: KLT_ASSERT", b">> Script Error: nothing compared",
                     b">>  FAILED: Normalized contents are equivalent: ./Masters/other.html"):
            self.assertIn(line, log)
        totals = b"= TOTALS                    2       1       1       0             >> FAIL ="
        self.assertIn(totals, log)
        self.assertIn(totals, out)
        out, _ = self.run_modiff("verify", "--format", "html", "--quiet", "--log", "l.qpr", "other.html", status=1)
        self.assertEqual(out, b"")
        self.assertIn(b"1 bytes compared.  A total of 1 bytes unequal", (self.cwd / "l.qpr").read_bytes())

    def test_output_that_cannot_be_written(self):
        self.add_usual()
        verify = ["verify", "--format", "html", "same.html", "other.html"]
        for options in (["--summary", "/dev/full"], ["--summary", "no/s.xml"], ["--log", "/dev/full"], ["--log", "."]):
            out, _ = self.run_modiff(*verify, *options, status=2)
            self.assertNotIn(b"passed", out)
        out, error = self.run_modiff(*verify, "--summary", "s.xml", status=2, preexec_fn=lambda: limit_files(300))
        self.assertIn(b"2 masters compared", out)
        self.assertIn(b"s.xml: File too large", error)
        _, error = self.run_modiff(*verify[:-1], "--log", "l", "--log-level", "minimal", status=2,
                                   preexec_fn=lambda: limit_files(200))  # the verdict doesn't fit
        self.assertIn(b"the log l is not complete", error)
        with open("/dev/full", "wb") as full:
            self.run_modiff(*verify, status=2, stdout=full)
        self.run_modiff(*verify, "--summary", "s.xml", status=1, preexec_fn=lambda: os.close(1))
        lines = (self.cwd / "s.xml").read_bytes().splitlines()
        self.assertEqual([lines[0], len(lines), lines[-1]], [SUMMARY[0], 4, SUMMARY[1]])
        self.run_modiff(*verify, "--normalized", status=1)
        web = self.root / "server/webcontent/v5DebugHTML"
        self.assertEqual([(web / f"other.html.normalized_{side}").read_bytes() for side in ("master", "actual")],
                         [b"text 1", b"text 2"])
        (web / "other.html.normalized_actual").unlink()
        (web / "other.html.normalized_actual").mkdir()
        self.assertIn(b"normalized_actual", self.run_modiff(*verify, "--normalized", status=2)[1])

    def test_hostile_names_reach_nothing_but_their_file(self):
        names = [b"-e", b"[a,b]", b"a\nb", b"\x1b[2J", b"\xe9", b'"', b"$(touch pwned)", b"`touch pwned`", b"a' 'b", b"\\"]
        self.run_modiff("install-tools", self.root, status=0)
        for word, output, masters in (("html", "v5DebugHTML", "Masters"), ("vmd", "v5DebugVMD", "Masters/vmd")):
            for name in names:
                self.add(name + b"." + word.encode(), b"1", b"1", output, masters)
            out, _ = self.run_modiff("verify", "--format", word, "[a,b]", "--", *names, status=0,
                                     env={**os.environ, "PATH": "/usr/bin:/bin"})
            self.assertEqual(out.count(b"\n"), len(names) + 2)
            self.assertTrue(out.isascii() and out.decode().replace("\n", "").isprintable(), out)
        self.assertEqual(list(self.root.rglob("pwned*")), [])

    def test_tools(self):
        tools = self.root / "src/kavu/Builds/tools"
        old = tools / "diffvmd/diffvmd.py"
        old.parent.mkdir(parents=True)
        old.write_text("raise SystemExit(0)")
        os.link(old, self.root / "link")
        self.run_modiff("install-tools", self.root, status=0)
        self.assertEqual((self.root / "link").read_text(), "raise SystemExit(0)")  # replaced, not written over
        source = pathlib.Path(__file__).parents[2] / "tools"
        for script in ("DiffXlsx/DiffXlsx.py", "diffpdf/diffPdfFiles.py", "diffvmd/diffvmd.py"):
            self.assertEqual((tools / script).read_bytes(), (source / script).read_bytes())
        old.unlink()
        old.mkdir()
        self.run_modiff("install-tools", self.root, status=2)
        self.assertEqual(list(old.parent.iterdir()), [old])

        (self.cwd / "openpyxl.py").touch()  # no module of the scripts
        fake = self.root / "bin/python"
        fake.parent.mkdir()
        for script, message in ((None, "there is no program python in PATH; get it with: apt-get install python-is-python3"),
                                ("exit 1", "does not run"),
                                ('exec /usr/bin/python3 -S "$@"', "no module openpyxl; get it with: apt-get install "
                                                                 "python3-openpyxl")):
            if script:
                fake.write_text(f"#!/bin/sh\n{script}\n")
                fake.chmod(0o755)
            _, error = self.run_modiff("verify", "--format", "xlsx", "x", status=2, env={"PATH": str(fake.parent)})
            self.assertIn(message, error.decode())
        _, error = self.run_modiff("verify", "--format", "pdf", "x", status=2, env={"PATH": str(fake.parent)})
        self.assertIn("no program pdftoppm in PATH; get it with: apt-get install poppler-utils", error.decode())
        shutil.rmtree(tools)
        _, error = self.run_modiff("verify", "--format", "vmd", "x", status=2)
        self.assertIn("no script ../../src/kavu/Builds/tools/diffvmd/diffvmd.py", error.decode())

    def test_numbers(self):
        for master, actual, status, place in ((b"a 1.5", b"b 1.5", 0, ""), (b"1 2 x3", b"1 2.5 y3", 1, "2: 2 and 2.5"),
                                              (b"1", b"1 2", 1, "2: none and 2"), (b"1", None, 1, "no actual file"),
                                              (b"1\x002", b"1", 2, "")):
            self.add("n", master, actual, "n", "m")
            out, _ = self.run_modiff("numbers", "m/n", "../webcontent/n/n", status=status)
            self.assertIn(place, out.decode())
            if actual:
                (self.root / "server/webcontent/n/n").unlink()


if __name__ == "__main__":
    unittest.main()
