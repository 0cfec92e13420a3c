#!/usr/bin/env python3
"""Runs the diff scripts on damaged files: tools_readers.py [--seconds N] [--seed N] [--findings DIR] [FILE...]

A workbook, a document and a model that the tests of the scripts use are damaged, byte by byte or inside the zip
package, and compared with what they were. Each comparison must end with status 0, 1 or 2 within SECONDS; a refusal
is one line on standard error that tells a foreseen reason, and leaves the result of an earlier comparison alone.
What does otherwise is saved in DIR; given as FILE..., files are only tried again (their suffixes tell the script).
"""

import argparse
import io
import os
import pathlib
import random
import signal
import sys
import tempfile
import time
import traceback
import zipfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/tools"))
import documents  # noqa: E402 (found by the path above)
import tool_test  # noqa: E402
import workbooks  # noqa: E402

SECONDS = 60
OLD_RESULT = b"the result of an earlier comparison"

NUMBERS = (b"0", b"-1", b"1", b"999999999999", b"1e999", b"nan", b"", b"0x10", b"2147483648", b"1.5")
XML = (b"<", b">", b"</", b"/>", b"&", b"&#0;", b"&#x10ffff;", b"<![CDATA[", b"]]>", b"<!--", b"\xff\xfe", b"\0", b" r=\"A1\"",
       b" t=\"s\"", b" t=\"shared\" si=\"0\"", b" s=\"77\"", b"<v>", b"</v>", b"<f>", b"<is>", b"xmlns:x=\"y\"", b"A1:ZZZ9999999",
       b"<col min=\"1\" max=\"99999999\" hidden=\"1\"/>", b"../../../x", b"encoding=\"utf-16\"", b"<?x?>", *NUMBERS)
ZIP = (b"PK\1\2", b"PK\3\4", b"PK\5\6", b"PK\6\6", b"PK\6\7", b"\xff\xff\xff\xff", b"\0\0", b"\x01\x00", b"\xff\xff")
PDF = (b"obj", b"endobj", b"stream", b"endstream", b"xref", b"trailer", b"<<", b">>", b"[", b"(", b" 0 R", b"/Kids", b"/Parent",
       b"/Filter /FlateDecode", b"/Filter [/ASCIIHexDecode /LZWDecode]", b"/Rotate 90", b"/UserUnit 1000", b"/Type /ObjStm",
       b"/MediaBox [0 0 0 0]", b"Tj", b"q", b"Do", b"%%EOF", *NUMBERS)
TEXT = (b"\0", b"\r", b"\n", b"\xff", b"\x1b[2J", b"a" * 70_000)

WORKBOOKS = (workbooks.workbook(), workbooks.repacked({}),
             workbooks.in_sheet(b"<f>SUM", b'<f t="shared" si="0" ref="B4:B9">SUM'))
with zipfile.ZipFile(io.BytesIO(WORKBOOKS[1])) as package:
    PARTS = [(name, package.read(name)) for name in package.namelist()]
DOCUMENTS = (documents.letter(), documents.document(["1 0 0 rg 50 50 80 40 re f"], [(20, 150, "Page two")]))
MODEL = b"a\r\nb\nc\n" * 20


def damaged(data, chance, tokens):
    """`data` with a few bytes changed, left out, repeated, or tokens put in."""
    data = bytearray(data)
    for _ in range(chance.choice((1, 1, 2, 4, 8))):
        begin = chance.randrange(len(data) + 1)
        end = min(begin + chance.choice((1, 2, 4, 30, 300)), len(data))
        kind = chance.randrange(6)
        if kind == 0:
            data[begin:begin] = chance.choice(tokens)
        elif kind == 1:
            token = chance.choice(tokens)
            data[begin:begin + len(token)] = token
        elif kind == 2:
            del data[begin:end]
        elif kind == 3:
            data[begin:begin] = data[begin:end]
        elif kind == 4 and begin < end:
            data[begin] ^= 1 << chance.randrange(8)
        elif chance.randrange(4) == 0:
            del data[begin:]
    return bytes(data)


def damaged_workbook(chance):
    if chance.randrange(3) == 0:
        return damaged(chance.choice(WORKBOOKS), chance, ZIP)
    name, part = chance.choice(PARTS)
    return workbooks.repacked({name: damaged(part, chance, XML)})


# Suffix, script, the undamaged file, how it is damaged, and how often it is tried: documents take longest.
KINDS = ((".xlsx", tool_test.XLSX, WORKBOOKS[0], damaged_workbook, 12),
         (".pdf", tool_test.PDF, DOCUMENTS[0], lambda chance: damaged(chance.choice(DOCUMENTS), chance, PDF), 3),
         (".vmd", tool_test.VMD, MODEL, lambda chance: damaged(MODEL, chance, TEXT), 1))


