"""Makes the manual pages: make_manual.py MODIFF DIR

What commands, options, keys and formats there are, the program tells itself (--dump-options); the classes of the
library stand in its headers; all else stands in pages.toml beside this file. The pages are compressed and hold no time,
so that they are the same whenever they are made.
"""

import gzip
import json
import pathlib
import re
import subprocess
import sys
import tomllib

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]


def escaped(text):
    """Text as roff wants it, with `words` in bold."""
    text = text.replace("\\", r"\e").replace("-", r"\-").replace('"', r"\(dq")
    text = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", text)
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.MULTILINE)


def paragraphs(text):
    """Blocks between blank lines; one that is indented is an example and stays as it is."""
    for block in re.split(r"\n\n+", text.strip("\n")):
        if block.startswith("    "):
            yield ".PP\n.RS 4\n.EX\n" + escaped(re.sub(r"^ {4}", "", block, flags=re.MULTILINE)) + "\n.EE\n.RE"
        else:
            yield ".PP\n" + escaped(block)


class Page:
    def __init__(self, name, section, about, version):
        self.file = f"{name}.{section}.gz"
        self.lines = [f'.TH {escaped(name)} {section} "" "modiff {version}" "Regression tests for a report server"',
                      ".SH NAME", escaped(f"{name} - {about[0].lower()}{about[1:].rstrip('.')}")]

    def section(self, title, *lines):
        if any(lines):
            self.lines += [".SH " + title, *lines]

    def prose(self, title, text):
        self.section(title, *paragraphs(text) if text.strip() else ())

    def write(self, directory):
        text = re.sub(r"(\.S[HS] .*)\n\.PP\n", r"\1\n", "\n".join(self.lines) + "\n")
        (directory / self.file).write_bytes(gzip.compress(text.encode(), 9, mtime=0))


def item(head, text):
    return ".TP\n" + head + "\n" + escaped(text)


def option_item(option):
    argument = option["argument"].strip("[]")
    value = {"none": "", "optional": rf"[=\fI{escaped(argument)}\fR]", "required": rf" \fI{escaped(argument)}\fR"}
    head = ", ".join(rf"\fB{escaped(name)}\fR" for name in option["names"]) + value[option["value"]]
    notes = [word for word in ("required", "repeatable") if option[word] and word not in option["about"]]
    return item(head, option["about"] + (f" ({', '.join(notes)})" if notes else ""))


def option_lines(options):
    """Items, the first group without a title."""
    lines = []
    for group in dict.fromkeys(option["group"] for option in options):
        lines += [] if group == "Options" else [f".SS {escaped(group)}"]
        lines += [option_item(option) for option in options if option["group"] == group]
    return lines


def synopsis(command):
    words = [rf"\fBmodiff {escaped(command['name'])}\fR", r"[\fIoptions\fR]"]
    for positional in command["positionals"]:
        word = rf"\fI{escaped(positional['argument'])}\fR" + ("..." if positional["repeatable"] else "")
        words.append(word if positional["required"] else f"[{word}]")
    return " ".join(words)


def split_footer(footer):
    """What --help tells behind the options: statuses, and all else."""
    statuses = re.search(r"Exit status: (.*?)(?:\n\n|\Z)", footer, re.DOTALL)
    return statuses[1], footer.replace(statuses[0], "").strip()


def see_also(table):
    names = ["modiff(1)", *(f"modiff-{command['name']}(1)" for command in table["commands"]), "modiff.toml(5)",
             "libMoDiffEngine(3)"]
    return escaped(", ".join(names))


def positional_item(positional):
    return item(rf"\fI{escaped(positional['argument'])}\fR", positional["about"])


def command_page(table, command, prose):
    page = Page("modiff-" + command["name"], 1, command["about"], table["version"])
    statuses, more = split_footer(command["footer"])
    page.section("SYNOPSIS", synopsis(command))
    page.prose("DESCRIPTION", "\n\n".join(filter(None, (prose.get("description", command["about"] + "."), more))))
    page.section("ARGUMENTS", *map(positional_item, command["positionals"]))
    page.section("OPTIONS", *option_lines(command["options"]))
    page.prose("EXIT STATUS", statuses)
    page.prose("EXAMPLES", prose.get("examples", ""))
    page.section("SEE ALSO", see_also(table))
    return page


