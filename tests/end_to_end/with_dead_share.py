"""Becomes a program that finds a share on a folder whose server never answers. Only that program sees it.

usage: with_dead_share.py FOLDER COMMAND...
"""
import ctypes
import os
import sys

CLONE_NEWNS, MS_REC, MS_PRIVATE = 0x20000, 0x4000, 0x40000
LIBC = ctypes.CDLL(None, use_errno=True)


def check(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, os.strerror(error), what)


def mount(source, target, kind, flags, options):
    check(LIBC.mount(source, os.fsencode(target), kind, ctypes.c_ulong(flags), options), target)


def main(folder, command):
    check(LIBC.unshare(CLONE_NEWNS), "a mount namespace")
    mount(b"none", "/", None, MS_REC | MS_PRIVATE, None)
    server = os.open("/dev/fuse", os.O_RDWR)  # stays open, and nobody ever reads from it
    os.set_inheritable(server, True)
    mount(b"host:/share", folder, b"fuse.sshfs", 0, b"fd=%d,rootmode=40000,user_id=0,group_id=0" % server)
    os.execvp(command[0], command)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
