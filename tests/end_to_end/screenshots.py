"""Takes the pictures of docs/screenshots, on a desktop of its own; scripts/screenshots makes what they show.

usage: screenshots.py PROGRAM FOLDER
"""
import filecmp
import os
import shutil
import signal
import sys

from desktop_session import DesktopSession, wait_for
from dunmere_window import TEXT, DunmereWindow

HOME = "/home/ada"


class Photographer:
    def __init__(self, session, program, folder):
        self.session = session
        self.folder = folder
        self.window = DunmereWindow(session, program)
        self.frame = session.see("frame", "Dunmere")
        self.last = None

    def picture(self, name):
        """Taken when two in a row are the same: by then everything is drawn."""
        def unchanged():
            self.last, before = self.session.picture(name, self.frame), self.last
            return before and filecmp.cmp(before, self.last, shallow=False)

        self.last = None
        wait_for("the window to stand still", unchanged)
        shutil.copyfile(self.last, os.path.join(self.folder, name + ".png"))

    def sweep(self, folder):
        self.window.press("Drives…")
        self.window.sweep_folder(folder)

    def take_all(self):
        self.picker()
        self.running_sweep()
        self.finished_sweep()
        self.trash_question()
        self.read_errors()
        self.settings()

    def picker(self):
        self.session.click(self.session.see("list item", lambda name: name.startswith("home, ")))
        self.picture("picker")

    def running_sweep(self):
        """The program stands still while it is photographed, or the sweep would be over."""
        self.sweep(HOME)
        self.session.see(TEXT, lambda name: name.endswith(" GB scanned"))
        process = self.window.program.process
        process.send_signal(signal.SIGSTOP)
        try:
            self.picture("sweep-running")
        finally:
            process.send_signal(signal.SIGCONT)

    def finished_sweep(self):
        self.window.wait_for_end_of_sweep()
        self.window.select("ada", "Movies")
        self.window.select("Movies", "Holiday")
        self.window.select("Holiday", "Alps.mp4")
        self.window.wait_for_status(f"Alps.mp4 / {HOME}/Movies/Holiday")
        self.picture("sweep")

    def trash_question(self):
        self.window.press("Move to Trash")
        question = self.session.see("dialog", "Move “Alps.mp4” to Trash?")
        self.picture("trash-question")
        self.window.press("Cancel", inside=question)

    def read_errors(self):
        self.sweep("/home")
        self.window.wait_for_end_of_sweep()
        self.window.wait_for_status(lambda text: text.startswith("Some folders could not be read"))
        self.picture("read-errors")

    def settings(self):
        self.window.press("Settings")
        self.window.button("Open…")
        self.picture("settings")


def main():
    program, folder = sys.argv[1:]
    with DesktopSession(HOME, os.path.join(folder, "output")) as session:
        Photographer(session, program, folder).take_all()


if __name__ == "__main__":
    main()
