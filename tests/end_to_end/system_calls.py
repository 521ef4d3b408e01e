"""What a program asks of the system, as strace writes it down.

Each call is a SystemCall. Descriptors are given with what they lead to, so that an open by a name in a folder can be
told by its whole path.
"""
import os
import re

# Every call that takes a path, talks to a socket, starts a program, or changes a file through a descriptor.
TRACED = ("%file,%network,%process,ftruncate,fallocate,fchmod,fchown,fsetxattr,fremovexattr,getdents,getdents64,"
          "io_uring_setup,ptrace,process_vm_readv,process_vm_writev,mount,umount2,fsopen,open_by_handle_at")

CALL = re.compile(rb"^(\d+) +([\d.]+) (\w+)\((.*)\) += (-?\d+|\?|0x[0-9a-f]+)(?:<(.*?)>)?(?: (E[A-Z0-9]+) \(.*\))?(?: \(.*\))?$")
UNFINISHED = re.compile(rb"^(\d+) +([\d.]+ .*) <unfinished \.\.\.>$")
RESUMED = re.compile(rb"^(\d+) +[\d.]+ <\.\.\. \w+ resumed>(.*)$")
ESCAPE = re.compile(rb"\\([0-7]{1,3}|x[0-9a-f]{2}|.)")
PLAIN_ESCAPES = {b"n": b"\n", b"t": b"\t", b"r": b"\r", b"v": b"\v", b"f": b"\f"}


def unescaped(text):
    def byte(match):
        code = match[1]
        if code[:1] == b"x":
            return bytes([int(code[1:], 16)])
        if code.isdigit():
            return bytes([int(code, 8)])
        return PLAIN_ESCAPES.get(code, code)
    return ESCAPE.sub(byte, text)


class SystemCall:
    def __init__(self, thread, time, name, arguments, result, opened, error):
        self.thread = int(thread)
        self.time = float(time)  # when it began, as time.time()
        self.name = name.decode()
        self.arguments = arguments
        self.failed = error is not None
        self.result = result.decode()
        self.opened = unescaped(opened) if opened is not None else None  # what a new descriptor leads to

    def __repr__(self):
        return f"{self.name}({self.arguments.decode(errors='replace')}) = {self.result}"

    def has(self, flag):
        return re.search(rb"\b" + flag + rb"\b", self.arguments) is not None

    def paths(self):
        """Every path that the call names, made whole by the folder that it is relative to."""
        whole = []
        pattern = rb'(?:(AT_FDCWD|-?\d+)(?:<((?:[^>\\]|\\.)*)>)?, )?"((?:[^"\\]|\\.)*)"'
        for _descriptor, folder, name in re.findall(pattern, self.arguments):
            whole.append(os.path.normpath(os.path.join(unescaped(folder), unescaped(name))) if name or folder else b"")
        return whole


def strace_command(log):
    return ["strace", "--follow-forks", "--decode-fds=path", "--string-limit=65536", "--quiet=all",
            "--absolute-timestamps=format:unix,precision:us", "--trace=" + TRACED, "--output=" + log]


def read_calls(log):
    """All calls of all threads, each put together again where another thread's came between."""
    calls, begun, strange = [], {}, []
    with open(log, "rb") as lines:
        for line in lines:
            line = line.rstrip(b"\n")
            if match := UNFINISHED.match(line):
                begun[match[1]] = match[2]
                continue
            if match := RESUMED.match(line):
                line = match[1] + b" " + begun.pop(match[1]) + match[2]
            if match := CALL.match(line):
                calls.append(SystemCall(*match.groups()))
            elif not re.match(rb"^\d+ +[\d.]+ (\+\+\+|---)", line):
                strange.append(line)
    return calls, strange
