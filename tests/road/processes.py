"""Programs that a test starts, the lines that they write, and the processes that they leave."""

import contextlib
import ctypes
import json
import os
import re
import select
import signal
import subprocess
from pathlib import Path
from typing import NamedTuple

from model import expect

ROOT = Path(__file__).resolve().parents[2]
DATA = str(ROOT / "tests/data")

# In this many seconds, whatever a test waits for has happened, however busy the machine is.
LIMIT = int(os.environ.get("CONNECT_LIMIT", "60"))

# The command of a screen that nobody sees. It writes its number.
SCREEN = ["Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-noreset", "-screen", "0", "1024x768x24"]

END_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
# Under nohup, or behind a script's "&", the programs would ignore one as well, and so not end by it.
for number in END_SIGNALS:
    if signal.getsignal(number) == signal.SIG_IGN:
        signal.signal(number, lambda *_: None)


class Result(NamedTuple):
    """What a process has written, as far as it went into pipes, and its exit status."""
    output: str
    errors: str
    status: int


# A process that had nothing to say and did what it should.
SILENCE = Result("", "", 0)


def golden(*names):
    """The texts of golden files, one after the other."""
    return b"".join(Path(DATA, name + ".txt").read_bytes() for name in names).decode()


# All switches, of which -help alone has no line in its text; and those that print one.
SWITCHES = ["-help", *re.findall(r"^  (-\w+): ", golden("help"), re.MULTILINE)]
PRINTING = [switch for switch in SWITCHES if os.path.exists(f"{DATA}/{switch[1:]}.txt")]


def log_message(line):
    """The message of a log line of either form."""
    if line.startswith("{"):
        return json.loads(line)["message"]
    match = re.fullmatch(r"Log ([01]\d|2[0-3]):[0-5]\d:[0-5]\d> (.*)", line, re.DOTALL)
    assert match, f"not a log line: {line!r}"
    return match[2]


def messages_of(*links):
    """The log messages of links, one link after the other."""
    return [message for link in links for message in expect(link).messages]


class Lines:
    """The lines that arrive in a pipe."""

    def __init__(self, pipe):
        self._pipe = pipe
        self._text = bytearray()

    def next(self):
        """The next line, without its line feed."""
        block = self._text
        while b"\n" not in block:
            block = self._read()
            if not block:
                raise EOFError(f"after {self._text[-200:]!r}")
        end = self._text.index(b"\n")
        line = self._text[:end].decode()
        del self._text[:end + 1]
        return line

    def now(self):
        """The lines that have arrived."""
        while select.select([self._pipe], [], [], 0)[0] and self._read():
            pass
        lines, self._text = self._text.decode().split("\n")[:-1], bytearray()
        return lines

    def rest(self):
        """All that comes until the other side closes the pipe."""
        while self._read():
            pass
        rest, self._text = self._text, bytearray()
        return rest.decode()

    def close(self):
        self._pipe.close()

    def _read(self):
        if not select.select([self._pipe], [], [], LIMIT)[0]:
            raise TimeoutError(f"nothing arrives after {self._text[-200:]!r}")
        block = os.read(self._pipe.fileno(), 1 << 20)
        self._text += block
        return block


class Process:
    """A program on the private desktop. `output` and `errors` are the lines that it writes, as far
    as they go into pipes."""

    def __init__(self, command, environment, **streams):
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                   "stderr": subprocess.PIPE, **streams}
        self._process = subprocess.Popen(command, env=environment, cwd="/", **streams)
        self.pid = self._process.pid
        self.output = Lines(self._process.stdout) if self._process.stdout else None
        self.errors = Lines(self._process.stderr) if self._process.stderr else None

    def banner(self):
        """Reads the banner, which must come next."""
        lines = "".join(self.output.next() + "\n" for _ in golden("banner").splitlines())
        assert lines == golden("banner"), lines

    def messages(self, count):
        """The messages of the next log lines."""
        return [log_message(self.output.next()) for _ in range(count)]

    def expect_log(self, *links):
        """Reads the log lines of links, which must come next."""
        for message in messages_of(*links):
            assert log_message(self.output.next()) == message

    def descriptors(self):
        return sorted(os.listdir(f"/proc/{self.pid}/fd"))

    def write(self, text):
        """Writes to the standard input of a process that was given a pipe for it."""
        self._process.stdin.write(text.encode())
        self._process.stdin.flush()

    def is_running(self):
        return self._process.poll() is None

    def send(self, number):
        os.kill(self.pid, number)

    def wait(self):
        """The exit status, once the process has ended by itself; negative for a signal."""
        return self._process.wait(LIMIT)

    def finish(self):
        """Waits for the end."""
        output, errors = (lines.rest() if lines else "" for lines in (self.output, self.errors))
        return Result(output, errors, self.wait())

    def end(self, number=signal.SIGTERM):
        """Asks the process to end, and waits for it as `finish` does."""
        self.send(number)
        return self.finish()

    def discard(self):
        if self.is_running():
            self._process.terminate()
            try:
                self.wait()
            except subprocess.TimeoutExpired:
                self._process.kill()
                raise
        for stream in (self.output, self.errors, self._process.stdin):
            if stream:
                stream.close()


def wait_for_end(pid):
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return
    with os.fdopen(descriptor) as process:
        assert select.select([process], [], [], LIMIT)[0], f"{pid} does not end"


def adopt_orphans():
    """Makes every process that a test leaves behind a child of this one."""
    PR_SET_CHILD_SUBREAPER = 36
    assert ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) == 0


def end_descendants():
    """Waits for the end of all. Those that do not end in time are killed, and a failure."""
    try:
        while found := children("self"):
            wait_for_end(found[0])
            os.waitpid(found[0], 0)
    except AssertionError as error:
        raise AssertionError(f"left running: {kill_children()}") from error


def kill_children():
    killed = []
    # The children of one that is killed are the next round's.
    while found := children("self"):
        for pid in found:
            with open(f"/proc/{pid}/cmdline", encoding="utf-8", errors="replace") as file:
                killed.append(file.read().replace("\0", " "))
            os.kill(pid, signal.SIGKILL)
            os.waitpid(pid, 0)
    return killed


def children(pid):
    """The children of a process."""
    found = []
    for task in os.listdir(f"/proc/{pid}/task"):
        # The thread may have ended meanwhile.
        with contextlib.suppress(FileNotFoundError), open(
                f"/proc/{pid}/task/{task}/children", encoding="ascii") as file:
            found += map(int, file.read().split())
    return found


def descendants(pid):
    found = []
    for child in children(pid):
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):  # It may have ended.
            found += [child, *descendants(child)]
    return found


def is_program(pid):
    """Whether a process is the program, and has not ended."""
    try:
        status = status_of(pid)
    except (FileNotFoundError, ProcessLookupError):
        return False
    return status["Name"] == "vastel-connect" and not status["State"].startswith("Z")


def status_of(pid):
    """What /proc says about a process, by name."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as file:
        return dict(line.split(":\t", 1) for line in file.read().splitlines() if ":\t" in line)
