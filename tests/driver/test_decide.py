"""Tests of `modiff show`, `accept`, `retire` and `review`: test_decide.py MODIFF"""

import fcntl
import hashlib
import json
import os
import pathlib
import pty
import random
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase, limit_files

ROUNDS = int(os.environ.get("MODIFF_KILL_ROUNDS", "20"))


def page(number, footer):
    return f"<p>Report {number}</p>\n<p>Total 1,204.50</p>\n<p>{footer}</p>\n".encode()


class DecideCase(DriverCase):
    def modiff(self, *arguments, status=0, **options):
        options.setdefault("stdin", subprocess.DEVNULL)
        out, error = self.run_modiff(*arguments, status=status, env=DEBIAN_PATH, **options)
        return out.decode(), error.decode()

    def add_usual(self):
        """Three pairs with the same change, one with another, one of each other kind."""
        for number in range(3):
            self.add(f"r{number}.html", page(number, "Page 1 of 3"), page(number, "Page 1/3"), masters="a/Masters")
        self.add("wrong.html", b"<p>Total 10</p>", b"<p>Total 99</p>")
        self.add("known.html", b"<p>Known 10</p>", b"<p>Known 99</p>")
        self.add("gone.html", b"text", None)
        self.add("same.html", b"text", b"text")
        self.add("nul.html", b"a\0b", b"a\0c")
        (self.cwd / "modiff.toml").write_text('[[expected]]\npair = "**/known.html"\nreason = "TRACK-1"\n')
        self.modiff("run", status=2)

    def master(self, name, folder="Masters"):
        return (self.cwd / folder / name).read_bytes()

    def snapshot(self):
        return {path: path.read_bytes() for path in self.root.rglob("*")
                if path.is_file() and "modiff-run" not in path.parts}

    def accepted(self):
        file = self.cwd / "modiff-run/accepted.jsonl"
        return [json.loads(line) for line in file.read_text().splitlines()] if file.exists() else []


