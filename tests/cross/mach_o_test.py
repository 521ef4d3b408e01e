"""Tests that the cross-built driver is what macOS would load: the right kind of file for the right processor and system,
and nothing asked of the system that is not meant to be."""
import os
import unittest

import mach_o

SYSTEM_CALLS = {"getattrlist", "getattrlistat", "getattrlistbulk", "clock_gettime_nsec_np", "pthread_set_qos_class_self_np",
                "setiopolicy_np", "objc_msgSend", "ucol_getSortKey_72"}


def plain(symbol):
    """Without the leading underscore of C, and the mark of the variant with 64-bit inode numbers."""
    return symbol.removeprefix("_").removesuffix("$INODE64")


class SweepOnceTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with open(os.environ["SWEEP_ONCE"], "rb") as file:
            cls.program = mach_o.MachO(file.read())

    def test_is_an_executable_for_the_processor(self):
        self.assertEqual(self.program.file_type, mach_o.EXECUTABLE)
        self.assertEqual(self.program.processor, os.environ["PROCESSOR"])
        self.assertTrue(self.program.has(mach_o.ENTRY_POINT))

    def test_is_for_macos_from_the_promised_version_on(self):
        self.assertEqual(self.program.platform_and_oldest_version(), (mach_o.MACOS, (13, 0)))

    def test_program_for_apples_processors_is_signed(self):
        # The system runs no program for them without a signature, be it one without a name.
        if self.program.processor == "arm64":
            self.assertTrue(self.program.has(mach_o.CODE_SIGNATURE))

    def test_loads_the_systems_libraries_and_icu_alone(self):
        self.assertEqual(sorted(self.program.libraries()), [
            "/System/Library/Frameworks/Foundation.framework/Versions/C/Foundation",
            "/usr/lib/libSystem.B.dylib", "/usr/lib/libobjc.A.dylib",
            "@rpath/libicui18n.72.dylib", "@rpath/libicuuc.72.dylib"])

    def test_asks_the_system_for_what_the_platform_layer_uses(self):
        imports = {plain(symbol) for symbol in self.program.imports()}
        self.assertEqual(SYSTEM_CALLS - imports, set())
        self.assertLessEqual({"getfsstat", "statfs"}, imports)


if __name__ == "__main__":
    unittest.main()
