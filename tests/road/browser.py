"""Chromium on a private desktop, and the site of a web client in it."""

import functools
import http.server
import json
import os
import pathlib
import queue
import shutil
import subprocess
import tempfile
import threading
import urllib.request

import pytest

from processes import LIMIT, ROOT

POLICIES = ROOT / "packaging/policies"
POLICY_ORIGIN = "https://phone.example.com"
CHROMIUM_SWITCHES = ["--no-sandbox", "--no-first-run", "--no-default-browser-check",
                     "--disable-background-networking", "--disable-component-update",
                     "--disable-sync", "--disable-gpu", "--disable-dev-shm-usage",
                     "--password-store=basic"]
# A name that is not loopback's, for a site that is.
OTHER_NAME = "--host-resolver-rules=MAP phone.test 127.0.0.1"

# Lays a folder over /etc, for one command and what it starts.
OVER_ETC = ["unshare", "--mount", *(["--map-current-user", "--keep-caps"] if os.geteuid() else []),
            "sh", "-ec", 'mount -t overlay overlay -o lowerdir="$0":/etc /etc; exec "$@"']


@functools.cache
def may_mount():
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run([*OVER_ETC, folder, "true"], stderr=subprocess.DEVNULL,
                              check=False).returncode == 0


def need(*programs):
    """Skips a test where programs are missing, or where no policy can be put before a browser."""
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        pytest.skip("not installed: " + " ".join(missing))
    if not may_mount():
        pytest.skip("this machine refuses namespaces, or to lay a folder over another in them")


def with_policy(desktop, command, path, policy, origin):
    """The command of a browser that finds a policy file of ours at a path below /etc, in which the
    web client has this origin; without one, there is no such file."""
    if origin is None:
        return command
    files = pathlib.Path(desktop.folder, "etc")
    (files / path).parent.mkdir(parents=True)
    text = (POLICIES / policy).read_text()
    (files / path).write_text(text.replace(POLICY_ORIGIN, origin))
    return [*OVER_ETC, files, *command]


class Site:
    """A web client's site, on loopback, which remembers the paths it was asked for in `requests`.

    Each page has the link and tells the site the address that it was opened with, once it is there,
    but for those whose texts stand in `texts`, by path.
    """

    def __init__(self, desktop):
        self.requests = []
        self.link = ""
        self.texts = {}
        self._reports = queue.Queue()
        site = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                site.requests.append(self.path)
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.end_headers()
                self.wfile.write(site.texts.get(self.path, site.text()).encode())

            def do_POST(self):
                length = int(self.headers["Content-Length"])
                site._reports.put(self.rfile.read(length).decode())
                self.send_response(204)
                self.end_headers()

            def log_message(self, format, *args):  # pylint: disable=redefined-builtin
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.origin = f"http://127.0.0.1:{server.server_port}"
        self.plain_origin = f"http://phone.test:{server.server_port}"
        threading.Thread(target=server.serve_forever, daemon=True).start()
        desktop.callback(server.server_close)
        desktop.callback(server.shutdown)

    def text(self):
        return (f'<!DOCTYPE html><link rel="icon" href="data:,"><a id="link" href="{self.link}">call'
                '</a><script>onload = () => fetch("/report", {method: "POST", body: location.href})'
                "</script>")

    def report(self):
        """What a page tells next: its address, once it is there."""
        try:
            return self._reports.get(timeout=LIMIT)
        except queue.Empty:
            raise AssertionError(f"no page came; asked for so far: {self.requests}") from None


class Chromium:
    """A session of Chromium, over WebDriver's own protocol."""

    def __init__(self, desktop, permitted=None, **environment):
        """`permitted`: the origin whose links open without a question, by policy. `environment`:
        changes of its own to the desktop's."""
        need("chromium", "chromedriver", "Xvfb")
        switches = [*CHROMIUM_SWITCHES, f"--user-data-dir={desktop.folder}/chromium"]
        # What starts it again, for it to open a page.
        self.command = f"chromium {' '.join(switches)} %U"
        driver = desktop.spawn(
            *with_policy(desktop, ["chromedriver", "--port=0"],
                         "chromium/policies/managed/screenpop.json", "chromium.json", permitted),
            streams={"stderr": subprocess.DEVNULL}, **environment)
        while "successfully on port" not in (line := driver.output.next()):
            pass
        self._session = f"http://127.0.0.1:{line.split()[-1].rstrip('.')}"
        # A browser with that switch takes no page from a second start of it.
        options = {"binary": shutil.which("chromium"), "args": [*switches, OTHER_NAME],
                   "excludeSwitches": ["enable-automation"]}
        session = self._command("POST", "/session", {
            "capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}})
        self._session += f"/session/{session['sessionId']}"
        desktop.callback(self._command, "DELETE", "")

    def show(self, address):
        self._command("POST", "/url", {"url": address})

    def click(self, selector):
        self._command("POST", f"{self._element(selector)}/click", {})

    def type(self, selector, text):
        """Puts a text in the place of what stands in a field. (Some drivers type no character
        outside the basic plane.)"""
        self.execute("""
            const field = document.querySelector(arguments[0]);
            field.value = arguments[1];
            field.dispatchEvent(new Event("input", { bubbles: true }));""", selector, text)

    def execute(self, script, *arguments):
        """What a function of this text returns in the page."""
        return self._command("POST", "/execute/sync", {"script": script, "args": arguments})

    def devtools(self, command, **parameters):
        """A command of the developer tools' protocol."""
        self._command("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def addresses(self):
        """The address of each tab, sorted."""
        addresses = []
        for handle in self._command("GET", "/window/handles"):
            self._command("POST", "/window", {"handle": handle})
            addresses.append(self._command("GET", "/url"))
        return sorted(addresses)

    def _element(self, selector):
        element = self._command("POST", "/element", {"using": "css selector", "value": selector})
        return f"/element/{next(iter(element.values()))}"

    def _command(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._session + path, data, method=method)
        with urllib.request.urlopen(request, timeout=LIMIT) as response:
            return json.load(response)["value"]
