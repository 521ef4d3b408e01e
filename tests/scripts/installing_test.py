"""Tests of what scripts/run and scripts/test install, where it is said, and by whom it is done.

They see a machine on which nothing but the packages of a test's choice is installed. Its apt-get notes its arguments.
"""
import os
import shutil
import stat
import subprocess
import tempfile
import unittest

PROJECT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOLS = ["bash", "dirname", "env", "grep", "mkdir", "realpath", "sed", "sort", "uniq", "xargs"]

DPKG_QUERY = """#!/bin/bash
for package in "${@:3}"; do [[ " $INSTALLED " != *" $package "* ]] || echo "installed $package"; done
"""
APT_GET = """#!/bin/bash
echo "$*" >>"$CALLS"
if [[ $* == *--assume-no* ]]; then
  printf 'Reading lists\\n0 upgraded, 34 newly installed\\nNeed to get 5 MB\\nAfter this operation, 6 MB more\\n'
  exit 1
fi
exit "${APT_RESULT:-0}"
"""
SUDO = """#!/bin/bash
echo "sudo $1" >>"$CALLS"
exec "$@"
"""
ID = """#!/bin/bash
echo "$USER_ID"
"""
CMAKE = """#!/bin/bash
echo "cmake $*"
exit 1
"""


def packages_of(*lists):
    names = set()
    for name in lists:
        with open(os.path.join(PROJECT, "scripts", "packages", name), encoding="utf-8") as file:
            names |= {line.strip() for line in file if line.strip() and not line.startswith("#")}
    return names


class InstallingTest(unittest.TestCase):
    def setUp(self):
        place = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, place)
        self.project = os.path.join(place, "a project’s copy")
        shutil.copytree(os.path.join(PROJECT, "scripts"), os.path.join(self.project, "scripts"))
        self.commands = os.path.join(place, "commands")
        os.mkdir(self.commands)
        for tool in TOOLS:
            os.symlink(shutil.which(tool), os.path.join(self.commands, tool))
        for name, text in (("dpkg-query", DPKG_QUERY), ("apt-get", APT_GET), ("id", ID), ("cmake", CMAKE)):
            self.add_command(name, text)
        self.calls_file = os.path.join(place, "calls")
        self.environment = {"PATH": self.commands, "CALLS": self.calls_file, "USER_ID": "0", "INSTALLED": ""}

    def add_command(self, name, text):
        path = os.path.join(self.commands, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, stat.S_IRWXU)

    def start(self, *command, **environment):
        done = subprocess.run([os.path.join(self.project, "scripts", command[0]), *command[1:]],
                              env={**self.environment, **environment}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertNotEqual(done.returncode, 0, "the stand-in for cmake ends every script")
        return done.stdout

    def calls(self):
        if not os.path.exists(self.calls_file):
            return []
        with open(self.calls_file, encoding="utf-8") as file:
            return file.read().splitlines()

    def installed(self):
        install = [call for call in self.calls() if call.startswith("install --yes")]
        self.assertEqual(len(install), 1, self.calls())
        return {word for word in install[0].split()[1:] if not word.startswith("-")}

    def test_running_installs_what_building_and_running_need(self):
        self.start("run", DISPLAY=":0")
        self.assertEqual(self.installed(), packages_of("application"))

    def test_running_without_a_display_installs_one(self):
        self.start("run")
        self.assertEqual(self.installed(), packages_of("application", "virtual_display"))

    def test_testing_installs_all_but_what_continuous_integration_adds(self):
        everything = packages_of(*os.listdir(os.path.join(PROJECT, "scripts", "packages")))
        extra = packages_of("continuous_integration")
        self.start("test", DISPLAY=":0")
        self.assertEqual(self.installed(), everything - extra)
        os.remove(self.calls_file)
        self.start("test", "--all")
        self.assertEqual(self.installed(), everything)

    def test_amount_is_told_before_anything_is_installed(self):
        told = self.start("run", DISPLAY=":0")
        for line in ("34 newly installed", "Need to get 5 MB", "After this operation, 6 MB more"):
            self.assertIn(line, told)
        self.assertIn("g++", told)
        kinds = ["update" if call == "update" else "ask" if "--assume-no" in call else "install"
                 for call in self.calls()]
        self.assertEqual(kinds, ["update", "ask", "install"])

    def test_only_what_is_missing_is_installed(self):
        have = packages_of("application") - {"cmake", "qt6-wayland"}
        self.start("run", DISPLAY=":0", INSTALLED=" ".join(have))
        self.assertEqual(self.installed(), {"cmake", "qt6-wayland"})

    def test_nothing_is_asked_of_apt_when_nothing_is_missing(self):
        told = self.start("run", DISPLAY=":0", INSTALLED=" ".join(packages_of("application")), USER_ID="1000")
        self.assertEqual(self.calls(), [])
        self.assertIn("cmake --preset release", told)

    def test_a_user_with_sudo_installs_through_it(self):
        self.add_command("sudo", SUDO)
        self.start("run", DISPLAY=":0", USER_ID="1000")
        self.assertEqual([call for call in self.calls() if call.startswith("sudo")], ["sudo apt-get", "sudo env"])
        self.assertEqual(self.installed(), packages_of("application"))

    def test_a_user_without_sudo_is_told_what_to_install(self):
        told = self.start("run", DISPLAY=":0", USER_ID="1000", INSTALLED="cmake")
        self.assertEqual(self.calls(), [])
        missing = " ".join(sorted(packages_of("application") - {"cmake"}))
        self.assertIn("apt-get install --no-install-recommends", told)
        self.assertIn(missing, told.replace("\n", " "))
        self.assertNotIn("cmake --preset", told)

    def test_a_failing_apt_ends_it_with_the_command_to_repeat(self):
        told = self.start("run", DISPLAY=":0", APT_RESULT="100")
        self.assertIn("could not be fetched. As root:\n  apt-get update", told)
        self.assertNotIn("cmake --preset", told)

    def test_who_may_not_write_here_is_told_so(self):
        os.remove(os.path.join(self.commands, "mkdir"))
        self.add_command("mkdir", "#!/bin/bash\nexit 1\n")
        told = self.start("run", DISPLAY=":0", INSTALLED=" ".join(packages_of("application")), USER_ID="ada")
        self.assertIn(f"ada may not write to {self.project}/build/release", told)
        self.assertNotIn("cmake --preset", told)

    def test_the_application_alone_is_built_without_tests_once_and_for_all_with_them(self):
        everything = {"DISPLAY": ":0", "INSTALLED": " ".join(packages_of("application"))}
        self.assertIn("-D BUILD_TESTING=OFF", self.start("run", **everything))
        folder = os.path.join(self.project, "build", "release")
        with open(os.path.join(folder, "CMakeCache.txt"), "w", encoding="utf-8") as file:
            file.write("//Build the testing tree.\nBUILD_TESTING:BOOL=ON\n")
        self.assertNotIn("BUILD_TESTING", self.start("run", **everything))


if __name__ == "__main__":
    unittest.main()