class DecideTest(DecideCase):
    def test_show(self):
        self.add_usual()
        out, _ = self.modiff("show")
        self.assertRegex(out, r"(?s)^group 1: .*Page 1 of 3.*Page 1/3.* in 3 pairs\ndifferent  html:a/Masters/r0.html.*"
                              r"@@ master 3.*-<p>Page 1[^\n]*\n\+<p>Page 1.*likewise   html:a/Masters/r1.html\n"
                              r" {11}html:a/Masters/r2.html\n.*missing    html:Masters/gone.html")
        self.assertNotIn("known", out)
        self.assertNotIn("\x1b", out)
        out, _ = self.modiff("show", "--groups")
        self.assertRegex(out, r"(?m)^group 1    .* in 3 pairs\n +html:a/Masters/r0.html$")
        self.assertIn("modiff accept --group N", out)
        for arguments, present, absent in (
                (["wrong"], ["10", "99", "only numbers differ"], ["r0"]), (["html:a/Masters/*"], ["r0", "r1", "r2"], ["wrong"]),
                (["html:Masters/same.html"], ["passed"], ["missing"]), (["known"], ["TRACK-1"], ["r0"]),
                (["--group", "1"], ["r0", "r1", "r2"], ["wrong"]), (["--side-by-side", "wrong"], [" | "], ["\n-"]),
                (["--raw", "r1"], ["Page"], ["r0"])):
            out, _ = self.modiff("show", *arguments)
            for text in present:
                self.assertIn(text, out, arguments)
            for text in absent:
                self.assertNotIn(text, out, arguments)
        for arguments, message in ((["none"], "meets no pair"), (["--group", "99"], "no group 99"),
                                   (["same"], "this can be done with"), (["--record", "nowhere"], "nowhere")):
            self.assertIn(message, self.modiff("show", *arguments, status=2)[1])
        with open("/dev/full", "wb") as full:
            self.run_modiff("show", status=2, stdout=full)

    def test_large_texts_take_their_size_and_a_quarter(self):
        program = pathlib.Path(MODIFF).read_bytes()
        if b"__asan_init" in program or b"__tsan_init" in program:
            self.skipTest("sanitizers take memory of their own")
        lines = [f"<tr><td>row {number}</td><td>{number * 7919 % 100003}.5</td></tr>\r\n" for number in range(200000)]
        master = "".join(lines).encode()
        self.add("large.html", master, master.replace(b"row 1000", b"row x000").replace(b"row 19", b"ROW 19"))
        self.add("small.html", b"1", b"2")
        self.modiff("run", status=1)
        measured = ("import resource, subprocess, sys; print(subprocess.run(sys.argv[1:], check=True).returncode, "
                    "resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")

        def kilobytes(*arguments):
            done = subprocess.run(["python3", "-c", measured, MODIFF, *arguments], cwd=self.cwd, env=DEBIAN_PATH,
                                  stdout=subprocess.PIPE, timeout=120, check=True)
            return int(done.stdout.split()[-1])

        most = kilobytes("show", "small") + 2.5 * len(master) / 1024 + 8192
        for arguments in (("show", "large"), ("junit", "--out", "junit.xml"), ("report", "--out", "../pages")):
            self.assertLess(kilobytes(*arguments), most, arguments)

    def test_show_in_a_tool(self):
        self.add_usual()
        self.add("it's $HOME.html", b"1", b"2")
        self.modiff("run", "it's", "--out", "o", status=1)
        self.modiff("show", "--record", "o", "--tool", "cmp -s %m %a; echo %m %a >>../log; :")
        self.assertIn("Masters/it's $HOME.html", (self.root / "server/log").read_text())
        self.modiff("show", "--record", "o", "--tool", "cp -t ..")
        self.assertIn("cannot run", self.modiff("show", "wrong", "--tool", "/none %m", status=2)[1])
        for number in range(6):
            self.add(f"x{number}.html", b"1", b"2", masters="x/Masters")
        self.modiff("run", "x/", "--out", "o", status=1)
        self.assertIn("--many", self.modiff("show", "--record", "o", "--tool", "true", status=2)[1])
        self.assertEqual(len(self.modiff("show", "--record", "o", "--many", "--tool", "true")[0].splitlines()), 6)

    def test_groups_keep_their_numbers(self):
        self.add_usual()
        first, _ = self.modiff("show", "--groups")
        self.modiff("accept", "--group", "1")
        second, _ = self.modiff("show", "--groups")
        self.assertNotIn("r0", second)
        self.assertEqual([line for line in first.splitlines() if line.startswith("group ")][1:],
                         [line for line in second.splitlines() if line.startswith("group ")])
        out, _ = self.modiff("accept", "--group", "1")
        self.assertIn("3 unchanged", out)

    def test_accept(self):
        self.add_usual()
        before = self.snapshot()
        out, _ = self.modiff("accept", "--group", "1", "--dry-run")
        self.assertIn("3 acceptable; nothing was written", out)
        self.assertEqual(self.snapshot(), before)
        out, _ = self.modiff("accept", "r0", "html:a/Masters/*1.html", "--remark", "agreed")
        self.assertRegex(out, "(?s)accepted   html:a/Masters/r0.html\naccepted   html:a/Masters/r1.html\n\n2 accepted")
        after = self.snapshot()
        self.assertEqual({path.name for path in after if after[path] != before[path]}, {"r0.html", "r1.html"})
        self.assertEqual(self.master("r0.html", "a/Masters"), page(0, "Page 1/3"))
        entry = self.accepted()[0]
        self.assertEqual((entry["pair"], entry["remark"]), ("html:a/Masters/r0.html", "agreed"))
        self.assertEqual((entry["old_sha256"], entry["new_sha256"]),
                         tuple(hashlib.sha256(page(0, text)).hexdigest() for text in ("Page 1 of 3", "Page 1/3")))
        names = "html:a/Masters/r2.html\n\nwrong\n"
        self.modiff("accept", "--from", "-", stdin=None, input=names.encode())
        self.assertEqual(len(self.accepted()), 4)
        self.modiff("run", status=2)
        self.assertIn("1 error", self.modiff("run", status=2)[0])

    def test_what_is_not_accepted(self):
        self.add_usual()
        before = self.snapshot()
        for arguments, message, status in (
                (["gone"], "modiff retire", 1), (["nul"], "no verdict: error", 1), (["html:Masters/same.html"], "it passed", 1),
                (["same"], "this can be done with", 2), (["known"], "known.html is expected", 2), ([], "no pair is named", 2),
                (["none"], "meets no pair", 2), (["--new", "x"], "go together", 2), (["--under", "x", "--all"], "together", 2),
                (["--from", "none"], "none", 2), (["--record", "none", "--all"], "none", 2), (["--group", "77"], "no group", 2)):
            self.assertIn(message, "".join(self.modiff("accept", *arguments, status=status)), arguments)
        for arguments, message in ((["html:Masters/wrong.html"], "it has an actual file"), (["nul"], "can be done with")):
            self.assertIn(message, "".join(self.modiff("retire", *arguments, status=1 + (arguments == ["nul"]))))
        self.assertEqual(self.snapshot(), before)
        out, _ = self.modiff("accept", "--all", status=1)
        self.assertRegex(out, r"(?s)refused    html:Masters/gone.html.*\n4 accepted, 2 refused\n")
        self.assertEqual(self.master("known.html"), b"<p>Known 10</p>")
        self.assertIn("now take the rule", self.modiff("accept", "html:Masters/known.html")[0])
        self.assertEqual(self.master("known.html"), b"<p>Known 99</p>")
        self.assertIn("1 unexpectedly-passed", self.modiff("run", "known", status=1)[0])
        before = self.snapshot()
        for arguments in (["known"], ["--all"], ["--group", "1"], ["html:Masters/known.html"]):
            self.assertRegex(self.modiff("accept", *arguments, status=1)[0], r"refused .*known.html  it passed; take the rule")
        self.assertEqual(self.snapshot(), before)

    def test_changed_in_between(self):
        self.add_usual()
        web = self.root / "server/webcontent/v5DebugHTML"
        (web / "r0.html").write_bytes(b"newer")
        (self.cwd / "a/Masters/r1.html").write_bytes(b"other")
        (self.cwd / "a/Masters/r2.html").chmod(0o444)
        before = self.snapshot()
        out, _ = self.modiff("accept", "a/", status=1)
        for text in ("r0.html  the actual file has changed", "r1.html  the master has changed", "chmod u+w"):
            self.assertIn(text, out)
        self.assertEqual(self.snapshot(), before)
        self.assertEqual(self.accepted(), [])

    def test_git(self):
        self.add_usual()
        for command in (["init", "-q"], ["add", "."], ["-c", "user.name=x", "-c", "user.email=x@x", "commit", "-qm", "x"]):
            subprocess.run(["git", *command], cwd=self.cwd, check=True)
        self.modiff("accept", "r0")
        self.add("r0.html", None, page(0, "Page one"), masters="a/Masters")
        self.modiff("run", "r0", status=1)
        self.assertIn("--force", self.modiff("accept", "r0", status=1)[0])
        self.modiff("accept", "r0", "--force")
        self.assertEqual(self.master("r0.html", "a/Masters"), page(0, "Page one"))

    def test_new_and_retired(self):
        self.add("r.html", b"1", b"1")
        self.add("gone.html", b"1", None)
        self.add("new.html", None, b"new", output="v5DebugHTML/de-de")
        self.add("table.csv", None, b"1,2", output="v5DebugCSV")
        self.modiff("run", status=1)
        web = "../webcontent/"
        out, _ = self.modiff("accept", "--under", "sales", "--new", web + "v5DebugHTML/de-de/new.html",
                             web + "v5DebugCSV/table.csv")
        self.assertIn("html:sales/Masters/de-de/new.html", out)
        self.assertEqual(self.master("sales/Masters/de-de/new.html", "."), b"new")
        self.assertEqual(self.master("sales/Masters/CSV/table.csv", "."), b"1,2")
        self.modiff("accept", "--under", "sales", "--new", web + "v5DebugHTML/de-de/new.html")
        (self.root / "server/webcontent/v5DebugHTML/de-de/new.html").write_bytes(b"newer")
        for path, message in (("v5DebugHTML/de-de/new.html", "other contents"), ("v5DebugHTML/none.html", "none.html"),
                              ("v5DebugHTML/r.txt", "no format"), ("../run/Masters/r.html", "no format")):
            out, _ = self.modiff("accept", "--under", "sales", "--new", web + path, status=2 if "none" in path else 1)
            self.assertIn(message, out)
        self.modiff("retire", "gone", "--dry-run")
        self.assertTrue((self.cwd / "Masters/gone.html").exists())
        self.modiff("retire", "gone")
        self.assertFalse((self.cwd / "Masters/gone.html").exists())
        self.modiff("retire", "gone")
        self.assertEqual([entry["action"] for entry in self.accepted()], ["create", "create", "retire"])

    def test_an_incomplete_record_is_told(self):
        self.add_usual()
        record = self.cwd / "modiff-run/run.jsonl"
        record.write_bytes(b"".join(record.read_bytes().splitlines(True)[:-2]))
        for command in (["show"], ["accept", "r0"]):
            self.assertIn("incomplete", self.modiff(*command)[0])

    def test_from_another_folder(self):
        self.add_usual()
        out, _ = self.modiff("accept", "r0", cwd=self.cwd / "a/Masters")
        self.assertIn("1 accepted", out)
        self.modiff("accept", "r1", "--record", "server/run/modiff-run", "--config", "server/run/modiff.toml", cwd=self.root)
        self.assertEqual(len(self.accepted()), 2)

    def test_disk_full(self):
        self.add("big.html", b"x" * 10, b"y" * 50000)
        self.add("small.html", b"1", b"2")
        self.modiff("run", status=1)
        out, _ = self.modiff("accept", "--all", status=2, preexec_fn=lambda: limit_files(20000))
        self.assertRegex(out, r"trouble    html:Masters/big.html  cannot write .*File too large")
        self.assertEqual((self.master("big.html"), self.master("small.html")), (b"x" * 10, b"2"))
        self.assertEqual(sorted(os.listdir(self.cwd / "Masters")), ["big.html", "small.html"])
        self.modiff("accept", "--all")
        self.assertEqual(self.master("big.html"), b"y" * 50000)

    def test_killed_at_random_moments(self):
        """Masters are whole, the list tells no more than was done, and the next call finishes."""
        count, choice = 20, random.Random(7)
        old, new, interruptions = b"old " * 5000, b"new " * 5000, 0
        for number in range(count):
            self.add(f"r{number}.html", old, new)
        self.modiff("run", status=1)
        for _ in range(ROUNDS):
            for number in range(count):
                (self.cwd / f"Masters/r{number}.html").write_bytes(old)
            (self.cwd / "modiff-run/accepted.jsonl").unlink(missing_ok=True)
            others = {path: data for path, data in self.snapshot().items() if "Masters" not in path.parts}
            with subprocess.Popen([MODIFF, "accept", "--all"], cwd=self.cwd, stdout=subprocess.PIPE) as process:
                while not (self.cwd / "modiff-run/accept.journal").exists() and process.poll() is None:
                    time.sleep(0.0005)
                time.sleep(choice.random() ** 3 * 0.05)  # mostly soon
                process.kill()
                process.communicate()
            contents = {number: self.master(f"r{number}.html") for number in range(count)}
            self.assertLessEqual(set(contents.values()), {old, new})
            done = {f"html:Masters/r{number}.html" for number in range(count) if contents[number] == new}
            file = self.cwd / "modiff-run/accepted.jsonl"
            listed = file.read_text().splitlines(True) if file.exists() else []
            self.assertLessEqual({json.loads(line)["pair"] for line in listed if line.endswith("\n")}, done)
            interrupted = (self.cwd / "modiff-run/accept.journal").exists()
            out, _ = self.modiff("accept", "--all")
            self.assertEqual("was interrupted" in out, interrupted)
            interruptions += interrupted
            self.assertEqual({entry["pair"] for entry in self.accepted()},
                             {f"html:Masters/r{number}.html" for number in range(count)})
            self.assertLessEqual(others.items(), self.snapshot().items())
            self.assertEqual(len(os.listdir(self.cwd / "Masters")), count)
        self.assertGreater(interruptions, 0)

    def test_two_at_once(self):
        for number in range(40):
            self.add(f"r{number}.html", b"old", b"new")
        self.modiff("run", status=1)
        both = [subprocess.Popen([MODIFF, "accept", "--all"], cwd=self.cwd, stdout=subprocess.PIPE) for _ in range(2)]
        outs = [process.communicate(timeout=60)[0] for process in both]
        self.assertEqual([process.returncode for process in both], [0, 0], outs)
        self.assertEqual(len(self.accepted()), 40)
        self.assertEqual({self.master(f"r{number}.html") for number in range(40)}, {b"new"})


