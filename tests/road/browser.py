"""A desktop with Chromium on it, for one test: a screen, a session bus and folders of its own.

Everything runs in a PID namespace, so that nothing is left when the test ends, however it ends. The
mount namespace beside it gives this Chromium, and no other, a managed policy.
"""

import base64
import http.server
import json
import os
import pathlib
import queue
import select
import shutil
import subprocess
import sys
import tempfile
import threading
import urllib.request

NAME = "com.vastel.Connect"
POLICY = pathlib.Path(__file__).resolve().parents[2] / "packaging/policies/chromium.json"
POLICY_ORIGIN = "https://phone.example.com"
LIMIT = 60  # Seconds, for each event that is waited for. Nothing takes as long on a healthy system.
TOOLS = ["chromium", "chromedriver", "Xvfb", "dbus-daemon", "gdbus", "gio", "xdg-open", "mount"]
KEPT_VARIABLES = ["PATH", "LANG", "LC_ALL", "TZ", "ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS",
                  "UBSAN_OPTIONS"]
CHROMIUM_SWITCHES = ["--no-sandbox", "--no-first-run", "--no-default-browser-check",
                     "--disable-background-networking", "--disable-component-update",
                     "--disable-sync", "--disable-gpu", "--disable-dev-shm-usage",
                     "--password-store=basic"]