def run_here(module, script, arguments):
    """The status of a comparison in this process, with the limits that it sets itself."""
    sys.argv = [str(script)]
    try:
        with module.tool.clean_exit():
            module.tool.bound(module.MEGABYTES, SECONDS)
            return module.main(arguments)
    except SystemExit as end:
        return end.code
    except BaseException:
        traceback.print_exc()
        return 99


def wait(child):
    """The exit status of a child; one that outlives its own limit is killed with all that it started."""
    end = time.monotonic() + 2 * SECONDS
    while not (ended := os.waitpid(child, os.WNOHANG))[0]:
        if time.monotonic() > end:
            os.killpg(child, signal.SIGKILL)
            ended = os.waitpid(child, 0)
            break
        time.sleep(0.002)
    return os.waitstatus_to_exitcode(ended[1])


def run(script, arguments, output, errors):
    """Runs a comparison in a child of this process, where the script is loaded already; returns its wait status."""
    module = tool_test.loaded(script)
    child = os.fork()
    if child:
        return wait(child)
    status = 99
    try:
        os.setsid()
        os.dup2(output.fileno(), 1)
        os.dup2(errors.fileno(), 2)
        status = run_here(module, script, arguments)
        sys.stdout.flush()
        sys.stderr.flush()
    finally:
        os._exit(status)


def complaint(script, master, actual):
    """Compares two contents; tells what was wrong about it, or nothing."""
    with tempfile.TemporaryDirectory(prefix="modiff-fuzz-") as folder:
        names = [f"{folder}/{name}" for name in ("master", "actual", "result")]
        for name, data in zip(names, (master, actual, OLD_RESULT)):
            pathlib.Path(name).write_bytes(data)
        options = ["-o", names[2]] if script == tool_test.XLSX else []
        with open(f"{folder}/output", "w+b") as output, open(f"{folder}/errors", "w+b") as errors:
            status = run(script, [*options, *names[:2]], output, errors)
            printed, refusal = (pathlib.Path(stream.name).read_bytes() for stream in (output, errors))
        result = pathlib.Path(names[2]).read_bytes()
        left_over = set(os.listdir(folder)) - {"master", "actual", "result", "output", "errors"}
    text = (printed + refusal).decode("utf-8", "replace")
    for wrong, what in (
            (status not in (0, 1, 2), f"status {status}"),
            (b"Traceback" in printed + refusal, "a traceback"),
            (b"unexpected " in refusal, "an error that was not foreseen"),
            (b"took longer than" in refusal, f"more than {SECONDS} seconds"),
            (refusal.count(b"\n") != (status == 2), "lines on standard error"),
            (status == 0 and script == tool_test.VMD and master.replace(b"\r", b"") != actual.replace(b"\r", b""), "equal"),
            (options and (result == OLD_RESULT) != (status == 2), "the result file"),
            (left_over, f"left behind: {sorted(left_over)}")):
        if wrong:
            return f"{what}\n{text[-2000:]}"
    return ""


def search(seconds, chance, findings):
    """Tries damaged files until the time is over; returns the number of findings."""
    end = time.monotonic() + seconds
    tried, found = 0, 0
    while time.monotonic() < end:
        suffix, script, whole, damage, _ = chance.choices(KINDS, [kind[-1] for kind in KINDS])[0]
        data = damage(chance)
        pair = (data, whole) if chance.randrange(4) == 0 else (whole, data)
        tried += 1
        if wrong := complaint(script, *pair):
            found += 1
            findings.mkdir(parents=True, exist_ok=True)
            name = findings / f"tools_readers-{chance.getrandbits(64):016x}{suffix}"
            name.write_bytes(data)
            print(f"{name}: {wrong}", flush=True)
    print(f"tools_readers: {tried} executions, {found or 'no'} finding{'s' * (found != 1)}")
    return found


def try_again(names):
    """Tries files as masters and as actual files; returns the number of findings."""
    found = 0
    for name in names:
        _, script, whole, *_ = next(kind for kind in KINDS if kind[0] == pathlib.Path(name).suffix)
        data = pathlib.Path(name).read_bytes()
        for pair in ((data, whole), (whole, data)):
            if wrong := complaint(script, *pair):
                found += 1
                print(f"{name}: {wrong}")
    return found


def main():
    parser = argparse.ArgumentParser(description="Runs the diff scripts on damaged files.")
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--seed", type=int, default=None, help="repeats a search")
    parser.add_argument("--findings", type=pathlib.Path, default=pathlib.Path("."))
    parser.add_argument("files", nargs="*", metavar="FILE")
    options = parser.parse_args()
    seed = random.SystemRandom().getrandbits(32) if options.seed is None else options.seed
    if options.files:
        return try_again(options.files)
    print(f"tools_readers: seed {seed}", flush=True)
    return search(options.seconds, random.Random(seed), options.findings)


if __name__ == "__main__":
    sys.exit(min(main(), 1))
