"""Tests of the real program on a desktop of its own, through nothing but what a user sees and does.

Each test is one run of this file, see CMakeLists.txt. The pictures that a test takes stay in its output folder.
"""
import glob
import itertools
import json
import os
import shutil
import subprocess
import tempfile
import time
import unittest
import urllib.parse
from random import Random

from desktop_session import DesktopSession, wait_for
from dunmere_window import TEXT, DunmereWindow, starting_with

BINARY = os.environ["DUNMERE"]
MAKE_TREE = os.environ["MAKE_TREE"]
WORK = os.environ["END_TO_END_WORK"]

ODD_NAME = b"caf\xe9 100% #1;?.bin"  # Latin-1: not UTF-8, and full of what a URI must escape
ODD_NAME_SHOWN = "caf\N{REPLACEMENT CHARACTER} 100% #1;?.bin"


def write_file(path, size):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(os.urandom(size))


class EndToEndTest(unittest.TestCase):
    needs = ["display"]  # features of the machine, as tests/support/machine.h names them

    def setUp(self):
        refusal = subprocess.run([os.environ["ASK_MACHINE"], *self.needs], check=True, stdout=subprocess.PIPE, text=True)
        if refusal.stdout:
            self.skipTest(refusal.stdout.strip())
        self.work = os.path.join(WORK, self._testMethodName)
        shutil.rmtree(self.work, ignore_errors=True)
        self.disk = os.path.join(self.work, "disk")
        self.output = os.path.join(self.work, "output")
        self.home = os.path.join(self.work, "home")
        self.session = self.enterContext(DesktopSession(self.home, self.output))

    def enterContext(self, manager):  # unittest has its own from Python 3.11 on
        value = manager.__enter__()
        self.addCleanup(manager.__exit__, None, None, None)
        return value

    def start(self):
        self.window = DunmereWindow(self.session, BINARY)
        self.window.wait_until_active()
        return self.window

    def close_and_check(self):
        """Closes the window; the program must end well and have had nothing to complain about."""
        self.window.close()
        self.assertEqual(self.window.wait_for_exit(), 0)
        self.assertEqual(self.window.complaints(), [])


