"""Tests that every room includes only what it may, see the table in docs/design.md."""
import os
import re
import tempfile
import unittest

PROJECT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

# Angle brackets: the standard library's headers have neither a suffix nor a capital letter; Qt's begin with Q.
STANDARD = r"<[a-z_]+>"
SYSTEM = r"<[a-z][A-Za-z0-9_/.-]*>"
QT = r"<Q[A-Za-z0-9_/.]*>"

ENGINE_VALUES = '"engine/[a-z_]+.h"'
INTERFACES = '"sweeper/(main_thread|desktop).h"'
ANYWHERE = '"platform/[a-z_]+.h"'
SHARED = '"platform/(icu|posix)/'

# The most special folder first; each with the includes that it may have. Of two systems' folders neither
# knows the other, and what they share knows neither.
ROOMS = [
    ("engine/inventory/", [STANDARD, ENGINE_VALUES, '"engine/inventory/']),
    ("engine/scan/", [STANDARD, ENGINE_VALUES, '"engine/(inventory|scan)/']),
    ("engine/listing/", [STANDARD, ENGINE_VALUES, '"engine/(inventory|listing)/']),
    ("engine/volumes/", [STANDARD, ENGINE_VALUES, '"engine/volumes/']),
    ("engine/", [STANDARD, ENGINE_VALUES, '"engine/inventory/']),
    ("sweeper/view/", [STANDARD, QT, '"engine/', '"sweeper/', '"theme/']),
    ("sweeper/", [STANDARD, '"engine/', '"sweeper/(?!view/)']),
    ("platform/desktop/", [SYSTEM, QT, '"engine/', ANYWHERE, SHARED, '"platform/desktop/', INTERFACES]),
    ("platform/linux/desktop/", [SYSTEM, QT, '"engine/', ANYWHERE, SHARED, '"platform/(linux|desktop)/', INTERFACES]),
    ("platform/macos/desktop/", [SYSTEM, QT, '"engine/', ANYWHERE, SHARED, '"platform/(macos|desktop)/', INTERFACES]),
    ("platform/linux/", [SYSTEM, '"engine/', ANYWHERE, SHARED, '"platform/linux/(?!desktop/)', INTERFACES]),
    ("platform/macos/", [SYSTEM, '"engine/', ANYWHERE, SHARED, '"platform/macos/(?!desktop/)', INTERFACES]),
    ("platform/", [SYSTEM, '"engine/', ANYWHERE, SHARED, INTERFACES]),
    ("theme/", [STANDARD, QT, '"theme/']),
    ("shell/", [SYSTEM, QT, '"(engine|sweeper|platform|theme|shell)/']),
]


def includes(path):
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            match = INCLUDE.match(line)
            if match:
                bracket, header = match.groups()
                yield number, f"<{header}>" if bracket == "<" else f'"{header}"'


def sources(project):
    for room in ("engine", "sweeper", "platform", "theme", "shell"):
        for folder, _, names in os.walk(os.path.join(project, room)):
            for name in sorted(names):
                if name.endswith((".h", ".cpp", ".mm")):
                    yield os.path.relpath(os.path.join(folder, name), project)


def allowed(path):
    return next(patterns for room, patterns in ROOMS if path.startswith(room))


def violations(project):
    for path in sources(project):
        for number, header in includes(os.path.join(project, path)):
            if not any(re.match(pattern, header) for pattern in allowed(path)):
                yield f"{path}:{number}: {header}"


class RoomIncludesTest(unittest.TestCase):
    def test_every_room_includes_only_what_it_may(self):
        self.assertGreater(len(list(sources(PROJECT))), 20)
        self.assertEqual(list(violations(PROJECT)), [])

    def test_a_forbidden_include_is_found(self):
        forbidden = {
            "engine/inventory/a.h": ['"engine/scan/a.h"', '"engine/listing/a.h"', '"engine/volumes/a.h"'],
            "engine/scan/a.h": ['"engine/listing/a.h"', '"engine/volumes/a.h"'],
            "engine/listing/a.h": ['"engine/scan/a.h"', '"engine/volumes/a.h"'],
            "engine/volumes/a.h": ['"engine/inventory/a.h"', '"engine/scan/a.h"', '"engine/listing/a.h"'],
            "engine/a.h": ['"engine/scan/a.h"', '"engine/listing/a.h"', '"engine/volumes/a.h"'],
            "engine/a.cpp": ["<unistd.h>", "<QString>", "<sys/stat.h>", '"sweeper/desktop.h"', '"platform/a.h"'],
            "sweeper/a.h": ["<QObject>", '"platform/a.h"', '"sweeper/view/a.h"', '"shell/a.h"'],
            "sweeper/view/a.cpp": ['"platform/a.h"', '"shell/main.h"', "<unistd.h>"],
            "platform/posix/a.cpp": ["<QFile>", '"sweeper/disk_sweeper_pane.h"', '"shell/a.h"',
                                     '"platform/desktop/a.h"', '"platform/linux/a.h"'],
            "platform/linux/a.cpp": ['"platform/macos/a.h"', '"platform/linux/desktop/a.h"', "<QFile>"],
            "platform/macos/a.cpp": ['"platform/linux/a.h"'],
            "platform/linux/desktop/a.cpp": ['"platform/macos/a.h"', '"shell/a.h"'],
            "platform/desktop/a.cpp": ['"sweeper/view/a.h"', '"shell/a.h"', '"platform/linux/a.h"'],
            "theme/a.h": ['"shell/main.h"', '"engine/a.h"', '"sweeper/a.h"'],
            "shell/main.cpp": ['"tests/a.h"', '"bench/a.h"'],
        }
        with tempfile.TemporaryDirectory() as project:
            for path, headers in forbidden.items():
                os.makedirs(os.path.dirname(os.path.join(project, path)), exist_ok=True)
                with open(os.path.join(project, path), "w", encoding="utf-8") as file:
                    file.writelines(f"#include {header}\n" for header in ["<vector>", *headers])
            expected = {f"{path}:{number}: {header}" for path, headers in forbidden.items()
                        for number, header in enumerate(headers, 2)}
            self.assertEqual(set(violations(project)), expected)


if __name__ == "__main__":
    unittest.main()
