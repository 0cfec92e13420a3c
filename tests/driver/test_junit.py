"""Tests of the test cases for CI servers: test_junit.py MODIFF"""

import os
import signal
import subprocess
import time
import unittest
from xml.etree import ElementTree

from driver_case import DEBIAN_PATH, MODIFF, DriverCase, limit_files

SLOW = "import time\nopen('started', 'w').close()\ntime.sleep(987)\n"


class JunitTest(DriverCase):
    def read(self, xml):
        """The result element of each case, "" for none, by name; the parser refuses what is not well-formed."""
        root = ElementTree.fromstring(xml)
        results = {case.get("name"): next((child.tag for child in case if child.tag != "system-out"), "")
                   for case in root.iter("testcase")}
        self.assertEqual(len(results), int(root.get("tests")))
        return results

    def test_a_run_and_its_record_give_the_same(self):
        self.add_usual()
        self.add("new.html", None, b"1")
        (self.cwd / "modiff.toml").write_text(
            'new = "fail"\n[[expected]]\npair = "html:Masters/gone.html"\nreason = "TRACK-1"\n')
        self.run_modiff("run", "--junit", "run.xml", status=2)
        xml, error = self.run_modiff("junit", status=0)
        self.assertEqual((xml, error), ((self.cwd / "run.xml").read_bytes(), b""))
        self.assertEqual(self.read(xml), {
            "html:Masters/same.html": "", "html:Masters/other.html": "failure", "html:Masters/gone.html": "skipped",
            "html:Masters/broken.html": "error", "new:../webcontent/v5DebugHTML/new.html": "failure"})
        self.assertIn(b"-text [-1-]\n+text {+2+}\n", xml)
        self.run_modiff("junit", "--record", "modiff-run", "--out", "later.xml", status=0)
        self.assertEqual((self.cwd / "later.xml").read_bytes(), xml)

    def test_whatever_names_and_files_hold(self):
        every = bytes(byte for byte in range(1, 256) if byte != ord("/"))
        hostile = [every[:130], every[130:], b"]]>", b"&amp;<!--", b"\xef\xbf\xbe\xef\xbf\xbf", b"\xed\xa0\x80", b"\\x41"]
        for number, text in enumerate(hostile):
            self.add(text + b".html", text * 5 + b"1", text * 6 + b"2")
            self.add(b"%d.csv" % number, text + b"\0,1\n", text + b"\0,2\n", "v5DebugCSV", "Masters/CSV")
        self.run_modiff("run", "--junit", "run.xml", status=1)
        results = self.read((self.cwd / "run.xml").read_bytes())
        self.assertEqual((len(results), set(results.values())), (2 * len(hostile), {"failure"}))
        for name in results:  # a name leads to its pair
            self.run_modiff("show", name, status=0)

    def test_large_differences_are_clipped(self):
        for number in range(9):
            lines = [f"line {line}" for line in range(20000)]
            self.add(f"{number}.csi", "\n".join(lines).encode(), "\n".join(lines[::-1]).encode(), "v5DebugROM")
        self.run_modiff("run", "--junit", "run.xml", status=1)
        xml = (self.cwd / "run.xml").read_bytes()
        self.assertEqual(len(self.read(xml)), 9)
        self.assertLess(len(xml), 9 * 66000)

    def test_a_run_that_was_ended_is_an_error(self):
        self.run_modiff("install-tools", self.root, status=0)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text(SLOW)
        self.add("slow.vmd", b"1", b"1", "v5DebugVMD", "Masters/vmd")
        self.add("r.html", b"1", b"1")
        (self.cwd / "run.xml").write_text("old")
        with subprocess.Popen([MODIFF, "run", "-j2", "--junit", "run.xml"], cwd=self.cwd, env=DEBIAN_PATH,
                              stdout=subprocess.DEVNULL) as process:
            while not (self.cwd / "started").exists():
                time.sleep(0.05)
            time.sleep(0.3)
            self.assertFalse((self.cwd / "run.xml").exists())
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(timeout=10), 143)
        results = self.read((self.cwd / "run.xml").read_bytes())
        self.assertEqual(results, {"the record is complete": "error", "html:Masters/r.html": ""})

    def test_only_whole_files_and_no_input_is_replaced(self):
        self.add_usual()
        self.run_modiff("run", status=2)
        (self.cwd / "old.xml").write_text("old")
        (self.cwd / "modiff.toml").write_text("")
        for out in ("Masters/same.html", "modiff-run/run.jsonl", "modiff.toml", "no/run.xml", "/dev/full"):
            self.run_modiff("junit", "--out", out, status=2)
            self.run_modiff("run", "--junit", out, status=2)
        self.run_modiff("run", "--junit", "x", "--summary", "x", status=2)
        self.run_modiff("junit", "--out", "old.xml", status=2, preexec_fn=lambda: limit_files(300))
        self.assertEqual((self.cwd / "old.xml").read_text(), "old")
        self.assertEqual((self.cwd / "Masters/same.html").read_text(), "text")
        self.assertEqual(sorted(path.name for path in self.cwd.iterdir()),
                         ["Masters", "modiff-run", "modiff.toml", "old.xml"])
        self.run_modiff("run", "none", "--junit", "old.xml", status=2)
        (self.cwd / "modiff.toml").write_text('exclude = ["Masters"]\n')
        self.run_modiff("run", "--junit", "old.xml", status=3)
        self.assertFalse((self.cwd / "old.xml").exists())

    def annotate(self, workspace, status):
        """The workflow commands of a run."""
        out, _ = self.run_modiff("run", "--annotations", "github", status=status,
                                 env={**os.environ, "GITHUB_WORKSPACE": str(workspace)})
        stop, end, *commands = [line for line in out.decode().splitlines() if line.startswith("::")]
        self.assertEqual(stop, "::stop-commands" + end[:-2])  # what is shown of reports in between is no command
        return commands

    def test_annotations(self):
        self.add_usual()
        self.add("5%, a:b.html", b"<p>\n\n1</p>", b"<p>\n\n2</p>")
        self.add("x\x1b\n::add-mask::y.html", b"1", b"2")
        self.add("new.html", None, b"1")
        (self.cwd / "modiff.toml").write_text('new = "fail"\n')
        where, what = "file=run/Masters/", " of the normalized texts%0A"
        self.assertEqual(self.annotate(self.root / "server", 2), [  # what has no verdict first
            f"::error title=error%3A html%3AMasters/broken.html,{where}broken.html::"
            'KLT_ASSERT_NAMED(ok, "Unable to read all of the contents of file ");',
            f"::error title=different%3A html%3AMasters/5%25%2C a%3Ab.html,{where}5%25%2C a%3Ab.html,line=3::"
            f"at byte 3{what}`1` -> `2`",
            f"::error title=missing%3A html%3AMasters/gone.html,{where}gone.html::no actual file",
            f"::error title=different%3A html%3AMasters/other.html,{where}other.html,line=1::"
            f"at byte 5{what}`text 1` -> `text 2`",
            f"::error title=different%3A html%3AMasters/x\\x1b\\n%3A%3Aadd-mask%3A%3Ay.html::at byte 0{what}`1` -> `2`",
            "::error title=new%3A ../webcontent/v5DebugHTML/new.html::no master"])
        for number in range(11):
            self.add(f"{number}.html", b"1", b"2")
        lines = self.annotate(self.root / "server/webcontent", 2)
        self.assertEqual(lines[10:], ["::notice title=modiff::7 more did not pass; the record tells them all"])
        self.assertNotIn("file=", "".join(lines))


if __name__ == "__main__":
    unittest.main()