class SweepTest(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.odd_file = os.path.join(os.fsencode(self.disk), b"Movies", b"Holiday", ODD_NAME)
        write_file(self.odd_file, 300_000)
        write_file(os.path.join(self.disk, "Movies", "Holiday", "other.bin"), 100_000)
        write_file(os.path.join(self.disk, "Movies", "trailer.bin"), 50_000)
        write_file(os.path.join(self.disk, "Documents", "letter.txt"), 20_000)
        write_file(os.path.join(self.disk, "note.txt"), 5_000)

    def sweep_and_open_two_levels(self):
        self.session.picture("drives")
        self.window.sweep_folder(self.disk, picture_of_chooser="chooser")
        self.window.wait_for_end_of_sweep()
        self.session.picture("swept")
        self.window.select("disk", "Movies")
        self.window.select("Movies", "Holiday")
        self.window.column("Holiday")

    def test_sweeps_a_chosen_folder_and_opens_two_levels(self):
        self.start()
        self.sweep_and_open_two_levels()
        self.session.picture("opened")
        sizes = {"Movies": "459 KB", "Documents": "20 KB", "note.txt": "8 KB"}
        self.assertEqual(self.window.rows("disk"),
                         [f"Movies, folder, {sizes['Movies']}", f"Documents, folder, {sizes['Documents']}",
                          f"note.txt, file, {sizes['note.txt']}"])
        self.assertEqual([name.split(", ")[:2] for name in self.window.rows("Movies")],
                         [["Holiday", "folder"], ["trailer.bin", "file"]])
        self.assertEqual([name.split(", ")[:2] for name in self.window.rows("Holiday")],
                         [[ODD_NAME_SHOWN, "file"], ["other.bin", "file"]])
        self.window.wait_for_status(f"Holiday / {self.disk}/Movies")
        self.close_and_check()

    def test_moves_a_file_to_the_trash_after_asking(self):
        self.start()
        self.sweep_and_open_two_levels()
        self.window.select("Holiday", ODD_NAME_SHOWN)
        self.ask_for_trash_and_press("Cancel")
        self.assertTrue(os.path.exists(self.odd_file))
        self.assertFalse(os.path.exists(self.trash("files")))

        self.ask_for_trash_and_press("Move to Trash", picture="question")
        wait_for("the file to leave its folder", lambda: not os.path.lexists(self.odd_file))
        wait_for("the row to go", lambda: self.window.rows("Holiday") == ["other.bin, file, 102 KB"])
        self.session.picture("trashed")
        self.check_trash()
        self.close_and_check()

    def ask_for_trash_and_press(self, answer, picture=None):
        self.window.press("Move to Trash")
        question = self.session.see("dialog", f"Move “{ODD_NAME_SHOWN}” to Trash?")
        if picture:
            self.session.picture(picture)
        self.window.press(answer, inside=question)
        self.session.gone("dialog", starting_with("Move “"))

    def trash(self, kind):
        return os.path.join(self.home, ".local", "share", "Trash", kind)

    def check_trash(self):
        self.assertEqual(os.listdir(os.fsencode(self.trash("files"))), [ODD_NAME])
        self.assertEqual(os.path.getsize(os.path.join(os.fsencode(self.trash("files")), ODD_NAME)), 300_000)
        self.assertEqual(os.listdir(os.fsencode(self.trash("info"))), [ODD_NAME + b".trashinfo"])
        with open(os.path.join(os.fsencode(self.trash("info")), ODD_NAME + b".trashinfo"), encoding="ascii") as file:
            lines = file.read().splitlines()
        self.assertEqual(lines[0], "[Trash Info]")
        values = dict(line.split("=", 1) for line in lines[1:])
        self.assertEqual(urllib.parse.unquote_to_bytes(values["Path"]), self.odd_file)
        self.assertRegex(values["DeletionDate"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$")

    def start_file_manager(self):
        """Returns the path of the file that it notes its calls in."""
        calls = os.path.join(self.output, "file-manager-calls")
        manager = self.session.start("file-manager", ["/usr/bin/python3", os.path.join(
            os.path.dirname(os.path.realpath(__file__)), "fake_file_manager.py"), calls])
        wait_for("the file manager to be there", lambda: manager.output() == "ready\n")
        return calls

    def test_reveals_the_selected_file_by_its_exact_bytes(self):
        calls = self.start_file_manager()
        self.start()
        self.sweep_and_open_two_levels()
        self.window.select("Holiday", ODD_NAME_SHOWN)
        self.window.wait_for_status(f"{ODD_NAME_SHOWN} / {self.disk}/Movies/Holiday")
        self.window.press("Reveal")
        wait_for("the call of the file manager", lambda: os.path.exists(calls) and os.path.getsize(calls))
        self.session.picture("revealed")
        self.close_and_check()
        with open(calls, encoding="utf-8") as file:
            made = [json.loads(line) for line in file]
        self.assertEqual([call["method"] for call in made], ["ShowItems"])
        self.assertEqual(len(made[0]["uris"]), 1)
        uri = made[0]["uris"][0]
        self.assertTrue(uri.startswith("file:///"), uri)
        self.assertTrue(uri.isascii(), uri)
        self.assertNotRegex(uri, r"[ #?;]")
        self.assertEqual(urllib.parse.unquote_to_bytes(uri.removeprefix("file://")), self.odd_file)

    def test_settings_and_drives_lead_back_to_the_drives(self):
        window = self.start()
        self.sweep_and_open_two_levels()
        window.press("Settings")
        self.session.gone("list", "Holiday")
        self.session.picture("settings")
        window.press("Free Space")
        window.button("Open Folder…")
        self.assertEqual(window.columns(), [])

        window.sweep_folder(self.disk)
        window.column("disk")
        window.press("Drives…")
        window.button("Open Folder…")
        self.assertEqual(window.columns(), [])
        self.close_and_check()


class LargeFontTest(EndToEndTest):
    """A desktop whose font is large. Sizes are described in points and do not follow it; its family does."""

    def setUp(self):
        super().setUp()
        write_file(os.path.join(self.disk, "Movies", "a name that is much too long for the row that shows it.bin"), 1)
        configuration = os.path.join(self.home, ".config")
        os.makedirs(configuration)
        with open(os.path.join(configuration, "kdeglobals"), "w", encoding="ascii") as file:
            file.write("[General]\nfont=DejaVu Serif,24\nfixed=DejaVu Sans Mono,24\n")
        self.session.environment.update(XDG_CURRENT_DESKTOP="KDE", KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5")

    def boxes(self):
        """What shows something on the window: the rectangle on the screen of each, by name."""
        boxes = {}
        for role in ("button", "label", "list item", "heading"):
            for thing in self.session.all_seen(role, lambda name: name):
                box = self.session.place(thing)
                boxes[thing.get_name()] = (box.x, box.y, box.x + box.width, box.y + box.height)
        return boxes

    def check_that_nothing_overlaps(self, picture):
        self.session.picture(picture)
        window = self.session.place(self.session.see("frame", "Dunmere"))
        boxes = self.boxes()
        self.assertGreater(len(boxes), 4)
        for name, (left, top, right, bottom) in boxes.items():
            self.assertTrue(window.x <= left < right <= window.x + window.width, (name, left, right))
            self.assertTrue(window.y <= top < bottom <= window.y + window.height, (name, top, bottom))
        for one, other in itertools.combinations(boxes, 2):
            (left, top, right, bottom), (x, y, x_end, y_end) = boxes[one], boxes[other]
            self.assertFalse(left < x_end and x < right and top < y_end and y < bottom, (one, other))

    def test_nothing_overlaps_or_leaves_the_window(self):
        window = self.start()
        self.check_that_nothing_overlaps("drives")
        window.sweep_folder(self.disk)
        window.wait_for_end_of_sweep()
        window.select("disk", "Movies")
        window.column("Movies")
        self.check_that_nothing_overlaps("sweep")
        window.press("Settings")
        window.button("Open…")
        self.check_that_nothing_overlaps("settings")
        self.close_and_check()


class PaintingTest(EndToEndTest):
    def test_opengl_is_not_emulated(self):
        """Where no graphics processor is, Qt paints by itself."""
        window = self.start()
        self.session.picture("painted")
        with open(f"/proc/{window.program.process.pid}/maps", encoding="utf-8", errors="replace") as maps:
            drivers = {line.split("/")[-1].strip() for line in maps if "_dri.so" in line or "libGLX_nvidia" in line}
        has_processor = bool(glob.glob("/dev/dri/renderD*")) or os.path.exists("/dev/nvidiactl")
        self.assertEqual(bool(drivers), has_processor, drivers)
        self.close_and_check()


class MenuTest(EndToEndTest):
    def setUp(self):
        self.installed = tempfile.mkdtemp(prefix="dunmere-installed-")
        self.addCleanup(shutil.rmtree, self.installed)
        subprocess.run([os.environ["CMAKE_COMMAND"], "--install", os.environ["BUILD"], "--prefix", self.installed],
                       check=True, stdout=subprocess.DEVNULL)
        # The icon theme that every icon belongs to is the desktop's.
        os.environ["XDG_DATA_DIRS"] = os.path.join(self.installed, "share") + os.pathsep + "/usr/share"
        os.environ["PATH"] = os.path.join(self.installed, "bin") + os.pathsep + os.environ["PATH"]
        super().setUp()

    def test_the_menu_finds_the_program_by_name_and_knows_its_window(self):
        from gi.repository import Gio  # only now: it reads the environment when it is loaded
        self.assertEqual(Gio.DesktopAppInfo.search("dunmere"), [["dunmere.desktop"]])
        entry = Gio.DesktopAppInfo.new("dunmere.desktop")
        self.assertEqual(entry.get_display_name(), "Dunmere")
        self.assertTrue(entry.should_show())
        self.check_icons(entry.get_icon().to_string())

        self.window = DunmereWindow(self.session, shutil.which(entry.get_executable()))
        self.window.wait_until_active()
        # What a desktop goes by to show the window under the entry's name and icon.
        properties = self.session.properties_of_active_window()
        self.assertEqual(properties["WM_CLASS"], f'"{entry.get_startup_wm_class()}", "{entry.get_startup_wm_class()}"')
        self.assertEqual(properties["_NET_WM_NAME"], f'"{entry.get_display_name()}"')
        self.assertIn("_NET_WM_ICON", properties)
        self.close_and_check()

    def check_icons(self, name):
        import gi
        gi.require_version("Gtk", "3.0")
        from gi.repository import Gtk
        theme = Gtk.IconTheme.get_default()
        icons = os.path.join(self.installed, "share", "icons", "hicolor")
        for icon, size, file in ((name, 32, "scalable/apps/dunmere.svg"), (name, 128, "128x128/apps/dunmere.png"),
                                 (name + "-symbolic", 16, "symbolic/apps/dunmere-symbolic.svg")):
            found = theme.lookup_icon(icon, size, 0)
            self.assertEqual(found and found.get_filename(), os.path.join(icons, file))


class LongColumnTest(EndToEndTest):
    def test_a_click_in_a_scrolled_column_means_the_row_under_the_pointer(self):
        for number in range(200):
            write_file(os.path.join(self.disk, f"file{number:03}.bin"), 4096 * (200 - number))
        self.start()
        self.window.sweep_folder(self.disk)
        self.window.wait_for_end_of_sweep()
        self.session.scroll_down(self.window.column("disk"), 20)
        clicked = wait_for("the column to scroll and stop", self.names_at_rest)[5]
        self.assertGreater(clicked, "file020.bin")
        self.window.select("disk", clicked)
        self.window.wait_for_status(f"{clicked} / {self.disk}")
        self.session.picture("scrolled")
        self.assertIn(clicked, self.names_on_screen())
        self.close_and_check()

    def names_at_rest(self):
        """None while the column still scrolls, or has not begun to."""
        before = self.names_on_screen()
        time.sleep(0.2)
        return before if before == self.names_on_screen() and "file000.bin" not in before else None

    def names_on_screen(self):
        return [row.split(", ")[0] for row in self.window.rows("disk")]


class CloseTest(EndToEndTest):
    ROUNDS = 5

    def setUp(self):
        super().setUp()
        # The wide root folder makes every snapshot long to show, so that the sweep takes seconds and not a moment.
        subprocess.run([MAKE_TREE, self.disk, "--files", "200000", "--folders", "3", "--size", "0"], check=True)

    def close_and_time(self):
        """Closes the window; returns the milliseconds from the closing key to the end of the process."""
        self.window.close()
        asked = time.monotonic()
        self.assertEqual(self.window.wait_for_exit(), 0)
        self.assertEqual(self.window.complaints(), [])
        return (time.monotonic() - asked) * 1000

    def test_closing_the_window_ends_the_program_during_a_sweep(self):
        window = self.start()
        window.sweep_folder(self.disk)
        self.session.see(TEXT, lambda name: name.endswith(" scanned"))
        print(f"\nfrom the closing key to the end of the process: {self.close_and_time():.0f} ms", flush=True)

    def test_closing_at_any_moment_ends_the_program_well(self):
        seed = int(os.environ.get("DUNMERE_TEST_SEED", time.time_ns()))
        print(f"\nseed {seed} (DUNMERE_TEST_SEED={seed} repeats it)", flush=True)
        random = Random(seed)
        for _ in range(self.ROUNDS):
            window = self.start()
            window.sweep_folder(self.disk)
            on_the_way = random.choice([[], ["Drives…"], ["Settings"], ["Settings", "Free Space"]])
            for button in on_the_way:
                time.sleep(random.uniform(0, 0.3))
                window.press(button)
            if on_the_way in (["Drives…"], ["Settings", "Free Space"]) and random.random() < 0.5:
                window.sweep_folder(self.disk)
                on_the_way.append("another sweep")
            time.sleep(random.uniform(0, 1))
            print(f"a sweep, {on_the_way}, closed: ended after {self.close_and_time():.0f} ms", flush=True)


if __name__ == "__main__":
    unittest.main()
