"""Suites of modiff as tests of Bazel.

    load("//tools/modiff:modiff.bzl", "modiff_test")

    modiff_test(
        name = "reports",
        config = "server/run/modiff.toml",
        data = glob(["server/**", "src/**"]),
        shard_count = 4,
        size = "large",
    )
"""

def _quoted(word):
    return "'" + word.replace("'", "'\\''") + "'"

def _modiff_test_impl(ctx):
    # Bazel starts tests where the paths of runfiles begin; others need not.
    words = [ctx.file._runner.short_path, ctx.file.config.short_path]
    words.append("./" + ctx.executable.modiff.short_path if ctx.attr.modiff else "modiff")
    words += ["--jobs", str(ctx.attr.jobs)] + ctx.attr.options
    lines = [
        "#!/bin/sh",
        'cd "${TEST_SRCDIR:-${RUNFILES_DIR:-$0.runfiles}}"/%s || exit' % _quoted(ctx.workspace_name),
        "exec ./%s \"$@\"" % " ".join([_quoted(word) for word in words]),
    ]
    ctx.actions.write(ctx.outputs.executable, "\n".join(lines) + "\n", is_executable = True)
    runfiles = ctx.runfiles(files = [ctx.file._runner, ctx.file.config] + ctx.files.data + ctx.files.modiff)
    for target in ctx.attr.data + ([ctx.attr.modiff] if ctx.attr.modiff else []):
        runfiles = runfiles.merge(target[DefaultInfo].default_runfiles)
    return [DefaultInfo(runfiles = runfiles)]

_modiff_test = rule(
    implementation = _modiff_test_impl,
    test = True,
    attrs = {
        "config": attr.label(allow_single_file = True, mandatory = True),
        "data": attr.label_list(allow_files = True),
        "jobs": attr.int(default = 1),
        "modiff": attr.label(allow_single_file = True, executable = True, cfg = "target"),
        "options": attr.string_list(),
        "_runner": attr.label(allow_single_file = True, default = ":modiff_test.sh"),
    },
)

def modiff_test(name, config, data = [], modiff = None, jobs = 1, options = [], tags = [], **kwargs):
    """A test that passes when all pairs of a suite do.

    With shard_count each shard compares a part, and one that has none passes. A suite without any pair fails.
    --test_filter chooses pairs as `modiff run FILTER` does. The record and its pages are among the test's outputs.

    Args:
        name: of the test
        config: the configuration, a file; it is run where it lies among the runfiles
        data: masters, actual files, and the scripts that `modiff install-tools` lays out where they are needed
        modiff: the program; by default that in PATH
        jobs: how many processes compare at a time, and how many processors Bazel keeps for them
        options: further options of `modiff run`
        tags: those of all rules
        **kwargs: other attributes of all tests, such as shard_count, size and timeout
    """
    _modiff_test(
        name = name,
        config = config,
        data = data,
        jobs = jobs,
        modiff = modiff,
        options = options,
        tags = tags + ["cpu:%d" % jobs],
        **kwargs
    )
