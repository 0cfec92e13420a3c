"""Tests of the completion of shells, by the program and in each shell that is there: test_completion.py MODIFF"""

import os
import pathlib
import shlex
import shutil
import subprocess
import unittest

from driver_case import MODIFF, DriverCase

SCRIPTS = pathlib.Path(__file__).parents[2] / "share/completion"
ENVIRONMENT = {**os.environ, "PATH": os.path.dirname(MODIFF) + ":/usr/bin:/bin"}
LOSS = "html:Masters/Profit & Loss.html"

BASH = """
source /usr/share/bash-completion/bash_completion
source {script}
COMP_WORDS=({raw}) COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)) COMP_LINE={line} COMP_POINT=${{#COMP_LINE}} COMP_TYPE=9
compopt() {{ :; }}
_modiff modiff
printf '%s\\n' "${{COMPREPLY[@]}}"
"""
ZSH = """
compdef() {{ :; }}
compadd() {{ print -rl -- "${{(@P)@[-1]}}"; }}
compset() {{ :; }}
_files() {{ print files $1; }}
words=({words}) CURRENT=$#words PREFIX=${{words[-1]}}
source {script}
"""


class CompletionTest(DriverCase):
    def setUp(self):
        super().setUp()
        for name, actual in (("same.html", b"1"), ("Profit & Loss.html", b"2"), ("Profile.html", None)):
            self.add(name, b"1", actual)
        self.run_modiff("run", status=1)

    def complete(self, *words):
        """The candidates for the last word."""
        out, _ = self.run_modiff("--complete", *words, status=0)
        return [line.split("\t")[0] or line for line in out.decode().splitlines()]

    def test_what_the_program_offers(self):
        failed = ["html:Masters/Profile.html", LOSS]
        for words, wanted in (
                (["sh"], ["show"]), (["show", "--g"], ["--group", "--groups"]), (["--v"], ["--version"]),
                (["run", "--format", "xls"], ["xls", "xlsx"]), (["run", "--format", "=", "pd"], ["pdf"]),
                (["verify", "--format=pd"], ["--format=pdf"]), (["run", "--format", "="], None),
                (["run", "--summary", ""], ["\tfiles"]), (["run", "--summary=x"], ["\tfiles"]),
                (["run", "--failed", ""], failed + ["html:Masters/same.html"]), (["show", "--record", ""], ["\tdirectories"]),
                (["show", ""], failed), (["run", "html:Masters/s"], ["html:Masters/same.html"]),
                (["accept", "--all", "--", "html:Masters/Profi"], failed), (["show", "--record", "nowhere", ""], []),
                (["show", "--group", ""], []), (["verify", "run"], ["\tfiles"]), (["show", "--", "--g"], []),
                (["numbers", "x", ""], ["\tfiles"]), ([], []), (["nothing", ""], None)):
            offered = self.complete(*words)
            if wanted is None:
                self.assertGreater(len(offered), 10, words)
            else:
                self.assertCountEqual(offered, wanted, words)
        (self.cwd / "modiff.toml").write_text("jobs = [")
        self.assertEqual(self.complete("show", ""), [])
        self.assertIn("show\tShow what differs", self.run_modiff("--complete", "sh", status=0)[0].decode())

    def offered_by(self, shell, text, words):
        """What a shell would put into the line."""
        if not shutil.which(shell, path=ENVIRONMENT["PATH"]):
            self.skipTest(f"there is no {shell} here")
        line, split = shlex.quote("modiff " + text), shlex.join(words)
        scripts = {
            "bash": ["bash", "-c", BASH.format(script=SCRIPTS / "modiff.bash", line=line, raw=split)],
            "zsh": ["zsh", "-fc", ZSH.format(script=SCRIPTS / "_modiff", words=split)],
            "fish": ["fish", "--no-config", "-c", f"source {SCRIPTS}/modiff.fish; complete -C {line}"]}
        done = subprocess.run(scripts[shell], cwd=self.cwd, env={**ENVIRONMENT, "HOME": str(self.root)}, check=False,
                              capture_output=True, text=True, timeout=60)
        self.assertEqual(done.stderr, "", shell)
        return [line.split("\t")[0] for line in done.stdout.splitlines() if line]

    def check_shell(self, shell, loss, files, colon):
        split = ["modiff", "show", "html", ":", "Masters/Profit"] if colon else ["modiff", "show", "html:Masters/Profit"]
        (self.cwd / "some file.xml").touch()
        for text, words, wanted in (("sh", ["modiff", "sh"], ["show"]),
                                    ("verify --format pd", ["modiff", "verify", "--format", "pd"], ["pdf"]),
                                    ("show html:Masters/Profit", split, [loss]),
                                    ("run --summary some", ["modiff", "run", "--summary", "some"], [files])):
            self.assertEqual(self.offered_by(shell, text, words), wanted, (shell, text))

    def test_bash(self):
        if not os.path.exists("/usr/share/bash-completion/bash_completion"):
            self.skipTest("there is no bash-completion here")
        self.check_shell("bash", r"Masters/Profit\ \&\ Loss.html", "some file.xml", colon=True)
        quoted = '"html:Masters/Profit'
        self.assertEqual(self.offered_by("bash", f"show {quoted}", ["modiff", "show", quoted]), [LOSS])

    def test_zsh(self):
        self.check_shell("zsh", LOSS, "files", colon=False)

    def test_fish(self):
        self.check_shell("fish", LOSS, "some file.xml", colon=False)


if __name__ == "__main__":
    unittest.main()
