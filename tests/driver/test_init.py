"""Tests of `modiff init`: test_init.py MODIFF"""

import os
import shutil
import tomllib
import unittest

from driver_case import DriverCase

CHART = ("v5DebugTVD", "Masters/charts")


class InitTest(DriverCase):
    def init(self, *arguments, status=0, **options):
        out, error = self.run_modiff("init", *arguments, status=status, **options)
        return out.decode() + error.decode()

    def listed(self, *arguments, **options):
        out, _ = self.run_modiff("run", "--list", *arguments, status=0, **options)
        return out.decode().splitlines()

    def add_output(self, output, *names):
        for name in names:
            path = self.root / "server/webcontent" / output / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"")

    def tables(self, directory=None):
        found = tomllib.loads(((directory or self.cwd) / "modiff.toml").read_text())
        return {key: [tuple(table.values()) for table in found[key]] for key in ("tvd", "prp") if key in found}

    def test_the_working_directory_is_found_from_all_around(self):
        self.add("a.html", b"1", b"1", masters="reports/sales/Masters")
        before = self.listed()
        for start, written in (("server/run", None), ("server", "run"), (".", "server/run"),
                               ("server/run/reports", ".."), ("server/run/reports/sales/", "../..")):
            directory = self.root / start
            self.assertIn("html                1             1\n", self.init(cwd=directory), start)
            config = tomllib.loads((directory / "modiff.toml").read_text())
            self.assertEqual(config.get("working-directory"), written, start)
            self.assertEqual(self.listed(cwd=directory), before, start)
            (directory / "modiff.toml").unlink()
        shown = self.init("../..")
        self.assertIn("modiff run  compares all pairs\n", shown)
        self.assertIn(f"note       {self.root}/modiff.toml  is no longer the one", self.init("."))
        (self.cwd / "modiff.toml").unlink()
        (self.root / "elsewhere").mkdir()
        shown = self.init("--working-directory", ".", "../../elsewhere")
        self.assertIn(f"modiff run --config {self.root}/elsewhere/modiff.toml  compares", shown)
        self.assertEqual(self.listed("--config", "../../elsewhere/modiff.toml"), before)

    def test_what_cannot_be_configured_is_refused(self):
        (self.root / "server/webcontent/v5DebugHTML").mkdir(parents=True)
        (self.cwd / "masters").mkdir()
        self.assertIn("no folder is named Masters below " + str(self.cwd) + "; should masters be", self.init(status=2))
        (self.cwd / "Masters").mkdir()
        self.assertIn("hold no file of the formats", self.init(status=2))
        self.add("a.html", b"1", b"1")
        for arguments, reason in (
                (["nowhere"], "cannot enter the directory nowhere: No such file"), (["Masters"], "among the masters"),
                (["--format", "htlm"], "did you mean html?"),
                (["--working-directory", ".", "../webcontent/v5DebugHTML"], "among the actual files"),
                (["--format", "tvd"], "--format: no folder of Masters holds tvd files"), (["--root", "x"], "--root: "),
                (["--sub-directory", "fr"], "--sub-directory: neither masters nor output"),
                (["--working-directory", "nowhere"], "nowhere: No such file"), (["--jobs", "0"], "--jobs: "),
                (["--exclude", "y*"], "leaves nothing out")):
            self.assertIn(reason, self.init(*arguments, status=2), arguments)
        shutil.copytree(self.root / "server", self.root / "second")
        self.assertIn(f"see ../webcontent: {self.root}/second/run, {self.root}/server/run; choose one",
                      self.init(status=2, cwd=self.root))
        shutil.rmtree(self.root / "server/webcontent")
        self.assertIn(f"no directory sees ../webcontent, neither {self.cwd} nor", self.init(status=2))
        self.assertEqual(list(self.root.rglob("modiff.toml")), [])
        self.assertIn("though ../webcontent is not there", self.init("--working-directory", "."))

    def test_a_file_is_written_whole_and_over_none(self):
        self.add("a.html", b"1", b"1")
        file = self.cwd / "modiff.toml"
        shown = self.init("--dry-run", "--jobs", "3")
        self.assertIn('\njobs = 3\n', shown)
        self.assertFalse(file.exists())
        for make in (lambda: file.write_text("jobs = 7\n"), lambda: file.symlink_to("nowhere")):
            make()
            self.assertIn("is there already; --force replaces it", self.init(status=2))
            self.assertIn("# jobs = ", self.init("--dry-run"))
            file.unlink()
        file.write_text("jobs = 7\n")
        self.init("--force")
        self.assertNotIn("jobs = 7", file.read_text())
        file.unlink()
        if os.geteuid() != 0:
            self.cwd.chmod(0o555)
            self.assertIn("modiff.toml: Permission denied", self.init(status=2))
            self.cwd.chmod(0o755)

    def test_options_stand_in_the_file(self):
        self.add("a.html", b"1", b"1", masters="reports/Masters/en-us", output="v5DebugHTML/en-us")
        self.add("b.csv", b"1", b"1", masters="reports/Masters/CSV", output="v5DebugCSV")
        self.add("c.html", b"1", b"1", masters="drafts/Masters")
        for arguments, wanted, pairs in (
                ([], {}, 3), (["--root", "reports"], {"roots": ["reports"]}, 2),
                (["--format", "html", "--sub-directory", "", "--max-age", "1d"],
                 {"formats": ["html"], "sub-directories": [""], "max-age": "1d"}, 1),
                (["--exclude", "drafts", "--jobs", "2", "--time-limit", "none", "--hidden-warning", "7.5"],
                 {"exclude": ["drafts"], "jobs": 2, "time-limit": "none", "hidden-warning": 7.5}, 2)):
            shown = self.init("--force", *arguments)
            self.assertEqual(tomllib.loads((self.cwd / "modiff.toml").read_text()), wanted)
            self.assertEqual(len(self.listed()), pairs, shown)

    def test_every_default_is_what_the_file_says_it_is(self):
        self.add("a.html", b"1", b"1")
        self.init()
        text = (self.cwd / "modiff.toml").read_text()
        before, _ = self.run_modiff("run", "--print-config", status=0)
        keys = [line.split(" = ")[0] for line in before.decode().splitlines() if not line.startswith("#")]
        active = "\n".join(line.lstrip("# ") for line in text.splitlines()
                           if line.lstrip("# ").split(" = ")[0] in keys and line.startswith("# "))
        self.assertEqual(set(tomllib.loads(active)) - {"working-directory"}, set(keys) - {"working-directory"})
        (self.cwd / "modiff.toml").write_text(active.replace('"."', f'"{self.cwd}"'))
        after, _ = self.run_modiff("run", "--print-config", status=0)
        values = [[line.split("  # ")[0] for line in text.decode().splitlines()
                   if not line.startswith(("roots", "formats", "#", "sub-directories"))] for text in (before, after)]
        self.assertEqual(*values)

    def test_folders_of_charts_and_properties(self):
        odd = 'odd "name"\n\\\x7f\u202e'
        rows = (
            ("usual", ["charts/a_en.tvd", "charts/b_de.tvd", "props/a.prp"],
             {"v5DebugTVD": ["a_en.tvd"], "P": ["a.prp"]},
             {"tvd": [("v5DebugTVD", "charts")], "prp": [("P", "props")]}),
            ("by suffix", ["charts/a_en.tvd", "charts/a_de.tvd", "charts/b_de.tvd"],
             {"En": ["a_en.tvd"], "De": ["a_de.tvd", "b_de.tvd"]},
             {"tvd": [("De", "charts", "de"), ("En", "charts", "en")]}),
            ("no suffix to split by", ["charts/a.tvd", "charts/a_de.tvd", "charts/b_de.tvd"],
             {"En": ["a.tvd"], "De": ["a_de.tvd", "b_de.tvd"]}, {"tvd": [("De", "charts")]}),
            ("a language by its output", ["fr/charts/a.tvd", "charts/b.tvd"], {"T/fr": ["a.tvd"], "T": ["b.tvd"]},
             {"tvd": [("T", "charts")]}),
            ("a language by other masters", ["en-us/c.html", "en-us/charts/a.tvd"], {"v5DebugHTML/en-us": ["c.html"]},
             {"tvd": [("v5DebugTVD", "charts")]}),
            ("in a language itself", ["en-us/c.html", "en-us/a.tvd", "b.tvd"], {"T/en-us": ["a.tvd"]},
             {"tvd": [("T",)]}),
            ("two folders", ["one/a.tvd", "two/a.tvd", "two/b.tvd"], {"T1": ["a.tvd"], "T2": ["a.tvd", "b.tvd"]},
             {"tvd": [("T1", "one"), ("T2", "two")]}),
            ("one inside of another", ["c/a.tvd", "x/c/b.tvd"], {"T1": ["a.tvd"], "T2": ["b.tvd"]},
             {"tvd": [("T1", "c")]}),
            ("a guess", ["charts/a.tvd"], {"Others": ["x.tvd"]}, {"tvd": [("Others", "charts")]}),
            ("hostile", [odd + "/a.tvd", "p/a.prp"], {odd: ["a.tvd"], "x\udcff": ["a.prp"]},
             {"tvd": [(odd, odd)], "prp": [("v5DebugPRP", "p")]}),
            ("not to be written", ["x\udcff/a.tvd"], {"T": ["a.tvd"]}, {}))
        for name, masters, outputs, wanted in rows:
            for directory in ("run", "webcontent"):
                shutil.rmtree(self.root / "server" / directory, ignore_errors=True)
            self.cwd.mkdir()
            self.add("usual.html", b"1", b"1")
            for master in masters:
                path = self.cwd / "reports/Masters" / master
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(b"")
            for output, names in outputs.items():
                self.add_output(output, *names)
            shown = self.init()
            self.assertNotIn("\x7f", shown)
            self.assertEqual(self.tables(), wanted, (name, shown))
            pairs = sum(int(line.split()[1]) for line in shown.split("\n\n")[1].splitlines()[1:])
            self.assertEqual(len(self.listed()), pairs, (name, shown))

    def test_what_may_not_be_meant_so_is_shown(self):
        self.add("a.html", b"1", b"1")
        self.add("a.html", b"1", b"1", masters="other/Masters")
        self.add_output("v5DebugHTML", "n1.html", "n2.html")
        (self.cwd / "Masters/readme.txt").touch()
        (self.cwd / "reports/Mastres").mkdir(parents=True)
        (self.cwd / "loop").symlink_to(".")
        (self.cwd / "Masters/loop").symlink_to(".")
        shown = self.init()
        for line in ("no format  Masters  1 file that nothing reads", "name       reports/Mastres  is not searched",
                     "shared     2 masters  have an actual file", "new        2 actual files  without master, which"):
            self.assertIn(line, shown)


if __name__ == "__main__":
    unittest.main()
