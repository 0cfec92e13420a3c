"""What the diff scripts share: statuses, limits, arguments, escaping and reports.

Each script compares a master with an actual file and ends with status 0 (equivalent), 1 (different) or
2 (could not compare, with one line on standard error that says why), never with a traceback.
"""

import argparse
import contextlib
import io
import os
import resource
import signal
import stat
import sys
import tempfile

for _stream in (sys.stdout, sys.stderr):
    if isinstance(_stream, io.TextIOWrapper):
        _stream.reconfigure(errors="backslashreplace")   # what the locale's character set lacks

EQUIVALENT, DIFFERENT, NOT_COMPARED = 0, 1, 2

CHUNK = 1 << 16  # bytes read at a time

# Seconds after which what ends a comparison is raised again: python drops what is raised while an object is destroyed.
AGAIN = 0.5

# The Debian packages that bring the modules the scripts import.
PACKAGES = {"openpyxl": "python3-openpyxl", "defusedxml": "python3-defusedxml", "PIL": "python3-pil"}


class CannotCompare(Exception):
    """The comparison has no verdict; the text says why."""


def _reason(error):
    """One sentence on why `error` ended the comparison."""
    if isinstance(error, ImportError):
        module = (error.name or "").partition(".")[0]
        return f"the python module {error.name} is missing; install the package {PACKAGES.get(module, module)}"
    if isinstance(error, MemoryError):
        return "the files need more memory than a comparison may take"
    if isinstance(error, KeyboardInterrupt):
        return "interrupted"
    if isinstance(error, OSError) and error.strerror:
        return f"{error.filename}: {error.strerror}" if error.filename else error.strerror
    return str(error) if isinstance(error, CannotCompare) else f"unexpected {type(error).__name__}: {error}"


@contextlib.contextmanager
def clean_exit():
    """Turns every error of its block into one line on standard error and an exit with status 2."""
    try:
        yield
    except (Exception, KeyboardInterrupt) as error:
        signal.setitimer(signal.ITIMER_REAL, 0)
        with contextlib.suppress(OSError):
            print(f"{os.path.basename(sys.argv[0])}: {escape(_reason(error))}", file=sys.stderr, flush=True)
        sys.exit(NOT_COMPARED)


def bound(megabytes, seconds):
    """Limits address space and time of this process, and the same of every process it starts."""

    def too_long(_signal, _frame):
        raise CannotCompare(f"the comparison took longer than {seconds} seconds")

    def interrupt(_signal, _frame):
        signal.signal(signal.SIGALRM, interrupt)
        signal.setitimer(signal.ITIMER_REAL, AGAIN, AGAIN)
        raise KeyboardInterrupt

    for limit, value in ((resource.RLIMIT_AS, megabytes << 20), (resource.RLIMIT_CPU, seconds + 10),
                         (resource.RLIMIT_CORE, 0)):
        present = [old for old in resource.getrlimit(limit) if old != resource.RLIM_INFINITY]
        resource.setrlimit(limit, (min([value, *present]), resource.getrlimit(limit)[1]))
    signal.signal(signal.SIGTERM, interrupt)
    signal.signal(signal.SIGALRM, too_long)
    signal.setitimer(signal.ITIMER_REAL, seconds, AGAIN)


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        raise CannotCompare(f"{message}; {' '.join(self.format_usage().split())}")


def parse_arguments(description, arguments, *options):
    """Reads `arguments`: options (each given as name and keywords for argparse), then master and actual.

    The last two arguments are names of files whatever they look like.
    """
    parser = _Parser(description=description, usage="%(prog)s [options] MASTER ACTUAL", allow_abbrev=False,
                     formatter_class=argparse.RawDescriptionHelpFormatter)
    for name, keywords in options:
        parser.add_argument(name, **keywords)
    if len(arguments) < 2 and arguments not in (["-h"], ["--help"]):
        parser.error("two files are needed")
    names = arguments[-2:] if len(arguments) > 1 else []
    parsed = parser.parse_args(arguments[:len(arguments) - len(names)])
    parsed.master, parsed.actual = names
    return parsed


def open_input(path):
    """Opens a regular file for reading bytes; pipes and devices, which may never end, are refused."""
    if not stat.S_ISREG(os.stat(path).st_mode):
        raise CannotCompare(f"{path}: not a regular file")
    return open(path, "rb")


def same_bytes(left, right):
    """Whether two binary streams hold the same bytes from here to their ends."""
    while True:
        chunk = left.read(CHUNK)
        if chunk != right.read(CHUNK):
            return False
        if not chunk:
            return True


def same_files(master, actual):
    """Whether the two files named hold the same bytes."""
    with open_input(master) as left, open_input(actual) as right:
        return same_bytes(left, right)


def escape(text):
    """`text` on one line of printable characters; bytes that are no UTF-8 come out as \\xNN."""

    def shown(character):
        code = ord(character)
        if 0xDC80 <= code <= 0xDCFF:
            return f"\\x{code - 0xDC00:02x}"
        if character.isprintable() and character != "\\":
            return character
        return character.encode("unicode_escape").decode("ascii")

    return text if text.isprintable() and "\\" not in text else "".join(map(shown, text))


def clip(text, length=200):
    """`text`, or its beginning with a note of how long it is."""
    return text if len(text) <= length else f"{text[:length]}... ({len(text)} characters)"


def say(text):
    """Prints one escaped line. A reader of standard output that has gone away changes no verdict."""
    if sys.stdout is None:
        return
    try:
        print(escape(text), flush=True)
    except OSError as error:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        if not isinstance(error, BrokenPipeError):
            raise CannotCompare(f"standard output: {error.strerror}") from error


@contextlib.contextmanager
def whole_file(path):
    """Gives a binary file that takes the place of `path` when its block has ended without an error.

    What is no regular file (a device, say) is written to directly.
    """
    target = os.path.realpath(path)
    if os.path.exists(target) and not os.path.isfile(target):
        with open(target, "wb") as file:
            yield file
        return
    descriptor, temporary = tempfile.mkstemp(prefix=".modiff-", dir=os.path.dirname(target))
    try:
        with open(descriptor, "wb") as file:
            yield file
        os.chmod(temporary, _mode_for(target))
        os.replace(temporary, target)
    except BaseException:
        os.unlink(temporary)
        raise


def _mode_for(path):
    """The permissions of the file at `path`, or those that a new file gets."""
    with contextlib.suppress(FileNotFoundError):
        return stat.S_IMODE(os.stat(path).st_mode)
    mask = os.umask(0)
    os.umask(mask)
    return 0o666 & ~mask


class Report:
    """Counts differences, prints the first `shown` of them and writes all to `file`, when there is one."""

    def __init__(self, shown, file=None):
        self.count = 0
        self._shown = shown
        self._file = file

    def write(self, line):
        """Writes a line to the file alone."""
        if self._file:
            self._file.write(f"{escape(line)}\n".encode("utf-8"))

    def difference(self, line):
        """Takes up one difference, told in one line."""
        self.count += 1
        self.write(line)
        if self.count <= self._shown:
            say(line)

    def verdict(self):
        """Closes the account and returns the status of the comparison."""
        total = f"{self.count} difference{'' if self.count == 1 else 's'}" if self.count else "no difference"
        self.write(total)
        say(f"{total}{f', the first {self._shown} of them shown' if self.count > self._shown else ''}")
        return DIFFERENT if self.count else EQUIVALENT
