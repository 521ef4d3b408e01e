"""Tests that fetching the compiler for macOS says what is wrong and leaves nothing half done, with an npm of the test's
own."""
import os
import stat
import subprocess
import tempfile
import unittest

SCRIPT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", "..", "scripts", "fetch_macos_compiler"))
TOOLS = ["bash", "cat", "chmod", "dirname", "env", "mkdir", "mktemp", "mv", "rm", "sha512sum", "tail", "tar"]


class FetchMacosCompilerTest(unittest.TestCase):
    def setUp(self):
        self.room = tempfile.TemporaryDirectory()
        self.addCleanup(self.room.cleanup)
        self.tools = os.path.join(self.room.name, "bin")
        self.compilers = os.path.join(self.room.name, "compilers")
        os.mkdir(self.tools)
        for tool in TOOLS:
            path = subprocess.run(["which", tool], check=True, capture_output=True, text=True).stdout.strip()
            os.symlink(path, os.path.join(self.tools, tool))

    def have_npm(self, script):
        path = os.path.join(self.tools, "npm")
        with open(path, "w", encoding="utf-8") as file:
            file.write("#!/bin/sh\n" + script)
        os.chmod(path, stat.S_IRWXU)

    def fetch(self):
        return subprocess.run([SCRIPT], capture_output=True, text=True,
                              env={"PATH": self.tools, "DUNMERE_MACOS_COMPILERS": self.compilers})

    def assert_failed_with(self, reason):
        result = self.fetch()
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(result.stdout, "")
        self.assertIn("nothing was built or checked", result.stderr)
        self.assertIn(reason, result.stderr)
        self.assertEqual(os.listdir(self.compilers), [])

    def test_no_npm(self):
        self.assert_failed_with("npm is not installed")

    def test_registry_out_of_reach(self):
        # As npm does: told to be silent, it keeps the reason to itself.
        self.have_npm('case "$*" in *silent*) ;; *) echo "getaddrinfo failed" >&2 ;; esac\nexit 1\n')
        self.assert_failed_with("registry cannot be reached")
        self.assert_failed_with("getaddrinfo failed")

    def test_another_archive_than_the_pinned_one(self):
        self.have_npm('echo anything >got.tgz\necho got.tgz\n')
        self.assert_failed_with("is not what was pinned")

    def test_compiler_that_is_there_is_not_fetched_again(self):
        with open(SCRIPT, encoding="utf-8") as file:
            version = next(line.removeprefix("version=").strip() for line in file if line.startswith("version="))
        os.makedirs(os.path.join(self.compilers, version))
        result = self.fetch()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.strip(), os.path.join(self.compilers, version))


if __name__ == "__main__":
    unittest.main()
