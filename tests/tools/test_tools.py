"""Tests of what all diff scripts do: /usr/bin/python3 -m unittest discover -s tests/tools"""

import os
import subprocess
import sys
import unittest

from documents import letter
from tool_test import PDF, VMD, XLSX, ToolTest
from workbooks import workbook


class AllToolsTest(ToolTest):
    def test_names_of_files(self):
        hostile = ("-o", "--help", "-x y", "$(touch pwned)`touch pwned`", "a\n\"b'\\", "fd:0",
                   "\udcff\x1b[2J", "n" * 255)
        for script, data in ((XLSX, workbook()), (PDF, letter()), (VMD, b"a\n")):
            for name in hostile:
                with self.subTest(script=script.name, name=name):
                    names = "master", self.write(name, data)
                    options = ("-o", "result") if script == XLSX else ()
                    self.write("master", data)
                    self.check(self.run_tool(script, *options, *names), 0, "")
        self.assertFalse((self.folder / "pwned").exists())

    def test_no_verdict(self):
        os.mkfifo(self.folder / "fifo")
        (self.folder / "openpyxl.py").write_text("raise ModuleNotFoundError(name='openpyxl')")
        self.write("book", workbook())
        self.write("paper", letter())
        self.write("longer", letter() + b"\n")  # the same bytes would need no reader
        for script, arguments, environment, text in (
                (VMD, ["book", "fifo"], {}, "fifo: not a regular file"), (PDF, ["fifo", "paper"], {}, "not a regular"),
                (VMD, ["."], {}, "two files are needed"), (VMD, ["--help", "x\ny"], {}, "--help: No such file"),
                (PDF, ["--image", "x", "a", "b"], {}, "unrecognized"),
                (XLSX, ["-o", "book", "book", "fifo"], {}, "to be overwritten by the result"),
                (XLSX, ["book", "book"], {"PYTHONPATH": "."}, "install the package python3-openpyxl"),
                (PDF, ["paper", "longer"], {"PATH": "/nowhere"}, "install the package poppler-utils")):
            with self.subTest(arguments=arguments, text=text):
                self.check(self.run_tool(script, *arguments, env={**os.environ, **environment}), 2, text)

    def test_an_end_that_meets_a_destructor_is_not_lost(self):
        script = ("import modifftools as tool, os, signal, time\n"
                  "class Slow:\n"
                  "    def __del__(self):\n"
                  "        {}\n"
                  "        time.sleep(0.01)\n"
                  "with tool.clean_exit():\n"
                  "    tool.bound(4096, {})\n"
                  "    Slow()\n"
                  "    time.sleep(20)\n")
        for cause, seconds, reason in (("os.kill(os.getpid(), signal.SIGTERM)", 60, b"interrupted"),
                                       ("time.sleep(2)", 1, b"longer than 1 seconds")):
            done = subprocess.run([sys.executable, "-c", script.format(cause, seconds)], capture_output=True,
                                  env={**os.environ, "PYTHONPATH": os.path.dirname(os.path.dirname(XLSX))}, timeout=60)
            self.assertEqual(done.returncode, 2, done.stderr)
            self.assertIn(reason, done.stderr.splitlines()[-1])

    def test_standard_output_may_be_closed_early(self):
        read, write = os.pipe()
        os.close(read)
        lines = [self.write(name, name.encode() * 5 + b"\n") for name in "ab"]
        for output, status in ((write, 1), (os.open("/dev/full", os.O_WRONLY), 2)):
            done = subprocess.run([sys.executable, VMD, *lines], cwd=self.folder, stdout=output, stderr=subprocess.PIPE)
            os.close(output)
            self.assertEqual((done.returncode, b"Traceback" in done.stderr), (status, False), done)


if __name__ == "__main__":
    unittest.main()
