"""What the real program asks of the system in a whole session, with strace looking on: every call of every thread."""
import os
import re
import unittest

from dunmere_window import DunmereWindow
from end_to_end_test import BINARY, ODD_NAME, ODD_NAME_SHOWN, SweepTest, write_file
from system_calls import read_calls, strace_command

# What a program that shows a window talks to.
PEERS = [rb"/\.X11-unix/",  # the display
         rb"/dbus-|/bus$",  # the session bus
         rb"/at-spi/",  # the accessibility bus
         rb"^/(var/)?run/nscd/socket$", rb"^/run/systemd/userdb/"]  # the C library, when asked for the home folder

CHANGES = re.compile(r"^(creat|mkdir|mkdirat|mknod|mknodat|rename|renameat|renameat2|unlink|unlinkat|rmdir|link|linkat|"
                     r"symlink|symlinkat|chmod|fchmod|fchmodat|fchmodat2|chown|lchown|fchown|fchownat|truncate|ftruncate|"
                     r"fallocate|utime|utimes|futimesat|utimensat|(|l|f)setxattr|(|l|f)removexattr|mount|umount2|"
                     r"open_by_handle_at|io_uring_setup|process_vm_writev)$")

OPENS = ("open", "openat", "openat2", "creat")


def is_change(call):
    if call.failed:
        return False
    return CHANGES.match(call.name) is not None or (
        call.name in OPENS and re.search(rb"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_TMPFILE", call.arguments) is not None)


def is_in(path, folder):
    return path == folder or path.startswith(folder + b"/")


