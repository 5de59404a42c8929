"""A private desktop on which all that is started on a link's way tells when it began. BENCH_PROGRAMS
is the folder of the programs that tell."""

import os
import socket
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [f"{HERE}/../tests/{folder}" for folder in ("road", "clients")]

from desktop import Desktop
from processes import LIMIT

PROGRAMS = os.environ["BENCH_PROGRAMS"]


class StampedDesktop(Desktop):
    def __init__(self, **options):
        super().__init__(**options)
        self.socket_path = self.folder + "/times"
        self._times = self.enter_context(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        self._times.bind(self.socket_path)
        self._times.settimeout(LIMIT)
        # The beginning of a command that tells when it is run.
        self.stamp = [f"{PROGRAMS}/bench_handler", self.socket_path]
        self.install_handler(command=" ".join(self.stamp) + " %u")

    def times(self, count):
        """So many times that are told next, in milliseconds, in their order."""
        return sorted(struct.unpack("q", self._times.recv(8))[0] / 1e6 for _ in range(count))

    def parts(self, count, *command):
        """What passes between the starts of so many programs, of which the command is the first."""
        process = self.spawn(*self.stamp, *command)
        times = self.times(count)
        process.finish()
        self.forget(process)
        return [after - before for before, after in zip(times, times[1:])]
