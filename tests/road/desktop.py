"""A private desktop for the tests of the built program: folders, a session bus and a default
handler of their own, and nothing of the desktop of whoever runs them."""

import contextlib
import json
import os
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import types

from gi.repository import Gio, GLib

from model import page_link
from processes import (LIMIT, SCREEN, Lines, Process, adopt_orphans, children, descendants,
                       end_descendants, is_program, wait_for_end)

NAME = "com.vastel.Connect"
OBJECT = "/com/vastel/Connect"
INTERFACE = "org.freedesktop.Application"
BUS = "org.freedesktop.DBus"

STAGE = os.environ["CONNECT_STAGE"]
PROGRAM = STAGE + "/bin/vastel-connect"
with open(f"{STAGE}/share/dbus-1/services/{NAME}.service", encoding="utf-8") as installed:
    SERVICE_FILE = installed.read()
# The command with which the bus starts the program.
SERVICE = re.search("^Exec=(.*)$", SERVICE_FILE, re.MULTILINE).group(1)
HERE = os.path.dirname(os.path.abspath(__file__))
PAGE = "https://page.test/"
# KDE knows the applications that a menu has: all of them.
MENU = """<!DOCTYPE Menu PUBLIC "-//freedesktop//DTD Menu 1.0//EN" "">
<Menu><Name>Applications</Name><DefaultAppDirs/><Include><All/></Include></Menu>
"""