class LeastPrivilegeTest(SweepTest):
    needs = SweepTest.needs + ["tracing"]

    def setUp(self):
        super().setUp()
        # Beside the swept folder, and reachable from it by names that a walk must not follow.
        self.outside = os.path.join(os.fsencode(self.work), b"outside")
        write_file(os.path.join(self.work, "outside", "folder", "secret"), 1000)
        os.symlink("../outside", os.path.join(self.disk, "link"))
        os.symlink("../../outside/folder/secret", os.path.join(self.disk, "Movies", "file link"))
        os.symlink("nowhere", os.path.join(self.disk, "Documents", "dangling"))
        os.mkfifo(os.path.join(self.disk, "Movies", "fifo"))

    def start(self):
        self.log = os.path.join(self.output, "system-calls")
        self.window = DunmereWindow(self.session, BINARY, under=strace_command(self.log))
        self.window.wait_until_active()
        return self.window

    def play_session(self):
        """Everything that a user can do, once."""
        self.start_file_manager()
        self.start()
        self.sweep_and_open_two_levels()
        self.window.select("Holiday", ODD_NAME_SHOWN)
        self.window.press("Reveal")
        self.ask_for_trash_and_press("Cancel")
        self.ask_for_trash_and_press("Move to Trash")
        self.session.gone("button", lambda name: name.startswith(ODD_NAME_SHOWN))
        self.window.press("Settings")
        self.window.press("Free Space")
        self.window.sweep_folder(self.disk)
        self.window.wait_for_end_of_sweep()
        self.window.press("Drives…")
        self.window.button("Open Folder…")
        self.close_and_check()

    def test_a_whole_session_asks_for_no_more_than_it_needs(self):
        self.play_session()
        calls, strange = read_calls(self.log)
        self.assertEqual(strange, [])
        self.check_that_the_session_is_in(calls)
        with self.subTest("the interface's thread asks no disk"):
            self.check_interface_thread(calls)
        with self.subTest("no network"):
            self.check_sockets(calls)
        with self.subTest("no other program"):
            started = [call.paths()[0] for call in calls if call.name in ("execve", "execveat") and not call.failed]
            self.assertEqual(started, [os.fsencode(BINARY)])
        with self.subTest("no change but the move to the Trash"):
            self.check_changes(calls)
        with self.subTest("nothing read but the names in folders, and no link followed"):
            self.check_swept_tree(calls)

    def check_that_the_session_is_in(self, calls):
        read = {call.opened for call in calls if call.name in OPENS and not call.failed}
        self.assertIn(os.path.dirname(self.odd_file), read)
        moves = [call.paths() for call in calls if call.name.startswith("rename") and self.odd_file in call.paths()]
        self.assertEqual(moves, [[self.odd_file, os.path.join(os.fsencode(self.trash("files")), ODD_NAME)]])

    def check_interface_thread(self, calls):
        """Qt's own folder chooser looks at disks on that thread; nothing else does."""
        disks = [os.fsencode(self.disk), self.outside, os.path.dirname(os.fsencode(self.trash("files")))]

        def is_on_disk(call):
            paths = call.paths() + [self.changed_by_descriptor(call)]
            return any(is_in(path, disk) for path in paths for disk in disks)

        def is_choosing(call):
            return any(begin <= call.time <= end for begin, end in self.window.choosing)

        on_disk = [call for call in calls if is_on_disk(call)]
        interface = calls[0].thread
        self.assertGreater(len([call for call in on_disk if call.thread != interface]), 20)
        self.assertEqual([call for call in on_disk if call.thread == interface and not is_choosing(call)], [])

    def check_sockets(self, calls):
        self.assertEqual([call for call in calls if call.name in ("bind", "listen", "accept", "accept4")], [])
        made = [call for call in calls if call.name in ("socket", "socketpair")]
        self.assertEqual([call for call in made if not call.arguments.startswith(b"AF_UNIX,")], [])
        addresses = [re.search(rb'sun_path=@?"((?:[^"\\]|\\.)*)"', call.arguments) for call in calls
                     if call.name == "connect"]
        self.assertGreater(len(addresses), 1)
        self.assertEqual([address and address[1] for address in addresses
                          if not (address and any(re.search(peer, address[1]) for peer in PEERS))], [])

    def check_changes(self, calls):
        trash = os.path.dirname(os.fsencode(self.trash("files")))
        home = os.fsencode(self.home)

        def is_expected(call):
            changed = call.paths() or [self.changed_by_descriptor(call)]
            if all(is_in(path, trash) for path in changed):
                return True
            if call.name == "mkdir":  # the way to a Trash that is missing; the cache
                return is_in(trash, changed[0]) or self.is_cache(changed[0]) or changed[0] == home + b"/.cache"
            if call.name == "renameat2" and changed[0] == self.odd_file:
                return is_in(changed[1], trash)
            return all(self.is_cache(path) or re.match(rb"^(/memfd:|/dev/(null|shm/|dri/|tty$))", path)
                       for path in changed)

        self.assertEqual([call for call in calls if is_change(call) and not is_expected(call)], [])

    def changed_by_descriptor(self, call):
        match = re.match(rb"^\d+<((?:[^>\\]|\\.)*)>", call.arguments)
        return match[1] if match else b""

    def is_cache(self, path):
        """The graphics driver's compiled shaders; not the program's own, which keeps none."""
        return is_in(path, os.path.join(os.fsencode(self.home), b".cache", b"mesa_shader_cache"))

    def check_swept_tree(self, calls):
        disk = os.fsencode(self.disk)
        for call in calls:
            if call.name not in OPENS or call.failed:
                continue
            if is_in(call.opened, self.outside):
                self.assertTrue(call.has(b"O_PATH"), call)
            if is_in(call.opened, disk):
                self.assertTrue(call.has(b"O_DIRECTORY") or call.has(b"O_PATH"), call)
        # What lies in a folder is opened by its name in that, and no link of that name is followed; but what it leads
        # to may be named (O_PATH), to tell a link to a folder from one to a file.
        steps = [call for call in calls if call.name == "openat" and re.match(rb"^\d+<", call.arguments)
                 and is_in(call.paths()[0], disk) and not call.paths()[0] == disk]
        self.assertGreater(len(steps), 0)
        self.assertEqual([call for call in steps if not (call.has(b"O_NOFOLLOW") or call.has(b"O_PATH"))], [])


if __name__ == "__main__":
    unittest.main()
