"""Tests of `modiff verify`: test_verify.py MODIFF"""

import os
import unittest
import xml.etree.ElementTree

from driver_case import DEBIAN_PATH, DriverCase, limit_files

SUMMARY = [b"<TestSummary>", b"</TestSummary>"]


class VerifyTest(DriverCase):
    def test_exit_status_and_counts(self):
        self.add_usual()
        for reports, status, counts in (
                ("same", 0, b"1 master compared: 1 passed, 0 different, 0 missing"),
                ("same same other", 1, b"3 masters compared: 2 passed, 1 different, 0 missing"),
                ("gone", 1, b"1 master compared: 0 passed, 0 different, 1 missing"),
                ("none same", 3, b"1 master compared: 1 passed, 0 different, 0 missing; 1 report without a master"),
                ("none other", 1, b"1 master compared: 0 passed, 1 different, 0 missing; 1 report without a master"),
                ("other broken none same", 2, b"2 masters compared: 1 passed, 1 different, 0 missing; "
                                              b"1 report without a master; trouble with 1 master")):
            with self.subTest(reports):
                out, _ = self.run_modiff("verify", "--format", "html", *(f"{name}.html" for name in reports.split()),
                                         status=status)
                self.assertEqual(out.splitlines()[-1], counts)

    def test_lines(self):
        web = b"../webcontent/v5DebugHTML/"
        self.add("same.html", b"text of a short report\r\n", b"text of a short report")
        self.add("gone.html", b"", None)
        lead = "ä漢".encode() * 40
        self.add("cut.html", lead + b"\x1b\xe9\\" + "é!".encode(), lead + b"\x1b\xe9\\" + "è".encode())
        self.add("end.html", b"text text a\tb\nc", b"text text a\tb")
        out, _ = self.run_modiff("verify", "--format", "html", "same.html", "gone.html", "none", "cut.html", "end.html",
                                 status=1)
        shown = "..." + "ä漢" * 7 + "\\x1b\\xe9\\\\"
        self.assertEqual(out, b"".join((
            b"passed     ./Masters/same.html  " + web + b"same.html\n",
            b"missing    ./Masters/gone.html  " + web + b"gone.html  no actual file\n",
            b"no master  none  nothing compared: no file is named ./Masters/none*.html\n",
            b"different  ./Masters/cut.html  " + web + b"cut.html  at byte 204 of the normalized texts\n",
            f"           master  {shown}é!\n           actual  {shown}è\n".encode(),
            b" " * (19 + 3 + 7 * 3 + 10) + b"^\n",
            b"warning    ./Masters/cut.html  the master holds bytes that are not UTF-8, the first at byte 201\n",
            b"warning    ./Masters/cut.html  the actual file holds bytes that are not UTF-8, the first at byte 201\n",
            b"different  ./Masters/end.html  " + web + b"end.html  at byte 13 of the normalized texts\n",
            b"           master  text text a\\tbc\n           actual  text text a\\tb\n",
            b"                                 ^ the actual ends here\n",
            b"4 masters compared: 1 passed, 2 different, 1 missing; 1 report without a master; 2 warnings\n")))

    def test_characters_that_look_alike_are_told_apart(self):
        for master, actual, shown in (("a b", "a\u00a0b", (r"a b", r"a\xc2\xa0b")),
                                      ("x\u00e9", "xe\u0301", (r"x\xc3\xa9", r"xe\xcc\x81")),
                                      ("xe", "xe\u0301", ("xe", r"xe\xcc\x81")),
                                      ("a\u0430", "aa", (r"a\xd0\xb0", "aa")),
                                      ("\u00e9 1", "\u00e9 2", ("\u00e9 1", "\u00e9 2"))):
            self.add("r.html", master.encode(), actual.encode())
            out, _ = self.run_modiff("verify", "--format", "html", "r", status=1)
            self.assertEqual(tuple(line.split(maxsplit=1)[1] for line in out.decode().splitlines()[1:3]), shown)

    def test_reports_from_a_list(self):
        self.add_usual()
        verify = ["verify", "--format", "html", "gone", "--reports-from"]
        (self.cwd / "list").write_bytes(b"same\n\nother.html")
        self.add("a\nb.html", b"1", b"1")
        for options, contents, counts in ((["list"], b"", b"3 masters compared: 1 passed, 1 different, 1 missing"),
                                          (["-"], b"same\n", b"2 masters compared: 1 passed, 0 different, 1 missing"),
                                          (["-", "-0"], b"a\nb\0same\0",
                                           b"3 masters compared: 2 passed, 0 different, 1 missing")):
            out, _ = self.run_modiff(*verify, *options, status=1, input=contents)
            self.assertEqual(out.splitlines()[-1], counts)
        self.assertIn(b"cannot read none: No such", self.run_modiff(*verify, "none", status=2)[1])

    def test_first_difference_of_files_that_are_not_cleansed(self):
        block = b"line\r\n" * 20000
        for word, output, masters, actual, status in (
                ("xml", "v5DebugXML", "Masters/XML", block.replace(b"\r", b""), 0),
                ("xml", "v5DebugXML", "Masters/XML", block[:-6].replace(b"\r", b"") + b"lime\n", 1),
                ("csv", "v5DebugCSV", "Masters/CSV", block[:-3] + b"E\r\n", 1)):
            self.add(f"r.{word}", block, actual, output, masters)
            out, _ = self.run_modiff("verify", "--format", word, "r", status=status)
            self.assertEqual(b"  in line 20000\n" in out, status == 1, out)

    def test_engine_settings(self):
        self.add("r_de.tvd", b"1.5 a", b"2.5 a", "Charts/s", "Masters/s/folder")
        self.add("r.prp", b"1.5 a", b"2.5 a", "Props", "Masters/p")
        for word, options, status in (
                ("tvd", "--sub-directory s --type-name Charts --master-sub-directory folder --master-suffix de", 0),
                ("tvd", "--type-name Charts --master-sub-directory folder --master-suffix de", 3),
                ("tvd", "--sub-directory s --type-name Charts --master-sub-directory folder --master-suffix en", 3),
                ("prp", "--type-name Props --master-sub-directory p", 1)):
            self.run_modiff("verify", "--format", word, *options.split(), "r", status=status)
        out, _ = self.run_modiff("formats", status=0)
        self.assertEqual([line.split()[0].decode() for line in out.splitlines()[3:-2]],
                         "html mht xhtml xml dataxml pageddataxml rawxml nao xls xlwa singlexls csv csi tvd prp xlsx pdf "
                         "vmd".split())

    def test_summary_and_log_are_complete_in_spite_of_trouble(self):
        self.add_usual()
        reports = ["same.html", "broken.html", "none.html", "other.html"]
        out, _ = self.run_modiff("verify", "--format", "html", "--summary", "s.xml", "--log", "l.qpr", "--log-level",
                                 "concise", *reports, status=2)
        self.assertRegex(out, rb"\nerror      ./Masters/broken.html .*KLT_ASSERT.*\n")
        tags = [element.tag for element in xml.etree.ElementTree.parse(self.cwd / "s.xml").getroot()]
        self.assertEqual(tags, ["TestCasePassDiff", "TestCaseFailureDiff", "TestCaseFailureDiff"])
        log = (self.cwd / "l.qpr").read_bytes()
        for line in (b"PASSED: Contents are equivalent: ./Masters/same.html and ", b"Start Test: broken.html",
                     b">> Script Error: ./Masters/broken.html: KLT_ASSERT", b">> Script Error: nothing compared",
                     b">>  FAILED: Normalized contents are equivalent: ./Masters/other.html"):
            self.assertIn(line, log)
        totals = b"= TOTALS                    2       1       1       0             >> FAIL ="
        self.assertIn(totals, log)
        self.assertIn(totals, out)
        out, _ = self.run_modiff("verify", "--format", "html", "--quiet", "--log", "l.qpr", "other.html", status=1)
        self.assertEqual(out, b"")
        self.assertIn(b"1 bytes compared.  A total of 1 bytes unequal", (self.cwd / "l.qpr").read_bytes())

    def test_output_that_cannot_be_written(self):
        self.add_usual()
        verify = ["verify", "--format", "html", "same.html", "other.html"]
        for options in (["--summary", "no/s.xml"], ["--log", "/dev/full"], ["--log", "."]):
            out, _ = self.run_modiff(*verify, *options, status=2)
            self.assertNotIn(b"passed", out)
        self.assertIn(b"/dev/full: No space", self.run_modiff(*verify, "--summary", "/dev/full", status=2)[1])
        (self.cwd / "s.xml").write_text("old")
        out, error = self.run_modiff(*verify, "--summary", "s.xml", status=2, preexec_fn=lambda: limit_files(300))
        self.assertIn(b"2 masters compared", out)
        self.assertFalse((self.cwd / "s.xml").exists())
        self.assertIn(b"s.xml: File too large", error)
        _, error = self.run_modiff(*verify[:-1], "--log", "l", "--log-level", "minimal", status=2,
                                   preexec_fn=lambda: limit_files(200))  # the verdict doesn't fit
        self.assertIn(b"the log l is not complete", error)
        with open("/dev/full", "wb") as full:
            self.run_modiff(*verify, status=2, stdout=full)
        self.run_modiff(*verify, "--summary", "s.xml", status=1, preexec_fn=lambda: os.close(1))
        lines = (self.cwd / "s.xml").read_bytes().splitlines()
        self.assertEqual([lines[0], len(lines), lines[-1]], [SUMMARY[0], 4, SUMMARY[1]])
        self.run_modiff(*verify, "--normalized", status=1)
        web = self.root / "server/webcontent/v5DebugHTML"
        self.assertEqual([(web / f"other.html.normalized_{side}").read_bytes() for side in ("master", "actual")],
                         [b"text 1", b"text 2"])
        (web / "other.html.normalized_actual").unlink()
        (web / "other.html.normalized_actual").mkdir()
        self.assertIn(b"cannot write ../webcontent/v5DebugHTML/other.html.normalized_actual",
                      self.run_modiff(*verify, "--normalized", status=2)[0])

    def test_hostile_names_reach_nothing_but_their_file(self):
        names = [b"-e", b"[a,b]", b"a\nb", b"\x1b[2J", b"\xe9", b'"', b"$(touch pwned)", b"`touch pwned`", b"a' 'b", b"\\"]
        self.run_modiff("install-tools", self.root, status=0)
        for word, output, masters in (("html", "v5DebugHTML", "Masters"), ("vmd", "v5DebugVMD", "Masters/vmd")):
            for name in names:
                self.add(name + b"." + word.encode(), b"1", b"1", output, masters)
            out, _ = self.run_modiff("verify", "--format", word, "[a,b]", "--", *names, status=0,
                                     env=DEBIAN_PATH)
            self.assertEqual(out.count(b"\n"), len(names) + 2)
            self.assertTrue(out.isascii() and out.decode().replace("\n", "").isprintable(), out)
        self.assertEqual(list(self.root.rglob("pwned*")), [])

    def test_hostile_names_forge_nothing_in_log_and_console(self):
        name = b"a\n= TOTALS\x1b[2J"
        self.add(name + b".html", b"1", b"2")
        self.add(name + b"2.html", b"1", b"1")
        self.add(name + b"3.html", b"1", None)
        log = b"log\x1b[2J"
        out, _ = self.run_modiff("verify", "--format", "html", "--log", log, name, status=1)
        text = (self.cwd / os.fsdecode(log)).read_bytes()
        for written in (out, text):
            self.assertNotIn(b"\x1b", written)
            self.assertEqual(written.count(b"\n= TOTALS"), 1, written)
        self.assertIn(b"log\\x1b[2J =\n", out)
        self.assertEqual(text.count(b"a\\n= TOTALS\\x1b[2J2.html"), 2)


if __name__ == "__main__":
    unittest.main()
