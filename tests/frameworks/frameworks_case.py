"""What the tests of runners share. A test program is called with the build directory as its first argument."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = os.path.abspath(sys.argv.pop(1))
KILLED = """#!/bin/sh
case " $* " in *" --shard $VICTIM/"*) kill -9 $$ ;; esac
exec "${0%/*}/modiff.real" "$@"
"""


class FrameworksCase(unittest.TestCase):
    """The package is installed once; each test has the samples' tree, with a working directory server/run."""

    @classmethod
    def setUpClass(cls):
        cls.prefix = pathlib.Path(os.path.realpath(cls.enterClassContext(tempfile.TemporaryDirectory()))) / "installed"
        cls.call("cmake", "--install", BUILD, "--prefix", cls.prefix)
        cls.modiff = cls.prefix / "bin/modiff"
        cls.modiff.rename(cls.prefix / "bin/modiff.real")
        cls.modiff.write_text(KILLED)  # which dies in the shard that VICTIM tells
        cls.modiff.chmod(0o755)

    def setUp(self):
        self.root = pathlib.Path(os.path.realpath(self.enterContext(tempfile.TemporaryDirectory())))
        shutil.copytree(SOURCE / "samples/server", self.root / "server")
        self.call(self.modiff, "install-tools", self.root)
        self.call(self.modiff, "run", "--out", self.root / "local", cwd=self.root / "server/run", status=1)
        self.local = self.counts(self.root / "local")
        self.assertGreater(len(self.local), 2)

    @staticmethod
    def counts(directory):
        """The counts of a complete record."""
        end = json.loads((directory / "run.jsonl").read_text(encoding="utf-8").splitlines()[-1])
        return end["counts"] if end["complete"] else None

    @classmethod
    def call(cls, *command, status=0, environment=None, **options):
        """Runs a program as a server would, without this one's variables, and returns all that it says."""
        variables = {"PATH": f"{cls.prefix}/bin:/usr/bin:/bin", "HOME": os.environ.get("HOME", "/"), "VICTIM": "none",
                     **(environment or {})}
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=variables, timeout=300,
                              check=False, **options)
        text = done.stdout.decode(errors="replace")
        if done.returncode != status:
            raise AssertionError(f"{command} ends with {done.returncode} instead of {status}:\n{text}")
        return text
