"""What the tests of the diff scripts share.

Each table row of theirs names a case, makes the pair, and states the status and a text that the script must print.
"""

import contextlib
import functools
import importlib.util
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
XLSX, PDF, VMD = TOOLS / "DiffXlsx/DiffXlsx.py", TOOLS / "diffpdf/diffPdfFiles.py", TOOLS / "diffvmd/diffvmd.py"


@functools.lru_cache
def loaded(script):
    """A script as a module."""
    found = importlib.util.spec_from_file_location(script.stem, script)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, data):
        (self.folder / name).write_bytes(data)
        return name

    def run_tool(self, script, *arguments, **keywords):
        options = ("-o", "result") if script == XLSX and arguments[0] != "-o" else ()
        return subprocess.run([sys.executable, script, *options, *arguments], cwd=self.folder, timeout=60, text=True,
                              errors="surrogateescape", capture_output=True, **keywords)

    def check(self, done, status, text):
        """Status and text must be there, a refusal on standard error alone, in one line."""
        printed = done.stderr if status == 2 else done.stdout
        self.assertEqual((done.returncode, text in printed), (status, True), done)
        self.assertEqual(done.stderr.count("\n"), int(status == 2), done)

    def check_pair(self, script, master, actual, status, text, *options):
        """Checks a pair of contents without a process of its own, which would cost more than the comparison."""
        names = [str(self.folder / self.write(*file)) for file in (("master", master), ("actual", actual))]
        options = [*options, *(["-o", str(self.folder / "result")] if script == XLSX else [])]
        module, output, errors = loaded(script), io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(errors):
            with self.assertRaises(SystemExit) as end, module.tool.clean_exit():
                sys.exit(module.main([*options, *names]))
        self.check(subprocess.CompletedProcess(names, end.exception.code, output.getvalue(), errors.getvalue()),
                   status, text)
