"""Sweeps a folder on a virtual display with real clicks, opens the largest folders, and takes a picture.

usage: picture_of_sweep.py PROGRAM FOLDER PICTURE
"""
import os
import shutil
import sys
import tempfile

from desktop_session import DesktopSession, NotSeen
from dunmere_window import DunmereWindow

LEVELS = 2  # folders to open below the swept one


def open_largest_folder(window, column):
    """Opens the first folder of the column, which is its largest, and returns its name; none when it has none."""
    folders = [row for row in window.rows(column) if ", folder, " in row]
    if not folders:
        return None
    name = folders[0].split(", folder, ")[0]
    window.select(column, name)
    return name


def take_picture(session, program, folder, picture):
    window = DunmereWindow(session, program)
    frame = session.see("frame", "Dunmere")
    window.sweep_folder(folder)
    column = os.path.basename(folder) or "/"
    window.column(column)
    window.wait_for_end_of_sweep()
    for _ in range(LEVELS):
        column = column and open_largest_folder(window, column)
    if column:
        window.column(column)
    shutil.copyfile(session.picture("sweep", frame), picture)
    window.close()
    return window.wait_for_exit()


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip())
    program, folder, picture = (os.path.abspath(path) for path in sys.argv[1:])
    if not os.path.isdir(folder):
        sys.exit(f"picture_of_sweep: {folder} is no folder")
    with tempfile.TemporaryDirectory(dir=os.path.dirname(picture), prefix="sweep-") as place:
        with DesktopSession(os.path.join(place, "home"), os.path.join(place, "output")) as session:
            try:
                code = take_picture(session, program, folder, picture)
            except NotSeen as error:
                shutil.copyfile(session.picture("failed"), picture)
                sys.exit(f"picture_of_sweep: {error}\nThe screen at that moment: {picture}")
    if code != 0:
        sys.exit(f"picture_of_sweep: the program ended with {code}")
    print(f"The picture of the sweep: {picture}")


if __name__ == "__main__":
    main()
