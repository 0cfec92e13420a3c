#!/usr/bin/env python3
"""Compares two VMD files: diffvmd.py MASTER ACTUAL

When both are text (no NUL byte in them) carriage returns don't count and a difference is shown as a unified
diff; else the bytes count and the first difference is named. Files of any length compare in constant memory.
"""

import os
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
try:
    import modifftools as tool
except ImportError as missing:
    print(f"diffvmd.py: {missing}; the folder modifftools belongs beside this script's folder", file=sys.stderr)
    sys.exit(2)

MEGABYTES, SECONDS = 512, 600   # address space and time of one comparison
LINES, LINE = 200, 500          # lines of the diff that are shown, and characters of each
BESIDE = 16                     # bytes shown from the first difference on


def chunks(file):
    """Yields the rest of a binary file, piece by piece."""
    return iter(lambda: file.read(tool.CHUNK), b"")


def is_text(path):
    """Whether the file named holds no NUL byte."""
    with tool.open_input(path) as file:
        return all(b"\0" not in chunk for chunk in chunks(file))


def without_returns(path):
    """A temporary file, at its beginning, with the bytes of the file named but its carriage returns."""
    copy = tempfile.NamedTemporaryFile(prefix="modiff-")
    with tool.open_input(path) as file:
        copy.writelines(chunk.replace(b"\r", b"") for chunk in chunks(file))
    copy.seek(0)
    return copy


def show_bytes(master, actual):
    """Names the first difference between two binary files that stand at their beginnings."""
    offset = 0
    left, right = master.read(tool.CHUNK), actual.read(tool.CHUNK)
    while left == right:
        offset += len(left)
        left, right = master.read(tool.CHUNK), actual.read(tool.CHUNK)
    here = next((index for index, pair in enumerate(zip(left, right)) if pair[0] != pair[1]),
                min(len(left), len(right)))
    for name, chunk in (("master", left), ("actual", right)):
        tool.say(f"{name} from byte {offset + here}: {chunk[here:here + BESIDE].hex(' ') or 'end of file'}")


def show_diff(master, actual):
    """Prints the beginning of the unified diff of two named files; false when there is none to be had."""
    command = ["diff", "-a", "-u", "--speed-large-files", "--label", "master", "--label", "actual", master, actual]
    try:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL)
    except FileNotFoundError:
        return False
    with process:
        try:
            number = 0
            while line := process.stdout.readline(tool.CHUNK):
                if number == LINES:
                    tool.say("... the diff goes on")
                    break
                tool.say(tool.clip(line.decode("utf-8", "surrogateescape").removesuffix("\n"), LINE))
                number += 1
        finally:
            process.kill()
    return number > 0


def compare_texts(master, actual):
    """Compares the text files of two names."""
    with without_returns(master) as left, without_returns(actual) as right:
        if tool.same_bytes(left, right):
            return tool.Report(0).verdict()
        tool.say(f"texts differ: master {master}, actual {actual}")
        if not show_diff(left.name, right.name):
            left.seek(0)
            right.seek(0)
            show_bytes(left, right)
    return tool.DIFFERENT


def compare_bytes(master, actual):
    """Compares the binary files of two names."""
    if tool.same_files(master, actual):
        return tool.Report(0).verdict()
    tool.say(f"bytes differ: master {master}, actual {actual}")
    with tool.open_input(master) as left, tool.open_input(actual) as right:
        show_bytes(left, right)
    return tool.DIFFERENT


def main(arguments):
    """Runs the comparison that the arguments ask for and returns its status."""
    names = tool.parse_arguments("Compares two VMD files.", arguments)
    both_text = is_text(names.master) and is_text(names.actual)
    return (compare_texts if both_text else compare_bytes)(names.master, names.actual)


if __name__ == "__main__":
    with tool.clean_exit():
        tool.bound(MEGABYTES, SECONDS)
        sys.exit(main(sys.argv[1:]))
