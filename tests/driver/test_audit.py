"""Tests of the blind-spot meter: test_audit.py MODIFF"""

import json
import os
import re
import signal
import subprocess
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase


class AuditTest(DriverCase):
    def setUp(self):
        super().setUp()
        self.temporary = self.root / "tmp"
        self.temporary.mkdir()
        self.environment = {**DEBIAN_PATH, "TMPDIR": str(self.temporary)}

    def audit(self, *arguments, status=0):
        out, error = self.run_modiff("audit", *arguments, status=status, env=self.environment)
        self.assertEqual(list(self.temporary.iterdir()), [])
        return (out or error).decode()

    def row(self, out, name):
        """The numbers of a table's row."""
        return re.search(rf"(?m)^{re.escape(name)} +(.*?)(?:  compared as .*)?$", out)[1].split()

    def add_all(self):
        self.add("a.html", b"<p>1\n<script>one</script>2", b"<p>1\n<script>other</script>2", masters="x/Masters")
        self.add("b.html", b"<p>1\n2 <script>3</script>", b"<p>1\n2 <script>3</script>", masters="x/Masters")
        self.add("c.html", b"<p>1</p>", b"<p>2</p>", masters="y/Masters/en")
        self.add("d.csi", b"a\r\nb\r\nc", b"a\nb\nc", "v5DebugROM", "Masters")
        self.add("e.csv", b"1,2", b"1,2", "v5DebugCSV", "Masters/CSV")
        (self.root / "server/webcontent/v5DebugHTML/c.html").rename(self.root / "server/webcontent/c.html")
        self.add("c.html", None, b"<p>2</p>", "v5DebugHTML/en")
        self.run_modiff("run", "--new", "ignore", status=1)

    def test_what_is_hidden_is_counted_and_shown(self):
        self.add_all()
        out = self.audit()
        for name, numbers in (
                ("html", "3 120 82 68.3 1"), ("csi", "1 12 2 16.7 1"), ("csv", "1 6 0 0.0 0"), ("x", "2 104 82 78.8 1"),
                ("y", "1 16 0 0.0 0"), (".", "2 18 2 11.1 1"), ("Script", "2 104 78 75.0 1"), ("Newline", "2 104 4 3.8 0"),
                ("CarriageReturn", "1 12 2 16.7 1")):
            self.assertEqual(self.row(out, name), numbers.split(), (name, out))
        self.assertIn("differs    html:x/Masters/a.html  23 hidden bytes in 1 place\n"
                      "           Script: 21 and 23 bytes\n"
                      "             x/Masters/a.html:2:10                  <p>1\\n<script>one</script>2\n"
                      "             ../webcontent/v5DebugHTML/a.html:2:10  <p>1\\n<script>other</script>2\n", out)
        self.assertIn("csi:Masters/d.csi  2 hidden bytes in 2 places\n           CarriageReturn alone: 2 places\n", out)
        self.assertIn("rest       x/Masters/b.html:2:3  Script hides 18 of 25 bytes, to the end of the file\n", out)
        self.assertLess(out.index("a.html  23 hidden"), out.index("d.csi  2 hidden"))
        self.assertTrue(out.endswith("5 pairs, 2 passed although what is hidden differs\n"))
        self.assertNotIn("html", self.audit("--format", "csi", "--format", "csv"))
        self.assertIn("and 1 pair more", self.audit("--most", "1"))

    def test_programs_are_told_the_same(self):
        self.add_all()
        told = json.loads(self.audit("--json", "--most", "0", "--mutate", "30"))
        self.assertEqual(told["formats"][2], {"name": "html", "pairs": 3, "bytes": 120, "hidden": 82, "differ": 1})
        first, second = told["differences"]
        self.assertEqual((first["id"], first["longest"][0]["actual"]["line"], second["carriage_returns"]),
                         ("html:x/Masters/a.html", 2, 2))
        self.assertEqual([rest["to_end"] for rest in told["rests"]], [False, False, True])
        self.assertEqual([row["changed"] for row in told["mutations"]], [10, 10, 10])

    def test_files_that_changed_are_said_and_not_used(self):
        self.add_all()
        (self.cwd / "x/Masters/a.html").write_text("<script>two</script>")
        (self.cwd / "Masters/d.csi").unlink()
        out = self.audit("--mutate", "40")
        self.assertRegex(out, r"left out   html:x/Masters/a.html  \S+a.html changed since the run\n")
        self.assertRegex(out, r"left out   csi:Masters/d.csi  cannot read ")
        self.assertNotIn("differs    ", out)
        self.assertEqual(self.row(out.partition("One byte")[2], "csi"), ["0", "0", "0.0"])
        self.assertIn("left out   csi:Masters/d.csi  the master changed", out)
        self.assertEqual(self.row(out, "x"), ["2", "104", "82", "78.8", "0"])  # what the record knows

    def test_mutations(self):
        self.add_all()
        before = {path: path.read_bytes() for path in self.root.rglob("*") if path.is_file()}
        out = self.audit("--mutate", "300", "--seed", "7")
        self.assertEqual(out, self.audit("--mutate", "300", "--seed", "7", "--record", "modiff-run"))
        self.assertEqual(self.row(out.partition("One byte")[2], "csv"), ["100", "100", "100.0"])
        changed, noticed, _ = self.row(out.partition("One byte")[2], "html")
        hidden = re.findall(r"(?m)^html  (\S+) +(\d+) ", out)
        self.assertEqual(int(changed), int(noticed) + sum(int(count) for _, count in hidden))
        self.assertIn("Script", dict(hidden))
        self.assertLessEqual(set(dict(hidden)), {"Script", "Newline"})
        self.assertEqual(before, {path: path.read_bytes() for path in self.root.rglob("*") if path.is_file()})

    def test_a_signal_leaves_nothing_behind(self):
        self.add("a.html", b"1" * 1000000, b"1" * 1000000)
        self.run_modiff("run", status=0)
        with subprocess.Popen([MODIFF, "audit", "--mutate", "100000"], cwd=self.cwd, env=self.environment,
                              stdout=subprocess.DEVNULL) as process:
            while not list(self.temporary.iterdir()):
                os.sched_yield()
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(timeout=60), 130)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_troubles(self):
        self.add_all()
        for arguments, message in ((["--format", "htm"], "no format htm"), (["--format", "pdf"], "no pair"),
                                   (["--seed", "1"], "--mutate"), (["--mutate", "0"], "--mutate"),
                                   (["--record", "none"], "none: there is no record")):
            self.assertIn(message, self.audit(*arguments, status=2))
        self.temporary.chmod(0o500)
        if os.geteuid() != 0:
            self.assertIn("cannot make", self.audit("--mutate", "9", status=2))


if __name__ == "__main__":
    unittest.main()
