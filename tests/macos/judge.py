"""Runs the application's bundle on a desktop of its own: a display that nobody sees, an empty home,
and the library that stands in for what GNUstep lacks. Nothing of the person's own is touched."""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

from processes import Process, adopt_orphans, golden, kill_children

BUNDLE = pathlib.Path(os.environ["CONNECT_BUNDLE"])
EXECUTABLE = BUNDLE / "Vastel_Connect"
DESKTOP_LIBRARY = os.environ["CONNECT_TEST_DESKTOP"]


def text_event(text):
    """A get-URL event with a text as its direct parameter."""
    return {"----": {"text": text}}


def data_lines(*names):
    """The lines of golden files, one after another."""
    return golden(*names).split("\n")[:-1]


def without_time(line):
    """A log line whose time is replaced by the pattern that it follows."""
    line = re.sub(r"^(Log )\d\d:\d\d:\d\d> ", r"\1HH:mm:ss> ", line)
    return re.sub(r'^(\{"datetime":")\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d{4}"', r'\1datetime"', line)


class Application(Process):
    """The running application. Its lines are its own output, and after "@" what it asked of the
    desktop."""

    def lines_until(self, last):
        """The lines before `last`, which has to come."""
        return list(iter(self.output.next, last))

    def rest(self):
        """The lines up to the end of the process."""
        return self.finish().output.split("\n")[:-1]

    def start_event(self, event):
        self.write(json.dumps(event) + "\n")

    def send_event(self, event):
        """Sends an event, {} without a parameter, None for no event; gives the lines it caused."""
        self.start_event(event)
        return [without_time(line) for line in self.lines_until("@done")]

    def terminate(self):
        """Asks the application to end, as the system does; gives the lines it caused."""
        self.write("terminate\n")
        return self.rest()

    def discard(self):
        if self.is_running():
            self.send(signal.SIGKILL)
            self.wait()
        super().discard()


class JudgeTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        # What GNUstep starts on the side leaves its parent, and comes to us.
        adopt_orphans()
        cls.addClassCleanup(kill_children)
        cls.home = tempfile.mkdtemp(prefix="connect-macos-")
        cls.addClassCleanup(shutil.rmtree, cls.home, ignore_errors=True)
        server = Process(["Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten",
                          "tcp"], os.environ, stderr=subprocess.DEVNULL)
        cls.addClassCleanup(server.discard)
        cls.display = ":" + server.output.next()

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
        application = Application([EXECUTABLE, *arguments], variables, stdin=subprocess.PIPE,
                                  stdout=output, stderr=None)
        self.addCleanup(application.discard)
        return application

    def run_through(self, *arguments):
        """All lines of a start that ends by itself."""
        application = self.start(*arguments)
        lines = application.rest()
        self.assertEqual(application.wait(), 0)
        return lines

    def start_waiting(self, *arguments, **options):
        """Starts the application and passes over its banner."""
        application = self.start(*arguments, **options)
        application.lines_until("@did finish launching")
        application.banner()
        return application