BUS_CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <standard_session_servicedirs/>
  <policy context="default">
    <allow send_destination="*"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def enter_own_namespaces():
    """Starts this script again as the first process of namespaces of its own.

    Returns in that process, and also where the system permits no namespaces.
    """
    if os.getpid() == 1 and os.environ.get("CONNECT_NAMESPACES") == "own":
        return
    unshare = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if os.geteuid() != 0:
        unshare += ["--user", "--map-root-user"]
    if subprocess.run([*unshare, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
        os.environ["CONNECT_NAMESPACES"] = "own"
        os.execvp(unshare[0], [*unshare, sys.executable, "-B", *sys.argv])


def why_not():
    """What this system lacks for a test in a browser; empty when it lacks nothing."""
    missing = [tool for tool in TOOLS if shutil.which(tool) is None]
    if missing:
        return "not installed: " + " ".join(missing)
    if os.environ.get("CONNECT_NAMESPACES") != "own":
        return "the system permits no private namespaces"
    return ""


class Pages:
    """A web server that remembers the paths that it was asked for, in `requests`.

    Each page tells the server the address that it was opened with, once it is there, but for those
    whose texts stand in `texts`, by path.
    """

    def __init__(self):
        self.requests = []
        self.opened = queue.Queue()
        self.link = ""
        self.texts = {}
        pages = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                pages.requests.append(self.path)
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.end_headers()
                self.wfile.write(pages.texts.get(self.path, pages.text()).encode())

            def do_POST(self):
                length = int(self.headers["Content-Length"])
                pages.opened.put(self.rfile.read(length).decode())
                self.send_response(204)
                self.end_headers()

            def log_message(self, format, *args):  # pylint: disable=redefined-builtin
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.origin = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def text(self):
        return (f'<!DOCTYPE html><link rel="icon" href="data:,"><a id="link" href="{self.link}">call'
                '</a><script>onload = () => fetch("/opened", {method: "POST", body: location.href})'
                "</script>")

    def wait_for_page(self):
        """The address of the next page that is there."""
        try:
            return self.opened.get(timeout=LIMIT)
        except queue.Empty:
            raise AssertionError(f"no page came; asked for so far: {self.requests}") from None

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class Desktop:
    """The session: `environment` is what a program that is started in it gets."""

    def __init__(self, stage, current_desktop, permitted=True):
        """`permitted`: by policy, links of its pages open without a question."""
        self._stage = pathlib.Path(stage)
        self._permitted = permitted
        self._records = None
        self._processes = []
        self._folder = tempfile.TemporaryDirectory(prefix="connect-", ignore_cleanup_errors=True)
        self.pages = Pages()
        self.environment = {name: os.environ[name] for name in KEPT_VARIABLES if name in os.environ}
        for name in ["HOME", "TMPDIR", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME",
                     "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"]:
            self.environment[name] = str(self._make_folder(name.lower()))
        self.environment["XDG_DATA_DIRS"] = f"{self._stage}/share:/usr/local/share:/usr/share"
        self.environment["GVFS_DISABLE_FUSE"] = "1"
        if current_desktop:
            self.environment["XDG_CURRENT_DESKTOP"] = current_desktop
        self._switches = [*CHROMIUM_SWITCHES, f"--user-data-dir={self._make_folder('profile')}"]
        self._make_default(f"chromium {' '.join(self._switches)} %U")

    def start(self):
        """Brings up the screen, the bus and the browser, which shows the page with the link."""
        if self._permitted:
            self._permit_links_of_the_page()
        self.environment["DISPLAY"] = ":" + self._start_and_read_line(
            ["Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1024x768x24"])
        configuration = self._make_folder("bus") / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(folder=configuration.parent))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_and_read_line(
            ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address"])
        self.browser = Browser(self._start_chromedriver(), self._switches)

    def start_program(self, *arguments):
        """The program, as somebody starts it in a terminal. Returns once links reach it."""
        program = self._popen([f"{self._stage}/bin/vastel-connect", *arguments])
        self._run(["gdbus", "wait", "--session", "--timeout", str(LIMIT), NAME])
        return program

    def record_pages(self, scheme):
        """Makes a program the default browser that notes what it is given, for `recorded_page`."""
        folder = self._make_folder("recorder")
        os.mkfifo(folder / "pages")
        # Held open for both, so that neither side waits for the other.
        self._records = open(os.open(folder / "pages", os.O_RDWR), encoding="utf-8")
        program = folder / "browser"
        program.write_text(f"#!/bin/sh\nprintf '%s\\n' \"$*\" > {folder}/pages\n")
        program.chmod(0o755)
        self._make_default(f"{program} %u", scheme)

    def recorded_page(self):
        """The arguments with which the default browser is started next."""
        if not select.select([self._records], [], [], LIMIT)[0]:
            raise AssertionError("the default browser is not started")
        return self._records.readline().rstrip("\n")

    def has_program(self):
        """Whether a process has the application's name on the bus."""
        return self._call_bus("NameHasOwner") == "(true,)"

    def program_path(self):
        """The file of the process that has the name."""
        number = self._call_bus("GetConnectionUnixProcessID").strip("(,)").split()[-1]
        return os.path.realpath(f"/proc/{number}/exe")

    def close(self):
        if self._records is not None:
            self._records.close()
        for process in reversed(self._processes):
            process.terminate()
        for process in self._processes:
            process.wait(LIMIT)
            if process.stdout is not None:
                process.stdout.close()
        self.pages.close()
        self._folder.cleanup()

    def _make_folder(self, name):
        folder = pathlib.Path(self._folder.name) / name
        folder.mkdir(mode=0o700)
        return folder

    def _popen(self, command, **options):
        process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, encoding="utf-8", **options)
        self._processes.append(process)
        return process

    def _start_and_read_line(self, command):
        return self._popen(command, stderr=subprocess.DEVNULL).stdout.readline().strip()

    def _run(self, command):
        return subprocess.run(command, env=self.environment, check=True, stdout=subprocess.PIPE,
                              encoding="utf-8", timeout=LIMIT).stdout.strip()

    def _call_bus(self, method):
        return self._run(["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus",
                          "--object-path", "/org/freedesktop/DBus", "--method",
                          f"org.freedesktop.DBus.{method}", NAME])

    def _make_default(self, command, scheme="http"):
        """Makes this the command of the default browser for a scheme."""
        entry = pathlib.Path(self.environment["XDG_DATA_HOME"]) / "applications/browser.desktop"
        entry.parent.mkdir(exist_ok=True)
        entry.write_text("[Desktop Entry]\nType=Application\nName=Browser\n"
                         f"Exec={command}\nMimeType=x-scheme-handler/{scheme};\n")
        preferences = pathlib.Path(self.environment["XDG_CONFIG_HOME"]) / "mimeapps.list"
        preferences.write_text(
            f"[Default Applications]\nx-scheme-handler/{scheme}=browser.desktop\n")

    def _permit_links_of_the_page(self):
        """The policy with which an administrator saves people the browser's question."""
        settings = pathlib.Path("/etc/chromium")
        copy = self._make_folder("chromium")
        shutil.copytree(settings, copy, dirs_exist_ok=True)
        policies = copy / "policies/managed"
        policies.mkdir(parents=True, exist_ok=True)
        (policies / "screenpop.json").write_text(
            POLICY.read_text().replace(POLICY_ORIGIN, self.pages.origin))
        subprocess.run(["mount", "--bind", copy, settings], check=True)

    def _start_chromedriver(self):
        driver = self._popen(["chromedriver", "--port=0"], stderr=subprocess.DEVNULL)
        for line in driver.stdout:
            if "successfully on port" in line:
                return "http://127.0.0.1:" + line.split()[-1].rstrip(".")
        raise RuntimeError("chromedriver ended")


class Browser:
    """A session of Chromium, over WebDriver's own protocol."""

    def __init__(self, driver, switches):
        self._session = driver
        # A browser with that switch takes no page from a second start of it.
        options = {"binary": shutil.which("chromium"), "args": switches,
                   "excludeSwitches": ["enable-automation"]}
        session = self._command("POST", "/session", {
            "capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}})
        self._session = f"{driver}/session/{session['sessionId']}"

    def show(self, address):
        self._command("POST", "/url", {"url": address})

    def click(self, selector):
        self._command("POST", f"{self._element(selector)}/click", {})

    def type(self, selector, text):
        """Puts a text in the place of what stands in a field."""
        element = self._element(selector)
        self._command("POST", f"{element}/clear", {})
        self._command("POST", f"{element}/value", {"text": text})

    def execute(self, script, *arguments):
        """What a function of this text returns in the page."""
        return self._command("POST", "/execute/sync", {"script": script, "args": arguments})

    def addresses(self):
        """The address of each tab."""
        addresses = []
        for handle in self._command("GET", "/window/handles"):
            self._command("POST", "/window", {"handle": handle})
            addresses.append(self._command("GET", "/url"))
        return addresses

    def close(self):
        self._command("DELETE", "")

    def _element(self, selector):
        element = self._command("POST", "/element", {"using": "css selector", "value": selector})
        return f"/element/{next(iter(element.values()))}"

    def _command(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._session + path, data, method=method)
        with urllib.request.urlopen(request, timeout=LIMIT) as response:
            return json.load(response)["value"]


def encode_record(record):
    """The base64 of a record, with all three signs of base64 in it."""
    text = json.dumps({"SubHeader": ">>>???", **record})
    while len(text) % 3 == 0:
        text += " "
    return base64.b64encode(text.encode()).decode()
