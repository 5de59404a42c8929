"""A small Debian system in namespaces of its own, in which packages are installed and links are
followed. It is in memory, and gone with the test."""

import contextlib
import os
import pathlib
import re
import subprocess
import types

import pytest

from packages import LIMIT, NAME
from processes import Lines, children, wait_for_end

HERE = os.path.dirname(os.path.abspath(__file__))
ARCHIVE = os.environ["CONNECT_TREE"]
# It says that the tree is there. The shell reaps what is left behind.
FIRST_PROCESS = ["bash", "-c", "echo ready; sleep infinity & wait"]
# The status of in-namespaces where there are none.
REFUSED = 77
# The user's, in the tree.
AGENT = 1000
HOME = "/home/agent"
RUNTIME = f"/run/user/{AGENT}"

# A default handler of pages that tells of each, and stays for one that ends in #stay.
HANDLER = f"""
cd {HOME}
mkdir -p .config .local/share/applications
mkfifo --mode=666 pages
cat > record << 'END'
#!/bin/sh
echo "$$ $*" > {HOME}/pages
case $* in *#stay) exec sleep infinity ;; esac
END
chmod +x record
printf '%s\\n' '[Desktop Entry]' Type=Application Name=Record 'Exec={HOME}/record %u' \\
  > .local/share/applications/record.desktop
printf '%s\\n' '[Default Applications]' x-scheme-handler/http{{,s}}=record.desktop \\
  > .config/mimeapps.list
"""


class Tree(contextlib.ExitStack):
    """A tree that lives as long as its context. `around` is a command in which all of it is started,
    and `first` that of its first process, which says that the tree is there."""

    def __init__(self, around=(), first=FIRST_PROCESS):
        super().__init__()
        if not os.path.exists(ARCHIVE):
            pytest.skip("No tree was made")
        self._enter = ["--user", "--preserve-credentials"] if os.getuid() else []
        self._starter = subprocess.Popen(
            [*around, HERE + "/in-namespaces", HERE + "/start-tree", ARCHIVE, *first],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        self._processes = [self._starter]
        self.first = self._pages = None
        with contextlib.ExitStack() as on_failure:
            on_failure.callback(self._stop)
            try:
                assert Lines(self._starter.stdout).next() == "ready"
            except EOFError:
                if self._starter.wait(LIMIT) == REFUSED:
                    pytest.skip("This machine refuses namespaces, or control groups")
                raise
            (self.first,) = children(self._starter.pid)
            self.run("bash", "-ec", HANDLER, agent=True)
            # Open for writing, too, it never ends.
            self._pages = Lines(open(self.path(HOME + "/pages"), "r+b", buffering=0))
            self.push(on_failure.pop_all())

    def path(self, name):
        """Where a file of the tree is found from without."""
        return f"/proc/{self.first}/root{name}"

    def write(self, name, content):
        self.run("sh", "-c", 'cat > "$1"', "-", name, input=content)

    def copy(self, file, name):
        self.write(name, pathlib.Path(file).read_bytes())

    # Processes.

    def run(self, *command, agent=False, status=0, input=b"", **environment):
        """Runs a command, as root or as the agent: its output, of both kinds."""
        done = subprocess.run(self._command(command, agent, environment), input=input,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=LIMIT,
                              check=False)
        output = done.stdout.decode()
        assert done.returncode == status, f"{command}: {done.returncode}: {output}"
        return output

    def start(self, *command, agent=True, **environment):
        """Starts a command that goes on; the lines that it writes."""
        process = subprocess.Popen(self._command(command, agent, environment),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        self._processes.append(process)
        return Lines(process.stdout)

    def host_pid(self, pid):
        """The number that a process of the tree has without."""
        space = os.readlink(f"/proc/{self.first}/ns/pid")
        for each in filter(str.isdigit, os.listdir("/proc")):
            with contextlib.suppress(OSError):
                with open(f"/proc/{each}/status", encoding="utf-8") as file:
                    numbers = next(line for line in file if line.startswith("NSpid:")).split()
                if int(numbers[-1]) == pid and os.readlink(f"/proc/{each}/ns/pid") == space:
                    return int(each)
        raise ProcessLookupError(pid)

    def runs_installed(self, pid):
        """Whether a process runs the program that is installed, and not one that was replaced."""
        return self.run("readlink", f"/proc/{pid}/exe") == "/usr/bin/vastel-connect\n"

    # Packages.

    def install(self, package):
        """Installs the package of a file, and what it depends on."""
        self.copy(package, "/tmp/package.deb")
        self.apt("install", "--no-install-recommends", "/tmp/package.deb")

    def apt(self, action, *arguments):
        self.run("apt-get", "-q", action, "--yes", *arguments, DEBIAN_FRONTEND="noninteractive")

    def files(self):
        """All that is installed, by path: kind, mode, owner and content."""
        files = self.run("find", "/", "-xdev", "-printf", "%p\\t%y %m %u:%g %l\\0")
        found = dict(each.split("\t") for each in files.split("\0")[:-1])
        sums = self.run("find", "/", "-xdev", "-type", "f", "-exec", "md5sum", "--zero", "{}", "+")
        for content, path in (each.split("  ", 1) for each in sums.split("\0")[:-1]):
            found[path] += content
        return found

    # Links.

    def start_bus(self):
        """Starts the agent's session bus."""
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile", "--nosyslog",
                   f"--address=unix:path={RUNTIME}/bus", "--print-address").next()

    def owner(self):
        """The process that has the program's name on the bus, by its number in the tree, if any."""
        answer = self.run(
            "sh", "-c", """gdbus call --session --dest org.freedesktop.DBus --object-path / \\
              --method org.freedesktop.DBus.GetConnectionUnixProcessID "$1" 2>&1 || true""",
            "-", NAME, agent=True)
        if "NameHasNoOwner" in answer:
            return None
        return int(re.fullmatch(r"\(uint32 (\d+),\)\n", answer)[1])

    def page(self):
        """The page that is opened next, and the process that has it."""
        pid, page = self._pages.next().split(" ", 1)
        return types.SimpleNamespace(pid=int(pid), url=page)

    # How all this is made, and taken away.

    def _command(self, command, agent, environment):
        variables = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8"}
        user = []
        if agent:
            user = [f"--setuid={AGENT}", f"--setgid={AGENT}"]
            variables |= {"HOME": HOME, "XDG_RUNTIME_DIR": RUNTIME,
                          "DBUS_SESSION_BUS_ADDRESS": f"unix:path={RUNTIME}/bus"}
        variables |= environment
        return ["nsenter", f"--target={self.first}", *self._enter, "--mount", "--pid", "--root",
                "--wd", *user, "env", "-i", *(f"{name}={value}" for name, value in
                                              variables.items()), *command]

    def _stop(self):
        # The first process of the tree ends with it, after all others of the tree.
        self._starter.kill()
        if self.first:
            wait_for_end(self.first)
        for process in self._processes:
            process.wait(LIMIT)
            process.stdout.close()
        if self._pages:
            self._pages.close()
