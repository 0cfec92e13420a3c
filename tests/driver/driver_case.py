"""What the tests of the driver share. A test program is called with the path of modiff as its first argument."""

import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

MODIFF = os.path.abspath(sys.argv.pop(1))
DEBIAN_PATH = {**os.environ, "PATH": "/usr/bin:/bin"}  # whose python has the scripts' modules


def limit_files(size):
    """In the child: no file can have more bytes, as on a disk that is full. Beyond them comes a signal, too."""
    signal.signal(signal.SIGXFSZ, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class DriverCase(unittest.TestCase):
    """Each test has a fresh tree: the working directory server/run and server/webcontent beside it."""

    def setUp(self):
        self.root = pathlib.Path(os.path.realpath(self.enterContext(tempfile.TemporaryDirectory())))
        self.cwd = self.root / "server/run"
        self.cwd.mkdir(parents=True)

    def run_modiff(self, *arguments, status, **options):
        """Runs the driver, checks its status and returns what it wrote to standard output and standard error."""
        done = subprocess.run([MODIFF, *arguments], timeout=120, check=False,
                              **{"cwd": self.cwd, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options})
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
