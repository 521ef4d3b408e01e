"""Tests of the real program by those who do without a mouse or without seeing: keys in, the accessibility bus out.

Each test is one run of this file, see CMakeLists.txt.
"""
import os
import unittest

from desktop_session import wait_for
from dunmere_window import ROW, starting_with
from end_to_end_test import EndToEndTest, write_file

NAMELESS_ROLES = {"unknown", "invalid", "redundant object", ""}


class AccessibilityTest(EndToEndTest):
    def setUp(self):
        super().setUp()
        for number in range(40):
            write_file(os.path.join(self.disk, "Movies", f"film{number:02}.bin"), 1000 * (number + 1))
        write_file(os.path.join(self.disk, "Movies", "Holiday", "day.bin"), 100_000)
        write_file(os.path.join(self.disk, "Documents", "letter.txt"), 20_000)
        write_file(os.path.join(self.disk, "note.txt"), 5_000)

    # What a screen reader finds

    def test_everything_that_takes_the_keyboard_has_a_role_and_a_name(self):
        window = self.start()
        self.check_tree("picker", {"Free Space", "Settings", "Drives…", "Drives", "Open Folder…", "Sweep Selected Drive…"})
        window.sweep_folder(self.disk)
        window.wait_for_end_of_sweep()
        window.select("disk", "Movies")
        window.column("Movies")
        self.check_tree("browser", {"disk", "Movies", "Move to Trash", "Reveal", "Documents, folder, 20 KB"})
        window.press("Move to Trash")
        self.session.see("dialog", "Move “Movies” to Trash?")
        self.check_tree("question", {"Move “Movies” to Trash?", "Move to Trash", "Cancel"})
        self.assertEqual(len(self.session.all_seen("dialog", starting_with(""))), 1, "one question is one dialog")
        self.session.keys("Escape")
        self.session.gone("dialog", starting_with("Move “"))
        window.press("Settings")
        self.session.see("heading", "Full Disk Access")
        self.check_tree("settings", {"Settings", "Full Disk Access", "Open…"})
        self.close_and_check()

    def check_tree(self, screen, expected_names):
        things = self.session.whole_tree()
        for thing in things:
            if self.session.has_state(thing, "FOCUSABLE"):
                told = f"{screen}: {thing.get_role_name()} “{thing.get_name()}”"
                self.assertNotIn(thing.get_role_name(), NAMELESS_ROLES, told)
                self.assertNotEqual(thing.get_name(), "", told)
        shown = {thing.get_name() for thing in things if self.session.has_state(thing, "SHOWING")}
        self.assertLessEqual(expected_names, shown, screen)

    def test_rows_come_in_the_order_in_which_they_stand(self):
        window = self.start()
        window.sweep_folder(self.disk)
        window.wait_for_end_of_sweep()
        # The sweep has moved them: before it the only size known was that of note.txt.
        self.assertEqual([name.split(",")[0] for name in window.rows("disk")], ["Movies", "Documents", "note.txt"])
        self.session.keys("Down", "Right")
        self.session.wait_for_focus("Holiday, folder, 102 KB")
        self.check_order("Movies")
        self.session.keys("End")  # other rows, shown by the items of those that went out of sight
        self.session.wait_for_focus("film03.bin, file, 4 KB")
        self.check_order("Movies")
        self.session.keys("Page_Up", "Page_Up")
        self.check_order("Movies")
        self.close_and_check()

    def check_order(self, column):
        """Each row stands below the one before, and knows which one it is."""
        rows = self.session.all_seen(ROW, starting_with(""), self.window.column(column))
        self.assertGreater(len(rows), 10)
        places = [self.session.place(row).y for row in rows]
        self.assertEqual(places, sorted(places), [row.get_name() for row in rows])
        indices = [row.get_index_in_parent() for row in rows]
        self.assertEqual(indices, list(range(indices[0], indices[0] + len(rows))))

    # What it can do by itself

    def test_a_button_that_does_nothing_is_told_to_be_disabled(self):
        window = self.start()
        sweep = window.button("Sweep Selected Drive…")
        self.check_enabled(sweep, False)
        self.check_enabled(window.button("Open Folder…"), True)
        self.session.press_by_action(sweep)
        self.session.click(self.session.see(ROW, starting_with("Filesystem root, ")))
        self.check_enabled(sweep, True)
        window.sweep_folder(self.disk)
        trash = window.button("Move to Trash")
        self.check_enabled(trash, True)
        self.session.press_by_action(trash)
        self.session.see("dialog", "Move “disk” to Trash?")
        self.session.press_by_action(window.button("Cancel"))
        self.session.gone("dialog", starting_with("Move “"))
        self.close_and_check()

    def check_enabled(self, button, expected):
        def as_expected():
            button.clear_cache()
            return {self.session.has_state(button, state) for state in ("ENABLED", "SENSITIVE")} == {expected}
        wait_for(f"{button.get_name()} to be told {'enabled' if expected else 'disabled'}", as_expected)

    def test_a_button_that_becomes_enabled_tells_so(self):
        self.start()
        drive = self.session.see(ROW, starting_with("Filesystem root, "))
        self.session.wait_for_news("object:state-changed:enabled", lambda: self.session.click(drive),
                                   ("Sweep Selected Drive…", 1))
        self.close_and_check()

    def test_the_sidebar_is_made_wider_without_a_pointer(self):
        self.start()
        self.session.keys("Tab")
        self.session.wait_for_focus("Free Space")
        before = self.session.place(self.window.button("Drives…")).width
        self.session.keys("F8")
        edge = self.session.wait_for_focus("Width of the sidebar")
        self.assertEqual(edge.get_role_name(), "split pane")
        value = edge.get_value_iface()
        self.assertEqual((value.get_minimum_value(), value.get_current_value(), value.get_maximum_value()), (200, 220, 260))
        self.session.keys("Right", "Right")
        wait_for("the keys to move it", lambda: value.get_current_value() == 240)
        self.session.picture("focus-on-the-edge")
        value.set_current_value(1000)
        wait_for("it to move to its bound", lambda: value.get_current_value() == 260)
        wait_for("the sidebar to follow", lambda: self.session.place(self.window.button("Drives…")).width == before + 40)
        self.session.keys("F8")
        self.session.wait_for_focus("Free Space")
        self.close_and_check()

    # A whole sweep by keys

    def test_a_file_goes_to_the_trash_by_keys_alone(self):
        window = self.start()
        film = os.path.join(self.disk, "Movies", "film39.bin")
        for name in ("Free Space", "Settings", "Drives…"):
            self.session.keys("Tab")
            self.session.wait_for_focus(name)
        self.session.keys("Tab", "Down")
        self.session.wait_for_focus(starting_with("Filesystem root, "))
        self.session.keys("Tab")
        self.session.wait_for_focus("Open Folder…")
        self.session.picture("focus-on-a-button")
        self.session.keys("space")
        self.session.see("dialog", starting_with("Choose a folder to sweep"))
        self.session.type(self.disk)
        self.session.keys("Return")
        self.session.gone("dialog", starting_with("Choose a folder to sweep"))

        self.session.wait_for_focus("disk")
        window.wait_for_end_of_sweep()
        self.session.picture("focus-on-a-column")
        self.session.keys("Down")
        self.session.wait_for_focus("Movies, folder, 1 MB")
        window.column("Movies")
        self.session.keys("Right")
        self.session.wait_for_focus("Holiday, folder, 102 KB")
        self.session.type("film39")
        self.session.wait_for_focus("film39.bin, file, 41 KB")
        self.session.picture("focus-on-a-row")
        self.session.keys("Tab")
        self.session.wait_for_focus("Move to Trash")
        self.ask("film39.bin")
        self.session.keys("Return", "KP_Enter")
        self.session.keys("Escape")
        self.session.gone("dialog", starting_with("Move “"))
        self.assertTrue(os.path.exists(film))

        self.session.wait_for_focus("Move to Trash")
        question = self.ask("film39.bin")
        self.session.keys("Tab")
        wait_for("the focus in the question", lambda: self.session.has_focus(window.button("Move to Trash", question)))
        self.session.picture("focus-in-the-question")
        self.session.keys("Return")
        self.assertTrue(os.path.exists(film))
        self.session.keys("space")
        self.session.gone("dialog", starting_with("Move “"))
        wait_for("the file to leave its folder", lambda: not os.path.exists(film))
        trashed = os.path.join(self.home, ".local", "share", "Trash", "files")
        self.assertEqual(os.listdir(trashed), ["film39.bin"])
        self.close_and_check()

    def ask(self, name):
        self.session.keys("space")
        return self.session.see("dialog", f"Move “{name}” to Trash?")


