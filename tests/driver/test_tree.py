"""A tree with every outcome and warning gives one record, however it is compared: test_tree.py MODIFF

PAIRS in the environment tells how many pairs it has.
"""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

PAIRS = int(os.environ.get("PAIRS", "260"))

from driver_case import DEBIAN_PATH, MODIFF  # noqa: E402 (takes MODIFF from the arguments)
import make_tree  # noqa: E402

VERDICTS = {"expected": {"different", "missing"}, "unexpectedly-passed": {"passed"}}


class TreeTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(os.path.realpath(cls.enterClassContext(tempfile.TemporaryDirectory())))
        tree = make_tree.Tree(cls.root, MODIFF)
        tree.fill(PAIRS)
        cls.cwd, cls.expected = tree.run, tree.expected
        cls.modiff("run", "-j2", "--out", "two", "--summary", "two.xml", status=2)

    @classmethod
    def modiff(cls, *arguments, status):
        done = subprocess.run([MODIFF, *arguments], cwd=cls.cwd, env=DEBIAN_PATH, capture_output=True, check=False)
        if status is not None and done.returncode != status:
            raise AssertionError((arguments, done))
        return done.stdout.decode()

    def record(self, directory):
        """A record without times and order, and the places that name its own directory."""
        lines = [json.loads(line) for line in (self.cwd / directory / "run.jsonl").read_text().splitlines()]
        for line in lines:
            line.pop("seconds", None)
            if "result_file" in line:  # in the directory of the shard that compared
                line["result_file"] = os.path.relpath(line["result_file"], self.cwd).partition("/")[2]
        return lines[0], {line["id"]: line for line in lines if "id" in line}, [line for line in lines[1:] if "id" not in line]

    def test_outcomes_and_warnings_are_those_made(self):
        _, pairs, (new, end) = self.record("two")
        self.assertEqual(set(pairs), set(self.expected))
        for key, (outcome, warning) in self.expected.items():
            pair = pairs[key]
            self.assertEqual(pair["outcome"], outcome, pair)
            self.assertEqual(bool(pair["warnings"]), bool(warning), pair)
            self.assertIn(warning or "", " ".join(pair["warnings"]))
            self.assertTrue(pair["detail"] or outcome == "passed", pair)
        self.assertEqual(new["new"], ["../webcontent/v5DebugHTML/nobody's.html"])
        self.assertTrue(end["complete"])

    def test_jobs_and_shards_change_nothing(self):
        for jobs, directory in (("1", "one"), ("8", "eight")):
            self.modiff("run", f"-j{jobs}", "--out", directory, status=2)
        shards = [f"shard{index}" for index in range(1, 6)]
        for index, directory in enumerate(shards, 1):
            self.modiff("run", "--shard", f"{index}/5", "--out", directory, status=None)
        self.modiff("merge", *shards, "--out", "merged", status=2)
        for directory in ("one", "eight", "merged"):
            for ours, theirs in zip(self.record("two")[1:], self.record(directory)[1:]):
                for key in ours if isinstance(ours, dict) else range(len(ours)):
                    self.assertEqual(ours[key], theirs[key])
                self.assertEqual(len(ours), len(theirs))

    def test_verify_says_the_same_format_by_format(self):
        endless = ("_hang", "_eat")
        summary = self.elements("two.xml")
        for form in make_tree.FORMATS:
            told = {}
            elements = []
            for language in make_tree.LANGUAGES:
                ids = [key for key in sorted(self.expected) if key.startswith(form.word + ":")
                       and self.language(key) == language and not any(word in key for word in endless)]
                if ids:
                    out = self.modiff(*self.verify(form, language, ids), status=None)
                    told.update((f"{form.word}:{master}", outcome) for outcome, master in
                                re.findall(r"(?m)^(passed|different|missing|error|crashed) +(.*?)  ", out))
                    elements += self.elements("v.xml")
            verdicts = {key: self.expected[key][0] for key in told}
            self.assertEqual(len(told), len([key for key in self.expected if key.startswith(form.word + ":")
                                             and not any(word in key for word in endless)]))
            for key, outcome in told.items():
                self.assertIn(outcome, VERDICTS.get(verdicts[key], {verdicts[key]}), key)
            self.assertEqual(sorted(elements), [element for element in summary if element[1] in
                                                {key.split(":", 1)[1] for key in told}])

    @staticmethod
    def language(key):
        return next((language for language in make_tree.LANGUAGES[1:] if f"/{language}/" in key), "")

    @staticmethod
    def verify(form, language, ids):
        options = {"tvd": ["--type-name", "v5DebugTVD", "--master-sub-directory", "charts", "--master-suffix", "en"],
                   "prp": ["--type-name", "v5DebugPRP", "--master-sub-directory", "props"]}.get(form.word, [])
        reports = [re.sub(r":?(.*)/Masters/.*/?(r\d+_\w+?)(_en)?\..*", r"\1/\2", key.split(":", 1)[1]) for key in ids]
        return ["verify", "--format", form.word, *options, "--sub-directory", language, "--max-age", "10d", "--summary",
                "v.xml", "-j2", "--", *reports]

    def elements(self, name):
        root = xml.etree.ElementTree.parse(self.cwd / name).getroot()
        return sorted((element.tag, element.findtext("MasterFile"), element.findtext("CurrentFile")) for element in root)


if __name__ == "__main__":
    unittest.main()