class Terminal:
    """A program on a terminal of 24 x 80; what it writes is kept."""

    def __init__(self, cwd, *arguments, **variables):
        self.process, self.end = pty.fork()
        if self.process == 0:
            os.chdir(cwd)
            os.execve(MODIFF, [MODIFF, *arguments], {**DEBIAN_PATH, "TERM": "xterm", **variables})
        fcntl.ioctl(self.end, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        self.out = b""

    def wait_for(self, text):
        """Reads until a text comes; returns what came up to there."""
        limit = time.monotonic() + 30
        while text not in self.out:
            if time.monotonic() > limit or not select.select([self.end], [], [], 30)[0]:
                raise AssertionError((text, self.out))
            self.out += os.read(self.end, 65536)
        before, _, self.out = self.out.partition(text)
        return before + text

    def type(self, keys, text):
        self.out = b""
        os.write(self.end, keys)
        return self.wait_for(text)

    def finish(self):
        """What the program writes to its end, and its status."""
        try:
            while data := os.read(self.end, 65536):
                self.out += data
        except OSError:
            pass
        status = os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])
        os.close(self.end)
        return self.out, status


class ReviewTest(DecideCase):
    def setUp(self):
        super().setUp()
        if b"__asan_init" in pathlib.Path(MODIFF).read_bytes():
            self.skipTest("a program this slow gets keys before it shows what they are for")
        self.add_usual()

    def decisions(self):
        file = self.cwd / "modiff-run/decisions.jsonl"
        lines = [json.loads(line) for line in file.read_text().splitlines()] if file.exists() else []
        return {line["pair"].split("/")[-1]: (line["decision"], line["remark"]) for line in lines}

    def review(self):
        terminal = Terminal(self.cwd, "review")
        terminal.wait_for(b"q quit")
        return terminal

    def test_without_a_terminal(self):
        self.assertIn("modiff accept", self.modiff("review", status=2)[1])

    def test_a_review(self):
        before = self.snapshot()
        terminal = self.review()
        terminal.type(b"g", b"whole group, 3 pairs")
        terminal.type(b"a", b"3 pairs to be accepted")
        terminal.type(b"u", b"taken back")
        self.assertEqual(self.decisions(), {})
        terminal.type(b"f", b"this folder, 3 pairs")
        terminal.type(b"a", b"3 pairs to be accepted")
        terminal.type(b"/", b"search")
        terminal.type(b"wrong\r", b"wrong.html")
        terminal.type(b"r", b"why")
        terminal.type(b"off by \xc3\xa9e\x7f89\r", b"Accept now?")  # it was the last one
        terminal.type(b"b", b"gone.html")
        terminal.type(b"a", b"modiff retire")
        terminal.type(b"q", b"Accept now?")
        self.assertEqual(self.snapshot(), before)
        self.assertEqual(self.decisions()["wrong.html"], ("reject", "off by \u00e989"))
        os.write(terminal.end, b"n")
        out, status = terminal.finish()
        self.assertEqual(status, 0)
        self.assertIn(b"3 to be accepted, 1 rejected, 2 open", out)
        self.assertEqual(self.snapshot(), before)

        terminal = self.review()  # takes it up
        terminal.type(b"q", b"Accept now?")
        os.write(terminal.end, b"y")
        out, status = terminal.finish()
        self.assertEqual(status, 0)
        self.assertIn(b"3 accepted", out)
        self.assertEqual(self.master("r2.html", "a/Masters"), page(2, "Page 1/3"))
        self.assertEqual(self.decisions(), {"wrong.html": ("reject", "off by \u00e989")})
        self.modiff("run", status=2)
        self.assertIn("rejected   html:Masters/wrong.html  off by", self.modiff("show", "wrong")[0])

    def test_every_way_out_leaves_the_terminal_as_it_was(self):
        def quit_by_key(terminal):
            terminal.type(b"q", b"Leave?")
            os.write(terminal.end, b"y")

        def end_by(number):
            return lambda terminal: os.kill(terminal.process, number)

        for leave, expected in ((quit_by_key, 0), (end_by(signal.SIGINT), 130), (end_by(signal.SIGTERM), 143),
                                (end_by(signal.SIGHUP), 129), (lambda terminal: os.write(terminal.end, b"\x03"), 130)):
            terminal = Terminal(self.cwd, "review")
            before = termios.tcgetattr(terminal.end)
            terminal.wait_for(b"q quit")
            self.assertNotEqual(termios.tcgetattr(terminal.end), before)
            leave(terminal)
            terminal.wait_for(b"\x1b[?1049l")
            limit = time.monotonic() + 10
            while termios.tcgetattr(terminal.end) != before and time.monotonic() < limit:
                time.sleep(0.02)
            self.assertEqual(termios.tcgetattr(terminal.end), before)
            self.assertEqual(terminal.finish()[1], expected)

    def test_resized(self):
        terminal = self.review()
        terminal.out = b""
        fcntl.ioctl(terminal.end, termios.TIOCSWINSZ, struct.pack("HHHH", 5, 30, 0, 0))
        screen = terminal.wait_for(b"\x1b[J")
        self.assertEqual(screen.count(b"\r\n"), 4)
        terminal.type(b"q", b"Leave?")
        os.write(terminal.end, b"y")
        terminal.finish()

    def test_names_that_terminals_would_obey(self):
        self.add("\x1b[2J\x07.html", b"1", b"2")
        self.add(b"\xe9\n.html", b"1\x1b]0;x", b"2\x9b")
        self.modiff("run", "html:Masters/*.html", "--out", "o", status=2)
        terminal = Terminal(self.cwd, "review", "--record", "o", NO_COLOR="1")
        terminal.wait_for(b"q quit")
        seen = terminal.type(b"/\\xe9\r", rb"html:Masters/\xe9\n.html")
        seen += terminal.type(b"/2J\r", rb"html:Masters/\x1b[2J\x07.html")
        for harmful in (b"\x1b[2J", b"\x07", b"\x9b", b"\x1b]", b"\xe9"):
            self.assertNotIn(harmful, seen)
        terminal.type(b"q", b"Leave?")
        os.write(terminal.end, b"y")
        terminal.finish()
        self.modiff("accept", "--record", "o", r"html:Masters/\xe9\n.html")
        self.assertEqual((self.cwd / os.fsdecode(b"Masters/\xe9\n.html")).read_bytes(), b"2\x9b")

    def test_paged_and_coloured(self):
        terminal = Terminal(self.cwd, "show", "wrong", PAGER="sed 's/^/> /'")
        out, status = terminal.finish()
        self.assertEqual(status, 0)
        self.assertIn(b"> ", out)
        self.assertIn(b"\x1b[31;7m", out)


if __name__ == "__main__":
    unittest.main()