class Desktop(contextlib.ExitStack):
    """A desktop that lives as long as its context, whose end fails when a process is left running.

    `service` is the command with which the bus starts the program; None: the bus cannot start it.
    `bus` may be lines for the end of the bus' configuration.
    With a `screen` of its own, it also has what programs with windows find in the machine's folders.
    Further arguments are variables of the environment of all."""

    def __init__(self, service=SERVICE, bus=True, screen=False, **environment):
        super().__init__()
        self.folder = tempfile.mkdtemp(prefix="connect-test-")
        self.callback(shutil.rmtree, self.folder)
        try:
            self._make(service, bus, screen, environment)
        except BaseException:
            self.close()
            raise

    def _make(self, service, bus, screen, environment):
        self._processes = []
        for name in ("home", "config", "data", "cache", "runtime", "tmp", "services", "empty"):
            os.mkdir(f"{self.folder}/{name}", 0o700)
        self.write("config/menus/applications.menu", MENU)
        self._environment = self._make_environment()
        self._pages = self.enter_context(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        self._pages.bind(self.folder + "/pages")
        adopt_orphans()
        self.callback(self._expect_nothing_left)
        self.callback(self._stop)
        self.install_handler()
        if service is not None:
            self.install_service(NAME, service)
        if screen:
            self._start_screen()
        self._environment.update(environment)
        if bus:
            self.start_bus(bus if isinstance(bus, str) else "")

    # Processes.

    def environment(self, **changes):
        """The environment of a process; None leaves a variable out."""
        merged = {**self._environment, **changes}
        return {name: value for name, value in merged.items() if value is not None}

    def spawn(self, *command, streams=None, **environment):
        process = Process(command, self.environment(**environment), **(streams or {}))
        self._processes.append(process)
        return process

    def forget(self, process):
        """Lets go of a process that has ended."""
        process.discard()
        self._processes.remove(process)

    def end_programs(self):
        """Ends the programs that the bus started, whether they have the name or not."""
        while found := [pid for pid in descendants("self") if is_program(pid)]:
            for pid in found:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, signal.SIGTERM)
                wait_for_end(pid)
        self.wait_for_owner(None)

    def wait_for_children(self, pid):
        """Waits until a process has no child left, ended or not."""
        deadline = time.monotonic() + LIMIT
        while found := children(pid):
            assert time.monotonic() < deadline, f"left: {found}"
            wait_for_end(found[0])

    def wait_for_orphans(self, *staying):
        """Waits for the end of the handlers that programs which have ended leave behind. `staying`
        are the processes that the bus started, which are nobody's children either."""
        known = {*staying, *(process.pid for process in self._processes)}
        # The kernel's list may lack one while another ends.
        while found := set(children("self")) - known:
            for pid in found:
                # A program that the bus was still starting had no name by which it would be ended.
                if is_program(pid):
                    os.kill(pid, signal.SIGTERM)
                wait_for_end(pid)
                os.waitpid(pid, 0)

    def start(self, *arguments, **options):
        """Starts the program."""
        return self.spawn(PROGRAM, *arguments, **options)

    def run(self, *arguments, **options):
        """Starts the program and waits for its end."""
        return self.start(*arguments, **options).finish()

    def other_user(self):
        """The beginning of a command for a user to whom nothing of ours belongs, where there is one,
        and the program for it."""
        for path in ("", "/config", "/data", "/pages"):
            os.chmod(self.folder + path, 0o777)
        program = shutil.copy(PROGRAM, self.folder)
        # The counts of dev/coverage are not for another user to write.
        user = ["env", "GCOV_PREFIX=" + self.folder, "setpriv", "--reuid=65534", "--regid=65534",
                "--clear-groups"]
        return (user if os.geteuid() == 0 else []), program

    def listen(self, *arguments, command=(PROGRAM,), **options):
        """Starts the program, by itself or by a command, and waits until links go to it."""
        process = self.spawn(*command, *arguments, **options)
        if process.output:
            process.banner()
        self.wait_for_owner(process.pid)
        return process

    def listen_with_openers(self, *names, **environment):
        """Starts the program where nothing is in PATH but openers, which report pages."""
        for name in names or ("gio", "xdg-open"):
            self.install_reporter("openers/" + name)
        return self.listen("-log", PATH=self.folder + "/openers", **environment)

    # The bus.

    def call(self, method, parameters, interface=INTERFACE, path=OBJECT, name=NAME):
        """Calls the application, which the bus starts if need be, and waits for the answer."""
        return self.bus.call_sync(name, path, interface, method, parameters, None,
                                  Gio.DBusCallFlags.NONE, LIMIT * 1000, None)

    def call_bus(self, method, parameters):
        return self.call(method, parameters, BUS, "/org/freedesktop/DBus", BUS)

    def open(self, *links, **platform_data):
        """Follows links as GIO does; "_" stands for "-" in the names of platform data."""
        data = {key.replace("_", "-"): value if isinstance(value, GLib.Variant)
                else GLib.Variant("s", value) for key, value in platform_data.items()}
        self.call("Open", GLib.Variant("(asa{sv})", (links, data)))

    def call_open(self, *links):
        """Follows links by a call each, which the bus has passed on by then. The result has for each
        a list, into which its answer comes: None, or the error."""
        def on_answer(bus, result, answer):
            try:
                bus.call_finish(result)
                answer.append(None)
            except GLib.Error as error:
                answer.append(error)

        answers = [[] for _ in links]
        for link, answer in zip(links, answers):
            self.bus.call(NAME, OBJECT, INTERFACE, "Open", GLib.Variant("(asa{sv})", ([link], {})),
                          None, Gio.DBusCallFlags.NONE, LIMIT * 1000, None, on_answer, answer)
        # What the bus gets, it passes on before it answers this.
        self.ask_bus("GetId")
        return answers

    def set_service_environment(self, **variables):
        """Sets variables of the programs that the bus will start."""
        self.call_bus("UpdateActivationEnvironment", GLib.Variant("(a{ss})", (variables,)))

    def ask_bus(self, method, *arguments):
        signature = "(" + "".join("u" if isinstance(each, int) else "s" for each in arguments) + ")"
        return self.call_bus(method, GLib.Variant(signature, arguments)).unpack()[0]

    def owner(self):
        """The process that has the application's name, if any."""
        try:
            return self.ask_bus("GetConnectionUnixProcessID", NAME)
        except GLib.Error:
            return None

    def wait_for_owner(self, pid):
        """Waits until links go to this process; None: to nobody."""
        self.wait_until(lambda: self.owner() == pid)

    def wait_until(self, condition):
        """Waits for a condition that only a message of the bus makes true."""
        expired = []
        timer = GLib.timeout_add_seconds(LIMIT, expired.append, True)
        while not condition():
            assert not expired, "waited in vain"
            GLib.MainContext.default().iteration(True)
        GLib.source_remove(timer)

    def names_seen(self):
        """The owners that the name has had until now, in order; "" stands for none."""
        self.ask_bus("GetId")
        while GLib.MainContext.default().iteration(False):
            pass
        return self._owners

    def kill_bus(self):
        self.daemon.send(signal.SIGKILL)
        self.daemon.wait()

    # Pages.

    def page(self):
        """How the handler was started that reports next, as report.py tells it."""
        if not select.select([self._pages], [], [], LIMIT)[0]:
            raise TimeoutError("no page is opened")
        return types.SimpleNamespace(**json.loads(self._pages.recv(1 << 20)))

    def opened(self):
        """The URL that is opened next."""
        (url,) = self.page().arguments
        return url

    def opened_all(self, count):
        """The next URLs, sorted: handlers that were started in turn may report out of turn."""
        return sorted(self.opened() for _ in range(count))

    def install_handler(self, schemes=("http", "https"), command=None, lines=()):
        """Makes a program the default handler of URLs, by a desktop entry; it reports pages."""
        program = self.install_reporter("bin/browser")
        self.write("data/applications/browser.desktop", "\n".join([
            "[Desktop Entry]", "Type=Application", "Name=Browser",
            f"Exec={command or program + ' %u'}", *lines, ""]))
        self.write("config/mimeapps.list", "[Default Applications]\n" + "".join(
            f"x-scheme-handler/{scheme}=browser.desktop\n" for scheme in schemes))

    def quick_pages(self):
        """The lines of pages from now on, which handlers and openers only name: that costs less."""
        path = self.folder + "/opened"
        os.mkfifo(path)
        report = f'printf "%s\\n" "$*" > {path}\n'
        self.install_handler(command=self.install_script("bin/quick", report) + " %u")
        for opener in ("gio", "xdg-open"):
            self.install_script("openers/" + opener, report)
        # Open for writing, too, it never ends.
        return Lines(self.enter_context(open(path, "r+b", buffering=0)))

    def install_service(self, name, command):
        """Lets the bus, when it is started, start a program for a name."""
        self.write(f"services/{name}.service",
                    SERVICE_FILE.replace(SERVICE, command).replace(NAME, name))

    def install_reporter(self, path):
        """Installs a program that reports how it was started, as a page."""
        # For programs of another user, who may not read the tests.
        os.chmod(shutil.copy(HERE + "/report.py", self.folder), 0o644)
        return self.install_script(path, (
            f'exec /usr/bin/python3 -IBS {self.folder}/report.py {self.folder}/pages "$0" "$@"\n'))

    def install_script(self, path, text):
        return self.write(path, "#!/bin/sh\n" + text, 0o755)

    # What several tests expect.

    def expect_link(self, listener, page=PAGE):
        """Follows a link, which the listener is to log and open."""
        self.open(page_link(page))
        listener.expect_log(page_link(page))
        assert self.opened() == page

    def expect_log_only(self, listener, count=1):
        """Follows links whose page cannot be opened."""
        self.open(*[page_link(PAGE)] * count)
        listener.expect_log(*[page_link(PAGE)] * count)
        # The answer comes once the links before are done with.
        self.open()

    def expect_recovery(self, listener, before):
        """The next link is opened, by a program that has kept no descriptor and no child."""
        self.expect_link(listener, "https://page.test/next")
        self.wait_for_children(listener.pid)
        assert listener.descriptors() == before

    # How all this is made, and taken away.

    def write(self, path, text, mode=0o644):
        path = f"{self.folder}/{path}"
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)
        return path

    def _make_environment(self):
        kept = {name: value for name, value in os.environ.items()
                if name == "TZ" or re.fullmatch(r"[A-Z]+SAN_OPTIONS", name)}
        return {**kept, "PATH": "/usr/bin:/bin", "HOME": self.folder + "/home",
                "XDG_CONFIG_HOME": self.folder + "/config",
                "XDG_CONFIG_DIRS": self.folder + "/empty",
                "XDG_DATA_HOME": self.folder + "/data", "XDG_DATA_DIRS": STAGE + "/share",
                "XDG_CACHE_HOME": self.folder + "/cache", "TMPDIR": self.folder + "/tmp",
                "XDG_RUNTIME_DIR": self.folder + "/runtime"}

    def _start_screen(self):
        screen = self.spawn(*SCREEN, streams={"stderr": subprocess.DEVNULL})
        self._environment["DISPLAY"] = ":" + screen.output.next()
        self._environment["XDG_DATA_DIRS"] += ":/usr/local/share:/usr/share"
        self._environment["XDG_CONFIG_DIRS"] = "/etc/xdg"

    def start_bus(self, lines=""):
        address = f"unix:path={self.folder}/bus"
        config = self.write("bus.conf", f"""<busconfig>
  <type>session</type>
  <listen>{address}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{self.folder}/services</servicedir>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">1000000000</limit>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
  {lines}
</busconfig>
""")
        self._environment["DBUS_SESSION_BUS_ADDRESS"] = address
        # Programs that it starts write where it does; its own notices go to the file.
        with open(f"{self.folder}/bus.log", "w", encoding="utf-8") as log:
            self.daemon = self.spawn("dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                                     "--config-file=" + config, streams={"stderr": log})
        self.daemon.output.next()
        self.bus = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
            Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self._owners = []
        self.bus.signal_subscribe(
            BUS, BUS, "NameOwnerChanged", None, NAME, Gio.DBusSignalFlags.NONE,
            lambda *arguments: self._owners.append(arguments[5].unpack()[2]))

    def _stop(self):
        # The newest first, so that the bus, which ends those that it started, comes last.
        for process in reversed(self._processes):
            process.discard()

    def _expect_nothing_left(self):
        end_descendants()
        pages = []
        while select.select([self._pages], [], [], 0)[0]:
            pages.append(self.page().arguments)
        assert not pages, f"opened, too: {pages}"
