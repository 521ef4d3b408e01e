"""Tests of the Debian package that make_package.py has made and unpacked, see CMakeLists.txt."""
import gzip
import json
import os
import re
import struct
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

WORK = os.environ["PACKAGE_WORK"]
PACKAGE = os.path.join(WORK, "package.deb")
TREE = os.path.join(WORK, "tree")
PROJECT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))

COMPONENT = "org.example.dunmere"
FILES = {
    "usr/bin/dunmere",
    "usr/share/applications/dunmere.desktop",
    "usr/share/doc/dunmere/changelog.gz",
    "usr/share/doc/dunmere/copyright",
    "usr/share/icons/hicolor/128x128/apps/dunmere.png",
    "usr/share/icons/hicolor/scalable/apps/dunmere.svg",
    "usr/share/icons/hicolor/symbolic/apps/dunmere-symbolic.svg",
    "usr/share/man/man1/dunmere.1.gz",
    f"usr/share/metainfo/{COMPONENT}.metainfo.xml",
}


def files_below(folder):
    return {os.path.relpath(os.path.join(place, name), folder)
            for place, _, names in os.walk(folder) for name in names}


def png_size(path):
    with open(path, "rb") as file:
        head = file.read(24)
    assert head[:8] == b"\x89PNG\r\n\x1a\n", path
    return struct.unpack(">II", head[16:24])


def field(name):
    """One field of the package's control file."""
    return subprocess.run(["dpkg-deb", "--field", PACKAGE, name], check=True, stdout=subprocess.PIPE,
                          text=True).stdout.strip()


def names_in(relation):
    """The packages that such a field names, without versions."""
    return {re.match(r"\S+", part).group() for part in field(relation).split(", ")}


class PackageTest(unittest.TestCase):
    maxDiff = None

    def assertIsQuiet(self, *command):
        """The command succeeds and finds nothing worth a word."""
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def metainfo(self):
        return xml.etree.ElementTree.parse(os.path.join(TREE, f"usr/share/metainfo/{COMPONENT}.metainfo.xml")).getroot()

    def test_desktop_file_is_valid(self):
        self.assertIsQuiet("desktop-file-validate", "--warn-kde", os.path.join(TREE, "usr/share/applications/dunmere.desktop"))

    def test_metainfo_is_valid(self):
        # The whole tree, so that the desktop file that the metainfo names is looked for too.
        done = subprocess.run(["appstreamcli", "validate-tree", "--no-net", "--strict", TREE], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        # Debian 12's does not know this tag yet; later ones insist on it.
        complaints = [line for line in re.findall(r"(?m)^ *[EWI]: .*$", done.stdout)
                      if not line.endswith(": unknown-tag developer")]
        self.assertEqual(complaints, [])
        self.assertRegex(done.stdout, "Validation (was successful|failed: infos: 1$)")

    def test_lintian_has_nothing_to_say(self):
        self.assertIsQuiet("lintian", "--allow-root", "--fail-on", "error,warning", PACKAGE)

    def test_holds_what_a_desktop_needs_and_nothing_else(self):
        self.assertEqual(files_below(TREE), FILES)
        self.assertEqual(png_size(os.path.join(TREE, "usr/share/icons/hicolor/128x128/apps/dunmere.png")), (128, 128))

    def test_everyone_may_use_what_it_installs(self):
        contents = subprocess.run(["dpkg-deb", "--contents", PACKAGE], check=True, stdout=subprocess.PIPE, text=True)
        rights = {line.split()[0] for line in contents.stdout.splitlines()}
        self.assertEqual(rights, {"drwxr-xr-x", "-rwxr-xr-x", "-rw-r--r--"}, contents.stdout)

    def test_is_what_cmake_installs(self):
        with tempfile.TemporaryDirectory() as prefix:
            subprocess.run([os.environ["CMAKE_COMMAND"], "--install", os.environ["BUILD"], "--prefix", prefix],
                           check=True, stdout=subprocess.DEVNULL)
            self.assertEqual({"usr/" + name for name in files_below(prefix)}, FILES)

    def test_depends_on_every_qml_module_that_a_view_imports(self):
        roots = [os.path.join(PROJECT, room) for room in ("shell", "sweeper/view", "theme")]
        qml = subprocess.run(["qmake6", "-query", "QT_INSTALL_QML"], check=True, stdout=subprocess.PIPE,
                             text=True).stdout.strip()
        scan = subprocess.run([os.environ["QML_IMPORT_SCANNER"], *sum([["-rootPath", root] for root in roots], []),
                               "-importPath", qml], check=True, stdout=subprocess.PIPE, text=True)
        modules = [module["path"] for module in json.loads(scan.stdout) if "path" in module]
        owners = subprocess.run(["dpkg-query", "--search", *[os.path.join(path, "qmldir") for path in modules]],
                                check=True, stdout=subprocess.PIPE, text=True)
        wanted = {line.split(":")[0] for line in owners.stdout.splitlines()}
        self.assertIn("qml6-module-qtquick", wanted)
        self.assertEqual({name for name in names_in("Depends") if name.startswith("qml6-")}, wanted)

    def test_scripts_install_what_the_package_asks_for(self):
        with open(os.path.join(PROJECT, "scripts", "packages", "application"), encoding="utf-8") as file:
            installed = {line.strip() for line in file if not line.startswith("#")}
        wanted = {name for name in names_in("Depends") if name.startswith("qml6-")} | names_in("Recommends")
        self.assertIn("qt6-wayland", wanted)
        # On Debian 13 alone, where qt6-declarative-dev brings it.
        self.assertLessEqual(wanted - {"qml6-module-qml"}, installed)

    def test_metainfo_tells_this_release_and_existing_pictures(self):
        release = self.metainfo().find("releases/release")
        self.assertEqual(release.get("version"), os.environ["VERSION"])
        with gzip.open(os.path.join(TREE, "usr/share/doc/dunmere/changelog.gz"), "rt", encoding="utf-8") as file:
            changelog = file.read()
        self.assertTrue(changelog.startswith(f"dunmere ({field('Version')}) "), changelog)
        date = subprocess.run(["date", "--utc", "+%F", "--date", re.search("^ -- .*>  (.*)$", changelog, re.M).group(1)],
                              check=True, stdout=subprocess.PIPE, text=True).stdout.strip()
        self.assertEqual(release.get("date"), date)

        images = self.metainfo().findall("screenshots/screenshot/image")
        self.assertGreater(len(images), 1)
        for image in images:
            picture = os.path.join(PROJECT, "docs", "screenshots", os.path.basename(image.text))
            self.assertEqual(png_size(picture), (int(image.get("width")), int(image.get("height"))), picture)

    def test_symbolic_icon_has_one_colour(self):
        with open(os.path.join(TREE, "usr/share/icons/hicolor/symbolic/apps/dunmere-symbolic.svg"),
                  encoding="utf-8") as file:
            icon = file.read()
        self.assertEqual(len(re.findall(r'fill="#[0-9a-f]{6}"', icon)), 1)
        # Desktops recolour what is filled, and nothing that is stroked or half transparent.
        self.assertNotRegex(icon, "stroke|opacity|style|gradient")


if __name__ == "__main__":
    unittest.main()
