"""Tests that the packaged program is built as cmake/DunmereHardening.cmake says; see package_test.py."""
import os
import re
import subprocess
import unittest

PROGRAM = os.path.join(os.environ["PACKAGE_WORK"], "tree", "usr", "bin", "dunmere")


def readelf(*options):
    return subprocess.run(["readelf", "--wide", *options, PROGRAM], check=True, stdout=subprocess.PIPE, text=True).stdout


def instructions():
    """The bytes of the program's own code."""
    address, offset, size = re.search(r"\.text +PROGBITS +(\w+) (\w+) (\w+)", readelf("--sections")).groups()
    with open(PROGRAM, "rb") as file:
        file.seek(int(offset, 16))
        return file.read(int(size, 16))


class HardeningTest(unittest.TestCase):
    def assertImports(self, function):
        self.assertRegex(readelf("--dyn-syms"), rf"(?m) UND {function}@")

    def test_is_position_independent(self):
        self.assertRegex(readelf("--file-header"), r"Type: +DYN")
        self.assertRegex(readelf("--dynamic"), r"FLAGS_1.*\bPIE\b")

    def test_tables_of_functions_are_read_only_from_the_start(self):
        self.assertRegex(readelf("--program-headers"), r"GNU_RELRO")
        self.assertRegex(readelf("--dynamic"), r"FLAGS_1.*\bNOW\b")

    def test_nothing_is_writable_and_executable(self):
        flags = re.findall(r"(?m)^ +(LOAD|GNU_STACK) +(?:0x\w+ +){5}([RWE ]{3})", readelf("--program-headers"))
        self.assertIn(("GNU_STACK", "RW "), flags)
        self.assertGreater(len(flags), 3)
        self.assertEqual([flag for _, flag in flags if "W" in flag and "E" in flag], [])

    def test_overrun_arrays_are_noticed(self):
        self.assertImports("__stack_chk_fail")

    def test_calls_of_the_c_library_check_buffers(self):
        self.assertImports(r"__\w+_chk")

    def test_the_standard_library_checks_its_callers(self):
        self.assertImports(r"_ZSt21__glibcxx_assert_failPKciS0_S0_")

    def test_jumps_land_where_they_may_and_large_frames_touch_each_page(self):
        """Told by the instructions of the x86-64."""
        code = instructions()
        self.assertGreater(code.count(bytes.fromhex("f30f1efa")), 1000, "endbr64")
        self.assertGreater(code.count(bytes.fromhex("48830c2400")), 0, "orq $0, (%rsp)")


if __name__ == "__main__":
    unittest.main()
