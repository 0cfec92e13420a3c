"""Runs what the documents show: test_docs.py BUILD-DIR COMPILER FLAGS [--renew]

In blocks marked console, lines that begin with "$ " are commands, "> " continues them, and what follows is their
output: "…" stands for any text in a line, and alone in a line for any lines. A block below a line that ends with a name
in backticks and a colon is a file of that name. Each document begins in an empty directory beside the sample tree,
server/, and the folder samples/, with what is installed at hand. --renew writes outputs that no longer fit into the
documents.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD, COMPILER, FLAGS = sys.argv[1:4]
RENEW = sys.argv[4:] == ["--renew"]
BLOCK = re.compile(r"(?P<before>[^\n]*)\n\n?```(?P<kind>\w+)\n(?P<text>.*?)```\n", re.DOTALL)
TASKS = {"accepting", "charts-and-properties", "ci", "embedding", "first-suite", "own-engine", "reading-a-difference",
         "test-frameworks", "README"}


def steps(block):
    """Pairs of a command and the output that is shown for it."""
    for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
        command, output = re.match(r"(.*\n(?:> .*\n)*)((?:.*\n)*)", part).groups()
        yield command.replace("\n> ", "\n").strip("\n"), output


def script(document):
    """A script for bash that does what a document shows; a mark stands before each output."""
    lines = []
    for block in BLOCK.finditer(document):
        name = re.search(r"`([\w./-]+)`:$", block["before"])
        if block["kind"] == "console":
            lines += [f"printf '\\036'\n{command}" for command, _ in steps(block["text"])]
        elif name:
            lines.append(f"cat >{name[1]} <<'END-OF-FILE'\n{block['text']}END-OF-FILE")
    return "\n".join(lines) + "\n"


def tidy(text):
    return re.sub(r"[ \t]+$", "", text, flags=re.MULTILINE).strip("\n")


def fits(shown, output):
    pattern = re.sub(r"^…\\\n", r"(?:.*\\n)*?", re.escape(tidy(shown)), flags=re.MULTILINE)
    pattern = re.sub(r"(?:^|\\\n)…$", r"(?:\\n?.*)*", pattern)  # at the end
    return re.fullmatch(pattern.replace("…", ".*?"), tidy(output)) is not None


class DocumentsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(os.path.realpath(cls.enterClassContext(tempfile.TemporaryDirectory())))
        prefix = cls.root / "installed"
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
        (prefix / "bin/c++").write_text(f'#!/bin/sh\nexec {shutil.which(COMPILER)} {FLAGS} "$@"\n')
        (prefix / "bin/c++").chmod(0o755)
        library = next(prefix.glob("lib/**/libMoDiffEngine.so")).parent
        cls.environment = {"PATH": f"{prefix}/bin:/usr/bin:/bin", "LC_ALL": "C.UTF-8", "HOME": str(cls.root),
                           "LD_LIBRARY_PATH": str(library), "PKG_CONFIG_PATH": str(library / "pkgconfig")}

    def outputs(self, name, document):
        directory = self.root / name
        directory.mkdir()
        shutil.copytree(SOURCE / "samples/server", directory / "server")
        shutil.copytree(SOURCE / "samples/src", directory / "src")
        (directory / "samples").symlink_to(SOURCE / "samples")
        done = subprocess.run(["bash", "-c", "exec 2>&1\n" + script(document)], cwd=directory, env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, timeout=120, check=False)
        text = re.sub(r"(?<![^\n\036])slowest\n(?: .*\n)+\n", "", done.stdout.decode())  # only on slow machines
        return text.replace(str(directory), "/home/alex").split("\036")[1:]

    def test_shown_outputs_are_those_of_today(self):
        for shown, output, wanted in (
                ("a\n…\nb … d\n…\n", "a\nx\ny\nb c d\nz\n", True), ("a\n…\n", "a\n", True), ("…\n", "", True),
                ("…\nc\n", "a\nc\n", True), ("a …\nc\n", "a b\nx\nc\n", False), ("a\n…\nc\n", "a\nb\nd\n", False),
                ("a\n", "ab\n", False)):
            self.assertEqual(fits(shown, output), wanted, shown)
        seen = set()
        for path in (SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))):
            document = path.read_text(encoding="utf-8")
            blocks = [block["text"] for block in BLOCK.finditer(document) if block["kind"] == "console"]
            shown = [step for block in blocks for step in steps(block)]
            if not shown:
                continue
            seen.add(path.stem)
            outputs = self.outputs(path.stem, document)
            self.assertEqual(len(outputs), len(shown), path)
            at = 0
            for (command, text), output in zip(shown, outputs):
                line = "$ " + command.replace("\n", "\n> ") + "\n"
                at = document.index(line + text, at) + len(line)
                if RENEW and not fits(text, output):
                    timeless = re.sub(r"\bin \d+\.\d s\b", "in … s", tidy(output) + "\n").lstrip("\n")
                    document = document[:at] + timeless + document[at + len(text):]
                    path.write_text(document, encoding="utf-8")
                    continue
                with self.subTest(document=path.name, command=command):
                    self.assertTrue(fits(text, output), f"shown:\n{text}\ntoday:\n{output}")
        self.assertLessEqual(TASKS, seen)

    def test_every_key_is_in_the_page_about_the_configuration(self):
        page = (SOURCE / "docs/configuration.md").read_text(encoding="utf-8")
        modiff = self.root / "installed/bin/modiff"
        printed = subprocess.run([modiff, "--dump-options"], check=True, capture_output=True, text=True).stdout
        keys = re.findall(r'"key": "([a-z-]+)",\n\s+"values"', printed)
        self.assertGreater(len(keys), 10)
        self.assertEqual(keys, re.findall(r"^\| `([a-z-]+)` \|", page, re.MULTILINE))

    def test_links_lead_somewhere(self):
        for path in (*(SOURCE / "docs").glob("*.md"), SOURCE / "README.md"):
            for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", path.read_text(encoding="utf-8")):
                self.assertTrue((path.parent / link).exists(), f"{path.name}: {link}")

    def test_manual_pages_are_well_formed(self):
        pages = sorted(self.root.glob("installed/share/man/man*/*.gz"))
        self.assertGreater(len(pages), 10)
        groff = shutil.which("groff") or self.skipTest("there is no groff here")
        for page in pages:
            text = subprocess.run(["gzip", "-dc", page], check=True, capture_output=True).stdout
            done = subprocess.run([groff, "-man", "-ww", "-z", "-Tutf8"], input=text, check=False, capture_output=True)
            self.assertEqual(done.stderr, b"", page.name)
            self.assertNotIn(b"None", text, page.name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
