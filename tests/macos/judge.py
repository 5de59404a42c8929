"""Runs the application's bundle on a desktop of its own: a display that nobody sees, an empty home,
and the library that stands in for what GNUstep lacks. Nothing of the person's own is touched."""
import ctypes
import json
import os
import pathlib
import queue
import re
import select
import shutil
import signal
import subprocess
import tempfile
import threading
import unittest

BUNDLE = pathlib.Path(os.environ["CONNECT_BUNDLE"])
EXECUTABLE = BUNDLE / "Vastel_Connect"
DESKTOP_LIBRARY = os.environ["CONNECT_TEST_DESKTOP"]
DATA = pathlib.Path(__file__).parent.parent / "data"

LIMIT = 60  # seconds that any one thing may take, on a busy machine

PR_SET_CHILD_SUBREAPER = 36


def text_event(text):
    """A get-URL event with a text as its direct parameter."""
    return {"----": {"text": text}}


def data_lines(*names):
    """The lines of golden files, one after another."""
    return [line for name in names
            for line in (DATA / name).read_text("utf-8").split("\n")[:-1]]


def without_time(line):
    """A log line whose time is replaced by the pattern that it follows."""
    line = re.sub(r"^(Log )\d\d:\d\d:\d\d> ", r"\1HH:mm:ss> ", line)
    return re.sub(r'^(\{"datetime":")\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d{4}"', r'\1datetime"', line)


class Application:
    """The running application. Its lines are its own output, and after "@" what it asked of the
    desktop."""

    def __init__(self, process):
        self.process = process
        self._lines = queue.Queue()
        if process.stdout is not None:
            threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        with self.process.stdout as output:
            for line in output:
                self._lines.put(line.rstrip("\n"))
        self._lines.put(None)

    def line(self):
        """The next line; None at the end of the output."""
        return self._lines.get(timeout=LIMIT)

    def lines_until(self, last):
        """The lines before `last`, which has to come."""
        lines = []
        while (line := self.line()) != last:
            if line is None:
                raise AssertionError(f"ended before {last!r}: {lines}")
            lines.append(line)
        return lines

    def rest(self):
        """The lines up to the end of the process."""
        lines = []
        while (line := self.line()) is not None:
            lines.append(line)
        self.process.wait(LIMIT)
        return lines

    def _command(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def start_event(self, event):
        self._command(json.dumps(event))

    def send(self, event):
        """Sends an event, {} without a parameter, None for no event; gives the lines it caused."""
        self.start_event(event)
        return [without_time(line) for line in self.lines_until("@done")]

    def terminate(self):
        """Asks the application to end, as the system does; gives the lines it caused."""
        self._command("terminate")
        return self.rest()


class JudgeTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        # What GNUstep starts on the side leaves its parent, and comes to us.
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        cls.home = tempfile.mkdtemp(prefix="connect-macos-")
        cls.display = cls._start_display()

    @classmethod
    def tearDownClass(cls):
        cls._end_children()
        shutil.rmtree(cls.home, ignore_errors=True)

    @classmethod
    def _start_display(cls):
        reader, writer = os.pipe()
        cls._server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0",
                                        "640x480x24", "-nolisten", "tcp"], pass_fds=[writer],
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as pipe:
            if not select.select([pipe], [], [], LIMIT)[0]:
                raise AssertionError("no display")
            return ":" + pipe.readline().strip()

    @staticmethod
    def _end_children():
        own = pathlib.Path(f"/proc/self/task/{threading.get_native_id()}/children")
        while children := own.read_text().split():
            for child in children:
                os.kill(int(child), signal.SIGKILL)
                os.waitpid(int(child), 0)

    def start(self, *arguments, launch=None, environment=None, output=subprocess.PIPE):
        """Starts the application, with the event that launches it if there is one."""
        variables = {
            "PATH": os.environ["PATH"],
            "HOME": self.home,
            "TEMP": self.home,  # where GNUstep keeps its ports
            "DISPLAY": self.display,
            "GNUSTEP_TZ": "UTC",
            "LC_ALL": "C.UTF-8",
            "LD_PRELOAD": DESKTOP_LIBRARY,
        }
        if launch is not None:
            variables["CONNECT_TEST_LAUNCH_EVENT"] = json.dumps(launch)
        variables.update(environment or {})
        # What GNUstep complains of stands beside the test's own output.
        process = subprocess.Popen([EXECUTABLE, *arguments], env=variables, cwd=self.home,
                                   stdin=subprocess.PIPE, stdout=output,
                                   encoding="utf-8", errors="surrogateescape")
        self.addCleanup(self._end, process)
        return Application(process)

    def run_through(self, *arguments):
        """All lines of a start that ends by itself."""
        application = self.start(*arguments)
        lines = application.rest()
        self.assertEqual(application.process.returncode, 0)
        return lines

    def start_waiting(self, *arguments, **options):
        """Starts the application and passes over its banner."""
        application = self.start(*arguments, **options)
        application.lines_until("@did finish launching")
        for line in data_lines("banner.txt"):
            self.assertEqual(application.line(), line)
        return application

    @staticmethod
    def _end(process):
        process.kill()
        process.stdin.close()
        process.wait()