class HostileNamesTest(EndToEndTest):
    # Bytes, what is shown of them, and a size of its own. Two of them look alike where nothing is made visible.
    NAMES = [
        (b"<b>bold<br> &amp; <img src=x>.txt", "<b>bold<br> &amp; <img src=x>.txt", 90_000),
        ("invoice\u202efdp.exe".encode(), "invoice[U+202E]fdp.exe", 80_000),
        (b"two\nlines\tand a bell\a.txt", "two[U+000A]lines[U+0009]and a bell[U+0007].txt", 70_000),
        ("my\u00a0letter.txt".encode(), "my\u2423letter.txt", 60_000),
        (b"my letter.txt", "my letter.txt", 50_000),
        ("wide\u3000and\u200bnarrow.txt".encode(), "wide\u2423and[U+200B]narrow.txt", 40_000),
        ("\u05e9\u05dc\u05d5\u05dd.txt".encode(), "\u2066\u05e9\u05dc\u05d5\u05dd.txt\u2069", 30_000),
        (b"bad\xff\xfe.bin", "bad\N{REPLACEMENT CHARACTER}\N{REPLACEMENT CHARACTER}.bin", 20_000),
    ]

    def setUp(self):
        super().setUp()
        for name, _, size in self.NAMES:
            write_file(os.path.join(os.fsencode(self.disk), name), size)

    def test_names_are_shown_harmlessly_and_acted_on_by_their_bytes(self):
        window = self.start()
        window.sweep_folder(self.disk)
        window.wait_for_end_of_sweep()
        self.assertEqual([row.rsplit(", file, ", 1)[0] for row in window.rows("disk")],
                         [shown for _, shown, _ in self.NAMES])
        self.session.picture("names")
        left = {name for name, _, _ in self.NAMES}
        for name, shown, _ in self.NAMES:
            window.select("disk", shown)
            window.wait_for_status(f"{shown} / {self.disk}")
            window.press("Move to Trash")
            question = self.session.see("dialog", f"Move “{shown}” to Trash?")
            self.session.picture("question")
            window.press("Move to Trash", inside=question)
            self.session.gone("dialog", starting_with("Move “"))
            left.remove(name)
            wait_for("this file and no other to leave", lambda: set(os.listdir(os.fsencode(self.disk))) == left)
        self.close_and_check()


if __name__ == "__main__":
    unittest.main()
