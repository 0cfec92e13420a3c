"""What a comparison looks at, kind by kind, and which kinds a user has it leave out.

A script lists its kinds in one table; --help, the documentation and the check of what a user names come from it.
"""

import collections
import difflib
import os

import modifftools as tool

FORMATS = ("xlsx", "pdf")    # whose scripts know kinds
VARIABLE = "MODIFF_IGNORE"

Kind = collections.namedtuple("Kind", "name what")   # a word of small letters, and what is compared under it

OPTION = ("--ignore", {
    "metavar": "KIND,...", "action": "append", "default": [],
    "help": f"leave kinds out of the comparison; {VARIABLE} in the environment does the same, also as FORMAT:KIND"})


def ignored(form, kinds, options):
    """The names of the kinds left out of a comparison of the format `form`, in the order of the table `kinds`.

    `options` are the values of --ignore. A kind that the format doesn't know raises CannotCompare.
    """
    known = [kind.name for kind in kinds]
    sources = [("--ignore", option) for option in options] + [(VARIABLE, os.environ.get(VARIABLE, ""))]
    named = {_own_kind(source, entry.strip(), form, known)
             for source, text in sources for entry in text.split(",") if entry.strip()}
    return [name for name in known if name in named]


def _own_kind(source, entry, form, known):
    """The kind that an entry names for the format `form`; None when it is meant for another format."""
    prefix, colon, name = entry.rpartition(":")
    if colon and prefix not in FORMATS:
        raise tool.CannotCompare(f"{source}: unknown format {prefix!r} in {entry!r}{_nearest(prefix, FORMATS)}")
    if colon and prefix != form:
        return None
    if name not in known:
        raise tool.CannotCompare(f"{source}: unknown kind {name!r} of {form}{_nearest(name, known)}")
    return name


def _nearest(word, known):
    """A hint at the known word that is most like the one given, or at all of them."""
    near = difflib.get_close_matches(word, known, 1, 0.5)
    return f"; did you mean {near[0]!r}?" if near else f"; known are {', '.join(known)}"


def said(names):
    """What a report says of the kinds left out: one line, or none."""
    return [f"not compared, as asked: {', '.join(names)}"] if names else []


def table(kinds, unseen):
    """The lines, for --help, of what is compared and of what never is (`unseen`, a list of texts)."""
    width = max(len(kind.name) for kind in kinds)
    return "\n".join(["Compared, by kind:", *(f"  {kind.name:<{width}}  {kind.what}" for kind in kinds),
                      "", "Never compared:", *(f"  {text}" for text in unseen)])


def markdown(kinds, unseen):
    """The same for the documentation."""
    return "\n".join(["| Kind | Compared is |", "|---|---|", *(f"| `{kind.name}` | {kind.what} |" for kind in kinds),
                      "", "Never compared:", "", *(f"- {text}" for text in unseen)])