def main_page(table, prose):
    page = Page("modiff", 1, table["about"], table["version"])
    statuses, _ = split_footer(table["footer"])
    page.section("SYNOPSIS", r"\fBmodiff\fR \fIcommand\fR [\fIoptions\fR] ...")
    page.prose("DESCRIPTION", prose["description"])
    page.section("COMMANDS", *(item(rf"\fBmodiff\-{escaped(command['name'])}\fR(1)", command["about"] + ".")
                               for command in table["commands"]))
    page.section("OPTIONS", *option_lines(table["options"]))
    page.section("FORMATS", *(item(rf"\fB{row['word']}\fR", f"Compared as: {row['comparison']}.")
                              for row in table["formats"]))
    page.prose("EXIT STATUS", statuses)
    for title in ("environment", "files"):
        page.section(title.upper(), *(item(rf"\fB{escaped(name)}\fR", text) for name, text in prose[title].items()))
    page.prose("EXAMPLES", prose["examples"])
    page.section("SEE ALSO", see_also(table))
    return page


def setting_item(setting):
    """Where the machine decides or nothing is the default, the sentence about a key says so."""
    has_default = setting["default"] not in ("", "[]") and "Without it" not in setting["about"]
    return item(rf"\fB{escaped(setting['key'])}\fR", f"{setting['about']} Values: {setting['values']}." +
                (f" Default: {setting['default']}." if has_default else ""))


def key_item(key):
    return item(rf"\fB{escaped(key['key'])}\fR", key["about"] + (" Required." if key["required"] else ""))


def configuration_page(table, prose):
    page = Page("modiff.toml", 5, prose["about"], table["version"])
    page.prose("DESCRIPTION", prose["description"])
    page.section("KEYS", *map(setting_item, table["settings"]))
    for row in table["tables"]:
        page.section(f"TABLES [[{row['key']}]]", escaped(prose["tables"][row["key"]]), *map(key_item, row["keys"]))
    page.prose("EXAMPLE", prose["example"])
    page.section("SEE ALSO", see_also(table))
    return page


def classes():
    """The exported classes with the first sentence about each, in the order of the header that includes all."""
    umbrella = (SOURCE / "diffengine/libMoDiffEngine.h").read_text()
    for name in re.findall(r'#include "(.*)"', umbrella):
        text = next(SOURCE.glob(f"[dsh]*/**/{name}")).read_text()
        for comment, word in re.findall(r"((?:^///.*\n)+)(?:class|struct) KLT_EXPORT (\w+)", text, re.MULTILINE):
            sentence = " ".join(line.removeprefix("///").strip() for line in comment.splitlines())
            yield word, re.split(r"(?<=\.)\s", sentence)[0]


def library_page(table, prose):
    page = Page("libMoDiffEngine", 3, prose["about"], table["version"])
    page.section("SYNOPSIS", *paragraphs(prose["synopsis"]))
    page.prose("DESCRIPTION", prose["description"])
    page.section("CLASSES", *(item(rf"\fB{name}\fR", sentence) for name, sentence in classes()))
    example = re.search(r"```cpp\n(.*?)```", (SOURCE / "docs/embedding.md").read_text(), re.DOTALL)[1]
    page.prose("EXAMPLE", re.sub("^", "    ", example, flags=re.MULTILINE).replace("    \n", "    \\&\n"))
    page.section("SEE ALSO", see_also(table))
    return page


def main(modiff, directory):
    table = json.loads(subprocess.run([modiff, "--dump-options"], check=True, capture_output=True).stdout)
    prose = tomllib.loads((HERE / "pages.toml").read_text(encoding="utf-8"))
    strangers = set(prose["commands"]) - {command["name"] for command in table["commands"]}
    if strangers:
        sys.exit(f"{HERE / 'pages.toml'}: there is no command {', '.join(sorted(strangers))}")
    pages = [main_page(table, prose["modiff"]), configuration_page(table, prose["configuration"]),
             library_page(table, prose["library"])]
    pages += [command_page(table, command, prose["commands"].get(command["name"], {})) for command in table["commands"]]
    directory = pathlib.Path(directory)
    directory.mkdir(parents=True, exist_ok=True)
    for page in pages:
        page.write(directory)


if __name__ == "__main__":
    main(*sys.argv[1:])
