"""The application's window as its user knows it: what stands where, and how a sweep is made."""
import os
import time

from desktop_session import wait_for

BUTTON = "button"
TEXT = "label"
ROW = "list item"


def starting_with(beginning):
    """a name that begins with …"""
    def matches(name):
        return name.startswith(beginning)
    matches.__doc__ = f"beginning with “{beginning}”"
    return matches


class DunmereWindow:
    def __init__(self, session, binary, under=()):
        """`under` is the command of a program that starts and watches it."""
        self.session = session
        self.choosing = []  # from when to when the folder chooser was open
        self.program = session.start("dunmere", [*under, binary])

    def wait_until_active(self):
        """Until it has its place on the screen, and the keyboard."""
        frame = self.session.see("frame", "Dunmere")

        def is_active():
            frame.clear_cache()
            return self.session.has_state(frame, "ACTIVE")

        wait_for("the window to become active", is_active)
        self.button("Open Folder…")

    def button(self, name, inside=None):
        return self.session.see(BUTTON, name, inside)

    def press(self, name, inside=None):
        self.session.click(self.button(name, inside))

    def sweep_folder(self, folder, picture_of_chooser=None):
        """Chooses the folder in the folder chooser, as one does who knows its path."""
        begin = time.time()
        self.press("Open Folder…")
        chooser = self.session.see("dialog", starting_with("Choose a folder to sweep"))
        self.session.click(self.session.see("text", starting_with(""), inside=chooser))
        self.session.keys("ctrl+a")
        self.session.type(os.fspath(folder))
        if picture_of_chooser:
            self.session.picture(picture_of_chooser)
        self.session.keys("Return")
        self.session.gone("dialog", starting_with("Choose a folder to sweep"))
        self.choosing.append((begin, time.time()))

    def columns(self):
        """The lists of the browser from left to right."""
        return self.session.all_seen("list", lambda name: name != "Drives")

    def column(self, folder_name):
        return self.session.see("list", folder_name)

    def rows(self, folder_name):
        """Names of the rows of one column, top to bottom."""
        rows = self.session.all_seen(ROW, lambda _: True, self.column(folder_name))
        return [row.get_name() for row in rows]

    def row(self, folder_name, name):
        return self.session.see(ROW, starting_with(name + ","), self.column(folder_name))

    def select(self, folder_name, name):
        self.session.click(self.row(folder_name, name))

    def wait_for_end_of_sweep(self):
        """The strip with the progress goes away when the sweep is complete."""
        self.session.gone(TEXT, lambda name: name.endswith(" scanned") or name in ("Starting…", "Indexing…"))

    def wait_for_status(self, text):
        return self.session.see(TEXT, text)

    def complaints(self):
        """The lines that the program has printed, but for those of Qt about its own folder chooser's table."""
        return [line for line in self.program.output().splitlines() if not line.startswith("QAccessibleTable::child:")]

    def close(self):
        """What the close button of the window does."""
        self.session.keys("alt+F4")

    def wait_for_exit(self):
        wait_for("the program to end", lambda: self.program.process.poll() is not None)
        return self.program.process.returncode
