"""Tests what scripts/test tells at its end, and that it comes there whatever fails on the way."""
import os
import shutil
import subprocess
import tempfile
import unittest
from xml.sax.saxutils import escape

SCRIPTS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "..", "scripts")
NO_MOUNTS = "Not run: this machine does not allow private mounts"
NO_FUSE = "Not run: this machine does not allow FUSE"


def case(name, status, output=""):
    return f'<testcase name="{name}" status="{status}"><system-out>{escape(output)}</system-out></testcase>'


def passed(name):
    return case(name, "run", "all is well")


def failed(name):
    return case(name, "fail", "1 != 2")


def not_run(name, output):
    return case(name, "notrun", f"some_test.cpp:7: Skipped\n{output}\n\n[  SKIPPED ] {name}")


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, content, mode=0o644):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(content)
        os.chmod(path, mode)

    def write_results(self, preset, *cases):
        self.write(f"build/results/{preset}.xml", f"<testsuite>{''.join(cases)}</testsuite>")

    def run_script(self, *command, **environment):
        done = subprocess.run(command, cwd=self.folder, env={**os.environ, "CI": "", **environment},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        return done.stdout.splitlines(), done.returncode


class TestSummaryTest(InFolder):
    def summary(self, *outcomes, **environment):
        return self.run_script(os.path.join(SCRIPTS, "test_summary"), "build/results", *outcomes, **environment)

    def test_counts_over_all_presets(self):
        self.write_results("no-ui", passed("A.one"), passed("A.two"))
        self.write_results("release", passed("A.one"))
        self.assertEqual(self.summary("no-ui=0", "release=0"), (["3 passed"], 0))

    def test_what_the_machine_refuses_is_no_failure(self):
        self.write_results("no-ui", passed("A.one"), not_run("A.two", NO_MOUNTS))
        self.write_results("release", not_run("A.two", NO_MOUNTS))
        self.assertEqual(self.summary("no-ui=0", "release=0"),
                         (["1 passed; 2 not run: this machine does not allow private mounts"], 0))

    def test_refusals_told_by_unittest_are_counted_with_those_told_by_googletest(self):
        self.write_results("release", not_run("A.one", NO_FUSE), not_run("B.one", f"test_one ... skipped '{NO_FUSE}'"))
        self.assertEqual(self.summary("release=0"), (["0 passed; 2 not run: this machine does not allow FUSE"], 0))

    def test_each_refusal_is_counted(self):
        self.write_results("release", not_run("A.one", NO_FUSE), not_run("A.two", NO_MOUNTS), not_run("B.one", NO_MOUNTS))
        line = "0 passed; 3 not run: this machine does not allow private mounts (2), does not allow FUSE (1)"
        self.assertEqual(self.summary("release=0"), ([line], 0))

    def test_continuous_integration_leaves_nothing_out(self):
        self.write_results("release", passed("A.one"), not_run("A.two", NO_FUSE))
        lines, code = self.summary("release=0", CI="true")
        self.assertEqual(code, 1)
        self.assertEqual(lines[-1], "1 passed; 1 not run: this machine does not allow FUSE")

    def test_without_a_refusal_of_the_machine_not_run_is_failed(self):
        self.write_results("release", case("A.one", "notrun", "Unable to find executable"), case("A.two", "disabled"))
        self.assertEqual(self.summary("release=8"),
                         (["release: 2 failed", "  A.one", "  A.two", "0 passed; 2 failed"], 1))

    def test_failures_of_all_presets_are_told(self):
        self.write_results("no-ui", passed("A.one"), failed("A.two"))
        self.write_results("release", failed("B.one"), failed("B.two/0  # GetParam() = 7"),
                           not_run("A.two", NO_FUSE))
        self.assertEqual(self.summary("no-ui=8", "release=8"),
                         (["no-ui: 1 failed", "  A.two", "release: 2 failed", "  B.one", "  B.two/0",
                           "1 passed; 3 failed; 1 not run: this machine does not allow FUSE"], 1))

    def test_a_preset_that_was_not_built_is_a_failure(self):
        self.write_results("release", passed("A.one"))
        lines, code = self.summary("no-ui=1", "release=0")
        self.assertEqual((lines[-1], code), ("1 passed", 1))
        self.assertIn("no-ui", lines[0])

    def test_an_exit_code_counts_though_no_test_failed(self):
        self.write_results("release", passed("A.one"))
        self.assertEqual(self.summary("release=1"), (["release: failed, see above", "1 passed"], 1))


# Stand-ins for CMake, which cannot build one of the presets, for CTest, and for Debian's list of installed packages.
CMAKE = """#!/bin/sh
case "$*" in *--build*tsan*) exit 1 ;; esac
"""
CTEST = """#!/bin/sh
cp "$2.xml" "$6"
grep -q fail "$2.xml" && exit 8 || exit 0
"""
DPKG_QUERY = """#!/bin/sh
for name; do case $name in -*) ;; *) echo "installed $name" ;; esac; done
"""
NOTHING_TO_INSTALL = """#!/bin/sh
exit 1
"""


class TestScriptTest(InFolder):
    def test_goes_on_to_the_last_preset_and_tells_all_failures(self):
        shutil.copytree(SCRIPTS, os.path.join(self.folder, "scripts"))
        for name, content in {"cmake": CMAKE, "ctest": CTEST, "dpkg-query": DPKG_QUERY,
                              "apt-get": NOTHING_TO_INSTALL}.items():
            self.write(f"bin/{name}", content, 0o755)
        for preset, result in {"asan-ubsan": failed, "fuzz": passed, "release": failed}.items():
            self.write(f"{preset}.xml", f"<testsuite>{result('A.' + preset)}</testsuite>")
        lines, code = self.run_script("scripts/test", "--all", PATH=f"{self.folder}/bin:/usr/bin:/bin")
        self.assertEqual(code, 1)
        self.assertEqual(lines[lines.index("== Result") + 1:],
                         ["asan-ubsan: 1 failed", "  A.asan-ubsan", "tsan: was not built or not tested, see above",
                          "release: 1 failed", "  A.release", "1 passed; 2 failed"])


if __name__ == "__main__":
    unittest.main()
