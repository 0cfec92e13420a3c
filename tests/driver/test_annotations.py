"""Tests of what CI servers show at lines of masters: test_annotations.py MODIFF"""

import os
import unittest

from driver_case import DriverCase


class AnnotationsTest(DriverCase):
    maxDiff = None

    def annotate(self, workspace, status):
        """The workflow commands of a run."""
        out, _ = self.run_modiff("run", "--annotations", "github", status=status,
                                 env={**os.environ, "GITHUB_WORKSPACE": str(workspace)})
        return [line for line in out.decode().splitlines() if line.startswith("::")]

    def test_each_failure_is_told_at_its_line(self):
        self.add_usual()
        self.add("100%, a:b.html", b"<p>\n\n1</p>", b"<p>\n\n2</p>")
        self.add("x\x1b\n::add-mask::y.html", b"1", b"2")
        (self.cwd / "modiff.toml").write_text('new = "fail"\n')
        self.add("new.html", None, b"1")
        self.assertEqual(self.annotate(self.root / "server", 2), [
            "::error title=error%3A html%3AMasters/broken.html,file=run/Masters/broken.html::"
            "KLT_ASSERT_NAMED(ok, \"Unable to read all of the contents of file \");",
            "::error title=different%3A html%3AMasters/100%25%2C a%3Ab.html,file=run/Masters/100%25%2C a%3Ab.html,line=3::"
            "at byte 3 of the normalized texts%0A`1` -> `2`",
            "::error title=missing%3A html%3AMasters/gone.html,file=run/Masters/gone.html::no actual file",
            "::error title=different%3A html%3AMasters/other.html,file=run/Masters/other.html,line=1::"
            "at byte 5 of the normalized texts%0A`text 1` -> `text 2`",
            "::error title=different%3A html%3AMasters/x\\x1b\\n%3A%3Aadd-mask%3A%3Ay.html::"
            "at byte 0 of the normalized texts%0A`1` -> `2`",
            "::error title=new%3A ../webcontent/v5DebugHTML/new.html::no master"])
        for workspace in ("", self.root / "none", self.root / "server/webcontent"):
            self.assertNotIn("file=", "".join(self.annotate(workspace, 2)))

    def test_ten_are_shown_and_the_rest_counted(self):
        for number in range(11):
            self.add(f"{number}.html", b"1", b"2")
        lines = self.annotate(self.root, 1)
        self.assertEqual(lines[10:], ["::notice title=modiff::1 more did not pass; the record tells them all"])
        for number in range(11):
            self.add(f"{number}.html", b"1", b"1")
        self.assertEqual(self.annotate(self.root, 0), [])


if __name__ == "__main__":
    unittest.main()
