"""Tests that the application's bundle has what macOS looks for in it."""
import os
import plistlib
import struct
import unittest

import mach_o

CONTENTS = os.path.join(os.environ["BUNDLE"], "Contents")
ICON_SIZES = {b"icp4": 16, b"icp5": 32, b"ic07": 128, b"ic08": 256, b"ic09": 512, b"ic10": 1024, b"ic11": 32,
              b"ic12": 64, b"ic13": 256, b"ic14": 512}


def read(*path):
    with open(os.path.join(CONTENTS, *path), "rb") as file:
        return file.read()


def pictures(icon):
    """Type and size in pixels of each picture of an icns file."""
    kind, length = struct.unpack_from(">4sI", icon)
    assert kind == b"icns" and length == len(icon)
    offset = 8
    while offset < length:
        kind, size = struct.unpack_from(">4sI", icon, offset)
        assert icon[offset + 8:offset + 16] == b"\x89PNG\r\n\x1a\n"
        yield kind, struct.unpack_from(">2I", icon, offset + 24)
        offset += size


class BundleTest(unittest.TestCase):
    def setUp(self):
        self.info = plistlib.loads(read("Info.plist"))

    def test_is_named_for_people(self):
        self.assertEqual(os.path.basename(os.environ["BUNDLE"]), "Dunmere.app")
        self.assertEqual(self.info["CFBundleDisplayName"], "Dunmere")
        self.assertEqual(self.info["CFBundleShortVersionString"], os.environ["VERSION"])

    def test_names_a_program_that_starts_on_no_older_system_than_told(self):
        program = mach_o.MachO(read("MacOS", self.info["CFBundleExecutable"]))
        _, oldest = program.platform_and_oldest_version()
        self.assertEqual(self.info["LSMinimumSystemVersion"], ".".join(str(number) for number in oldest))

    def test_icon_has_every_size(self):
        icon = read("Resources", self.info["CFBundleIconFile"])
        self.assertEqual(dict(pictures(icon)), {kind: (size, size) for kind, size in ICON_SIZES.items()})

    def test_tells_why_it_reads_folders_that_the_system_guards(self):
        for place in ("DesktopFolder", "DocumentsFolder", "DownloadsFolder", "NetworkVolumes", "RemovableVolumes"):
            self.assertIn("Dunmere", self.info[f"NS{place}UsageDescription"])

    def test_every_value_is_filled_in(self):
        for value in self.info.values():
            self.assertNotEqual(value, "")
            self.assertNotIn("$", str(value))


if __name__ == "__main__":
    unittest.main()
