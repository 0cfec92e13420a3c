"""The scripts that spread a run over machines: test_spread.py MODIFF."""

import fcntl
import json
import pathlib
import shutil
import subprocess
import unittest

from driver_case import DEBIAN_PATH, MODIFF, DriverCase

SHARE = pathlib.Path(__file__).resolve().parents[2] / "share"
# A modiff whose process dies in the second shard, once, with its last line unwritten.
DYING = f"""#!/bin/bash
{MODIFF} "$@" || status=$?
if [[ $3 == 2/* && ! -e $0.died ]]; then
    touch "$0.died"
    sed -i '$d' "$5/run.jsonl"
    kill -9 $$
fi
exit $status
"""
# An ssh to machines of which one is dead and one has another modiff.
SSH = """#!/bin/bash
export SHELL=/bin/sh # sshd sets it
while [[ $1 == -* ]]; do shift; done
case $1 in
    dead) echo "Connection refused" >&2; exit 255 ;;
    newer) sh -c "${*:3}" | sed 's/^modiff .*/modiff 99/' ;;
    *) exec sh -c "${*:3}" ;;
esac
"""


class SpreadTest(DriverCase):
    def setUp(self):
        super().setUp()
        self.out = self.root / "a 'run"
        for number in range(6):
            self.add(f"page{number}.html", b"text", b"text" if number % 2 else b"other")

    def script(self, name, *arguments, status, **environment):
        environment = {**DEBIAN_PATH, "MODIFF": MODIFF, "MODIFF_RUN_ID": "a", "MODIFF_LOCK_WAIT": "0", **environment}
        done = subprocess.run([SHARE / name, *arguments], cwd=self.cwd, timeout=120, check=False, env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual(done.returncode, status, (name, arguments, done.stdout))
        return done.stdout

    def shard(self, part, *options, status=0, **environment):
        return self.script("spread/modiff-shard.sh", self.out, part, *options, status=status, **environment)

    def gather(self, status):
        return self.script("spread/modiff-gather.sh", self.out, status=status)

    def parallel(self, *arguments, status, **environment):
        if not shutil.which("parallel", path="/usr/bin"):
            self.skipTest("there is no parallel here")
        return self.script("parallel/modiff-parallel.sh", "--out", self.out, *arguments, status=status, **environment)

    def program(self, name, text):
        path = self.root / name
        path.write_text(text)
        path.chmod(0o755)
        return str(path)

    def assert_as_one_run(self, status, *options):
        self.run_modiff("run", "--out", self.root / "one", *options, status=status)
        found = []
        for record in (self.root / "one", self.out / "merged"):
            lines = [json.loads(line) for line in (record / "run.jsonl").read_text().splitlines()]
            found.append((sorted((line["id"], line["outcome"]) for line in lines if "id" in line), lines[-1]["counts"]))
        self.assertEqual(*found)
        self.assertEqual((self.out / "status").read_text(), f"{status}\n")

    def test_shards_are_joined_into_the_record_of_one_run(self):
        for count in (3, 12):  # with pairs that have no verdict, and shards that have no pair
            for number in range(count, 0, -1):
                self.assertIn("compared", self.shard(f"{number}/{count}"))
            self.gather(1 if count == 3 else 2)
            self.assert_as_one_run(1 if count == 3 else 2)
            shutil.rmtree(self.out)
            if count == 3:
                self.add_usual()
        for number in (1, 2):
            self.shard(f"{number}/2", "--exclude", "**/*.html")
        self.assertIn("nothing to compare", self.gather(3))
        shutil.rmtree(self.out)
        self.assertIn("meets no pair", self.shard("1/2", "nobody", status=2))

    def test_a_shard_that_is_missing_or_died_is_compared_again_and_no_other(self):
        dying = self.program("dying", DYING)
        self.shard("1/2", MODIFF=dying)
        self.assertIn("shard-2: there is no record", self.gather(2))
        self.assertIn("not compared", self.shard("2/2", status=137, MODIFF=dying))
        self.assertIn("incomplete", self.gather(2))
        self.assertFalse((self.out / "merged").exists())
        before = (self.out / "shard-1/run.jsonl").stat().st_mtime_ns
        self.assertIn("complete already", self.shard("1/2"))
        self.assertEqual((self.out / "shard-1/run.jsonl").stat().st_mtime_ns, before)
        with open(self.out / "shard-2.lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.assertIn("another process has it", self.shard("2/2", status=75))
        self.assertIn("compared, status 0", self.shard("2/2"))
        self.gather(1)
        self.assert_as_one_run(1)

    def test_a_directory_belongs_to_one_run(self):
        for part, run, options in (("0/2", "a", []), ("3/2", "a", []), ("1", "a", []), ("1/2", "", []),
                                   *(("1/2", "a", [option]) for option in (
                                       "--shard=1/2", "--out", "--resume", "--junit", "--summary=x", "--fail-fast"))):
            self.shard(part, *options, status=2, MODIFF_RUN_ID=run)
            self.assertFalse(self.out.exists(), (part, options))
        self.shard("1/2")
        newer = self.program("newer", "#!/bin/sh\necho modiff 99\n")
        for part, options, environment in (("1/2", [], {"MODIFF_RUN_ID": "b"}), ("1/3", [], {}), ("2/2", ["a b"], {}),
                                           ("1/2", [], {"MODIFF": newer})):
            self.assertIn("belongs to another run", self.shard(part, *options, status=2, **environment), part)
        (self.out / "run").unlink()
        self.assertIn("unknown run", self.shard("1/2", status=2))
        self.assertIn("no run", self.gather(2))

    def test_parallel_compares_again_where_a_process_died(self):
        self.parallel("-n", "2", "--", "it's $HOME*", status=2)
        self.assertIn("the filter it's $HOME* meets no pair", (self.out / "shard-1.log").read_text())
        shutil.rmtree(self.out)
        self.parallel("-n", "3", "--", "page", status=1, MODIFF=self.program("dying", DYING))
        self.assertEqual((self.out / "shard-2.log").read_text().count("==="), 2)
        self.assert_as_one_run(1, "page")
        self.assertIn("has a run", self.parallel("--", "page", status=2))
        shutil.rmtree(self.out / "shard-3")
        self.gather(2)
        self.assertIn("shard 3 of 3: compared", self.parallel("--resume", status=1))

    def test_parallel_looks_at_its_hosts_first(self):
        ssh = {"PARALLEL_SSH": self.program("ssh", SSH)}
        self.assertIn("+modiff 99", self.parallel("-S", "good,newer", "--", status=2, **ssh))
        self.assertIn("no host answers", self.parallel("-S", "dead", "--resume", status=2, **ssh))
        self.assertIn("dead does not answer", self.parallel("-S", "dead,good", "--resume", status=1, **ssh))
        self.assertIn("\tgood\t", (self.out / "joblog").read_text())
        self.assert_as_one_run(1)


if __name__ == "__main__":
    unittest.main()
