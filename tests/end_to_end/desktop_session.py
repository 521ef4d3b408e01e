"""A desktop of its own for one program: display, window manager, session bus, home folder, and eyes and hands.

Things on the screen are found through the accessibility bus, by role and name, as a screen reader finds them; they are
used with a real pointer and real keys. Nothing here waits for a fixed time: every wait ends when its condition holds.
"""
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

from screen_file import ScreenFile

PATIENCE = 60  # seconds until a wait gives up; far more than anything takes
SCREEN = "1280x800x24"


# Names of roles that a newer accessibility library has changed.
ROLES = {"push button": "button"}


class NotSeen(AssertionError):
    """What was waited for did not come."""


def wait_for(what, condition, seconds=PATIENCE):
    """The first true value of condition(), asked again and again."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise NotSeen(f"waited {seconds} s in vain for {what}")
        time.sleep(0.02)


def role_of(thing):
    name = thing.get_role_name()
    return ROLES.get(name, name)


class Program:
    """A started process whose output goes to a file."""

    def __init__(self, command, environment, log):
        self.log = log
        with open(log, "wb") as output:
            self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=subprocess.STDOUT)

    def output(self):
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return file.read()

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()


class DesktopSession:
    """Use as a context manager, once in a process: the accessibility library keeps to the first bus that it sees.

    `home` is the new home folder; it must lie on a real disk, since a tmpfs has no Trash. Pictures and logs go to
    `output`.
    """

    def __init__(self, home, output):
        self.home = home
        self.output = output
        self.programs = []
        self.pictures = 0
        self.environment = {}
        self.atspi = None

    def __enter__(self):
        os.makedirs(self.home, exist_ok=True)
        os.makedirs(self.output, exist_ok=True)
        # Short and outside of `home`, because the address of a socket holds 107 bytes.
        self.runtime = tempfile.mkdtemp(prefix="dunmere-")
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for program in reversed(self.programs):
            program.stop()
        shutil.rmtree(self.runtime, ignore_errors=True)

    def _start(self):
        self.environment = {
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"),
            "LC_ALL": "C.UTF-8",
            "HOME": self.home,
            "XDG_RUNTIME_DIR": self.runtime,
            "XDG_DATA_HOME": os.path.join(self.home, ".local", "share"),
            "XDG_CONFIG_HOME": os.path.join(self.home, ".config"),
            "XDG_CACHE_HOME": os.path.join(self.home, ".cache"),
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_QPA_PLATFORM": "xcb",
        }
        self.environment["DISPLAY"] = self._start_display()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_bus()
        self.start("openbox", ["openbox", "--sm-disable"])
        # It gives the keyboard to no window that was there before it.
        wait_for("the window manager", self._has_window_manager)
        self._connect_accessibility()

    def _start_display(self):
        reader, writer = os.pipe()
        os.set_inheritable(writer, True)
        log = os.path.join(self.output, "xvfb.log")
        with open(log, "wb") as output:
            # Whenever its last client goes it would start anew, and lose whoever connects just then.
            process = subprocess.Popen(["Xvfb", "-noreset", "-displayfd", str(writer), "-screen", "0", SCREEN,
                                        "-fbdir", self.runtime, "-nocursor", "-nolisten", "tcp"],
                                       pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        os.close(writer)
        self._adopt(process, log)
        with os.fdopen(reader) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise NotSeen(f"the virtual display did not start, see {log}")
        return ":" + number

    def _has_window_manager(self):
        listing = subprocess.run(["obxprop", "--root"], env=self.environment, stdout=subprocess.PIPE, text=True).stdout
        return "_NET_SUPPORTING_WM_CHECK" in listing

    def _start_bus(self):
        log = os.path.join(self.output, "dbus.log")
        with open(log, "wb") as output:
            process = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                       env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=output)
        self._adopt(process, log)
        address = process.stdout.readline().decode().strip()
        if not address:
            raise NotSeen(f"the session bus did not start, see {log}")
        return address

    def _adopt(self, process, log):
        program = Program.__new__(Program)
        program.process, program.log = process, log
        self.programs.append(program)

    def _connect_accessibility(self):
        os.environ.update(self.environment)
        import gi  # only now: it reads the environment when it is loaded
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        self.atspi, self.glib_error = Atspi, GLib.Error
        Atspi.set_timeout(2000, 2000)

    # Programs

    def start(self, name, command, **extra_environment):
        program = Program(command, {**self.environment, **extra_environment}, os.path.join(self.output, name + ".log"))
        self.programs.append(program)
        return program

    # Eyes

    def picture(self, name, of=None):
        """Takes a picture of the whole screen, or of where one thing is on it, and returns its path."""
        self.pictures += 1
        path = os.path.join(self.output, f"{self.pictures}-{name}.png")
        screen = ScreenFile(os.path.join(self.runtime, "Xvfb_screen0"))
        box = of and self.place(of)
        screen.save_png(path, *((box.x, box.y, box.width, box.height) if box else (0, 0, screen.width, screen.height)))
        return path

    def properties_of_active_window(self):
        """What the program tells the desktop about its window: X11 property names and their values as text."""
        listing = subprocess.run(["obxprop", "--id", self._active_window()], env=self.environment, check=True,
                                 stdout=subprocess.PIPE, text=True).stdout
        return dict(re.findall(r"^(\w+)\(\w+\) = (.*)$", listing, re.MULTILINE))

    def _active_window(self):
        return subprocess.run(["xdotool", "getactivewindow"], env=self.environment, check=True,
                              stdout=subprocess.PIPE, text=True).stdout.strip()

    def all_seen(self, role, matches, inside=None):
        """Every visible thing of this role whose name `matches`, in the order of the accessibility tree."""
        try:
            return list(self._walk(inside or self.atspi.get_desktop(0), role, matches))
        except self.glib_error:  # something went away while it was looked at
            return []

    def _walk(self, thing, role, matches):
        thing.clear_cache()
        for index in range(thing.get_child_count()):
            child = thing.get_child_at_index(index)
            if child is None:
                continue
            if role_of(child) == role and matches(child.get_name()) and self._shows(child):
                yield child
            yield from self._walk(child, role, matches)

    def _shows(self, thing):
        return thing.get_state_set().contains(self.atspi.StateType.SHOWING)

    def see(self, role, name, inside=None, seconds=PATIENCE):
        """Waits for one thing; `name` is its whole name or a function that tells whether a name is meant."""
        matches = name if callable(name) else lambda text: text == name
        shown = name.__doc__ or "a certain name" if callable(name) else f"“{name}”"
        try:
            return wait_for(f"{role} {shown}", lambda: self.all_seen(role, matches, inside), seconds)[0]
        except NotSeen as error:
            raise NotSeen(f"{error}; the screen: {self.picture('not-seen')}; on it:\n{self.describe()}") from None

    def whole_tree(self):
        """Everything of every program, on the screen or not."""
        def visit(thing):
            thing.clear_cache()
            for index in range(thing.get_child_count()):
                child = thing.get_child_at_index(index)
                yield child
                yield from visit(child)

        return list(visit(self.atspi.get_desktop(0)))

    def has_state(self, thing, name):
        """`name` is that of the accessibility library's constant."""
        return thing.get_state_set().contains(getattr(self.atspi.StateType, name))

    def has_focus(self, thing):
        thing.clear_cache()
        return self.has_state(thing, "FOCUSED")

    def wait_for_focus(self, name):
        """Waits until the thing of this name, or of one that `name` tells to be meant, has the keyboard."""
        matches = name if callable(name) else lambda text: text == name

        def focused():
            try:
                return [thing for thing in self.whole_tree() if matches(thing.get_name()) and self.has_focus(thing)]
            except (self.glib_error, AttributeError):  # something went away while it was looked at
                return []

        try:
            return wait_for(f"the keyboard to be at “{name}”", focused)[0]
        except NotSeen as error:
            raise NotSeen(f"{error}; the screen: {self.picture('not-focused')}; on it:\n{self.describe()}") from None

    def gone(self, role, name, inside=None):
        matches = name if callable(name) else lambda text: text == name
        wait_for(f"{role} to go away", lambda: not self.all_seen(role, matches, inside))

    def wait_for_news(self, event, act, expected):
        """Waits until such an event has told what is expected, a name and a detail, after act() is called.

        Without keys: each would be offered to the listener, which does not answer.
        """
        from gi.repository import GLib
        told = []
        listener = self.atspi.EventListener.new(lambda news: told.append((news.source.get_name(), news.detail1)))

        def has_told():
            while GLib.MainContext.default().iteration(False):
                pass
            return expected in told

        listener.register(event)
        act()
        wait_for(f"{event} of {expected}", has_told)
        listener.deregister(event)

    def place(self, thing):
        """Its rectangle on the screen: x, y, width, height in pixels."""
        return self.atspi.Component.get_extents(thing, self.atspi.CoordType.SCREEN)

    def describe(self):
        """The role and name of everything on the screen, for a person."""
        lines = []

        def visit(thing, depth):
            thing.clear_cache()
            lines.append("  " * depth + f"{role_of(thing)}: {thing.get_name()!r}")
            for index in range(thing.get_child_count()):
                visit(thing.get_child_at_index(index), depth + 1)

        try:
            visit(self.atspi.get_desktop(0), 0)
        except (self.glib_error, AttributeError):
            lines.append("(the rest went away)")
        return "\n".join(lines)

    # Hands

    def _xdotool(self, *arguments):
        subprocess.run(["xdotool", *arguments], env=self.environment, check=True, stdout=subprocess.DEVNULL)

    def click(self, thing):
        """Moves the pointer to the middle of the thing, once it has stopped moving, and clicks there."""
        box = self._resting_place(thing)
        self._xdotool("mousemove", "--sync", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1")

    def press_by_action(self, thing):
        """What a screen reader does instead of a click."""
        action = thing.get_action_iface()
        names = [action.get_action_name(index) for index in range(action.get_n_actions())]
        action.do_action(names.index("Press"))

    def scroll_down(self, thing, notches):
        """Turns the wheel towards the user, with the pointer over the middle of the thing."""
        box = self._resting_place(thing)
        self._xdotool("mousemove", "--sync", str(box.x + box.width // 2), str(box.y + box.height // 2),
                      "click", "--repeat", str(notches), "--delay", "20", "5")

    def _resting_place(self, thing):
        def settled():
            before = self.place(thing)
            time.sleep(0.05)
            now = self.place(thing)
            same = (before.x, before.y, before.width, before.height) == (now.x, now.y, now.width, now.height)
            return now if same and now.width > 0 else None

        return wait_for("the thing to stand still", settled)

    def keys(self, *names):
        self._xdotool("key", *names)

    def type(self, text):
        self._xdotool("type", "--delay", "5", text)
