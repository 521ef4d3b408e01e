"""The real program on a disk with a share that has stopped answering: the window goes on, and so does its end."""
import os
import unittest

from dunmere_window import DunmereWindow, starting_with
from end_to_end_test import BINARY, EndToEndTest, write_file


class DeadShareTest(EndToEndTest):
    needs = EndToEndTest.needs + ["fuse"]

    def setUp(self):
        super().setUp()
        write_file(os.path.join(self.disk, "Movies", "trailer.bin"), 50_000)
        write_file(os.path.join(self.disk, "note.txt"), 5_000)
        self.share = os.path.join(self.disk, "share")
        os.mkdir(self.share)
        os.symlink("share/below", os.path.join(self.disk, "link"))

    def start(self):
        self.window = DunmereWindow(self.session, BINARY, under=[os.environ["WITH_DEAD_SHARE"], self.share])
        self.window.wait_until_active()
        return self.window

    def test_the_window_goes_on_and_ends_beside_a_share_that_never_answers(self):
        window = self.start()
        window.sweep_folder(self.disk)
        self.assertCountEqual([name.split(",")[0] for name in window.rows("disk")],
                              ["Movies", "note.txt", "share", "link"])
        window.select("disk", "share")
        self.assertEqual(window.rows("share"), [])
        self.session.picture("share")
        self.ask_for_trash("share")
        window.wait_for_status("“share” couldn’t be moved to the trash because a volume is mounted in it.")
        window.select("disk", "link")
        window.select("disk", "Movies")
        self.assertEqual(window.rows("Movies"), ["trailer.bin, file, 53 KB"])
        window.press("Settings")
        window.press("Free Space")
        window.button("Open Folder…")
        self.close_and_check()

    def ask_for_trash(self, name):
        self.window.press("Move to Trash")
        question = self.session.see("dialog", f"Move “{name}” to Trash?")
        self.window.press("Move to Trash", inside=question)
        self.session.gone("dialog", starting_with("Move “"))


if __name__ == "__main__":
    unittest.main()
