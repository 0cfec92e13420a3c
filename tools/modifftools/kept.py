"""The result file of a comparison, and what is kept of earlier ones: each names the pair that it is about."""

import contextlib
import hashlib
import os
import re
import stat

import modifftools as tool

MAX_KEPT = 200     # results of other pairs beside the newest
_HEAD = re.compile(r"Comparison of [^\n]*\nmaster: ([^\n]*)\nactual: ([^\n]*)\n")


def kept_name(path, master, actual):
    """Where the result of a pair is kept when another one takes its place at `path`; names as they are shown."""
    stem, suffix = os.path.splitext(path)
    digest = hashlib.blake2b(f"{master}\n{actual}".encode("utf-8", "surrogateescape"), digest_size=4).hexdigest()
    report = re.sub(r"[^\w.-]", "_", os.path.splitext(os.path.basename(master))[0])[:80]
    return f"{stem}-{report}-{digest}{suffix}"


def _head(path):
    """The pair that a result is about, or None when the file is something else or found no difference."""
    if not os.path.isfile(path):
        return None
    with open(path, "rb") as file:
        head = _HEAD.match(file.read(tool.CHUNK).decode("utf-8", "replace"))
        file.seek(max(0, os.fstat(file.fileno()).st_size - 40))
        return head.groups() if head and not file.read().endswith(b"\nno difference\n") else None


@contextlib.contextmanager
def kept_result(path, master, actual):
    """Gives a file that takes the place of `path` as tool.whole_file does.

    Differences of another pair that stood there are kept beside it, under a name of their own, for the MAX_KEPT newest.
    """
    path = os.path.realpath(path)
    pair = tool.escape(master), tool.escape(actual)
    with tool.whole_file(path) as file:
        yield file
        file.flush()
        earlier = _head(path)
        if earlier and earlier != pair:
            os.replace(path, kept_name(path, *earlier))
            _drop_old(path)
    with contextlib.suppress(FileNotFoundError):
        os.unlink(kept_name(path, *pair))    # an older result of the same pair


def _drop_old(path):
    """Deletes the oldest of the results kept beside `path`."""
    stem, suffix = os.path.splitext(os.path.basename(path))
    name = re.compile(rf"{re.escape(stem)}-.*-[0-9a-f]{{8}}{re.escape(suffix)}", re.DOTALL)
    kept = []
    for entry in os.scandir(os.path.dirname(path)):
        if name.fullmatch(entry.name) and stat.S_ISREG(entry.stat(follow_symlinks=False).st_mode):
            kept.append((entry.stat(follow_symlinks=False).st_mtime_ns, entry.path))
    for _, old in sorted(kept)[:-MAX_KEPT]:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(old)
