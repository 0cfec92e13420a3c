"""Tests of the command line and of the small commands: test_commands.py MODIFF"""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase


class CommandsTest(DriverCase):
    def test_bad_command_lines(self):
        for arguments, message in (
                ("", "subcommand"), ("verify x", "--format is required; `modiff verify --help`"),
                ("verify --format html", "no report is given"), ("verify --format doc x", "no format doc"),
                ("verfy --format html x", "there is no command verfy; did you mean verify?"),
                ("--versoin", "there is no option --versoin; did you mean --version?"),
                ("verify --formt=html x", "there is no option --formt; did you mean --format?"),
                ("verify --format html --no x", "--no"), ("formats x", "x is one argument too many"),
                ("verify --format tvd x", "--type-name"),
                ("verify --format prp --type-name t --master-suffix s x", "--master-suffix"),
                ("verify --format csv --type-name t x", "--type-name"), ("verify --format html -0 x", "--reports-from"),
                ("verify --format html --log-level normal x", "--log"),
                ("verify --format html --log l --log-level loud x",
                 "--log-level: there is no loud; choose one of concise, detailed, minimal, none, normal"),
                ("verify --format html dir/", "names no report"), ("verify --format html -- ", "no report is given"),
                ("numbers x", "ACTUAL")):
            _, error = self.run_modiff(*arguments.split(), status=2)
            self.assertIn(message, error.decode())
        for option in ("--summary", "--log", "--reports-from"):
            _, error = self.run_modiff("verify", "--format", "html", option, "", "x", status=2)
            self.assertIn(f"{option}: needs a value that is not empty", error.decode())
        self.run_modiff("verify", "--format", "html", "--", "", status=2)
        self.assertRegex(self.run_modiff("--version", status=0)[0], rb"^modiff \d+\.\d+\.\d+\n$")

    def test_each_command_tells_its_statuses(self):
        out, _ = self.run_modiff("--help", status=0)
        commands = re.findall(r"^  (\S+)  ", out.decode().split("Subcommands:")[1], re.MULTILINE)
        self.assertGreater(len(commands), 3)
        for command in commands:
            self.assertIn(b"Exit status: 0", self.run_modiff(command, "--help", status=0)[0], command)

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

    def test_doctor(self):
        self.add("r.html", b"1", b"1")
        self.add("r.vmd", b"1", b"1", "v5DebugVMD", "Masters/vmd")
        self.run_modiff("install-tools", self.root, status=0)
        out, _ = self.run_modiff("doctor", status=0, env=DEBIAN_PATH)
        self.assertTrue(out.endswith(b"\nNothing stands in the way of a run.\n"), out)
        shutil.rmtree(self.root / "src")
        self.add("r.xlsx", b"1", None, masters="a\nb/Masters/XSL2007")
        out, _ = self.run_modiff("doctor", status=2, env=DEBIAN_PATH)
        self.assertRegex(out, rb"(?m)^trouble    .*diffvmd.py.*\n .*modiff install-tools")
        self.assertRegex(out, rb"(?m)^trouble    .*a\\nb/Masters/XSL2007")

    def test_numbers(self):
        for master, actual, status, place in (
                (b"a 1.5", b"b 1.5", 0, "passed"), (b"1 2 x3", b"1 2.5 y3", 1, "2: 2 and 2.5"),
                (b"1", b"1 2", 1, "2: none and 2"), (b"1", None, 2, "cannot read a: No such file"),
                (b"1\x002", b"1", 2, "m holds a NUL byte")):
            (self.cwd / "m").write_bytes(master)
            (self.cwd / "a").unlink(missing_ok=True)
            if actual is not None:
                (self.cwd / "a").write_bytes(actual)
            out, error = self.run_modiff("numbers", "m", "a", status=status)
            self.assertIn(place, (out + error).decode())
        self.run_modiff("numbers", ".", "m", status=2)

    def test_numbers_reads_a_pipe_to_its_end(self):
        (self.cwd / "m").write_text("1 " * 100000 + "2")
        script = f"(printf '1 %.0s' {{1..50000}}; sleep 0.2; printf '1 %.0s' {{1..50000}}; printf %s \"$0\") | {MODIFF} numbers m /dev/stdin"
        for last, status in (("2", 0), ("3", 1)):
            done = subprocess.run(["bash", "-c", script, last], cwd=self.cwd, check=False, capture_output=True)
            self.assertEqual(done.returncode, status, done)
            self.assertEqual(b"number 100001: 2 and 3" in done.stdout, status == 1)


if __name__ == "__main__":
    unittest.main()
