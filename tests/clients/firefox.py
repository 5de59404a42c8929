"""Firefox on a private desktop, driven by its own Marionette server."""

import json
import os
import socket
import subprocess

from browser import need, with_policy
from processes import LIMIT

# Nothing but what a test asks for: no first pages, no reports, no updates, no look-ups.
PREFERENCES = {
    "marionette.port": 0,
    "browser.shell.checkDefaultBrowser": False,
    "browser.startup.homepage_override.mstone": "ignore",
    "browser.startup.page": 0,
    "browser.aboutwelcome.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "toolkit.telemetry.enabled": False,
    "app.normandy.enabled": False,
    "browser.safebrowsing.malware.enabled": False,
    "browser.safebrowsing.phishing.enabled": False,
    "extensions.update.enabled": False,
    "network.captive-portal-service.enabled": False,
    "network.connectivity-service.enabled": False,
    # Dialogs take no key at first, lest somebody types into them unawares.
    "security.dialog_enable_delay": 0,
    # A name that is not loopback's, for a site that is.
    "network.dns.localDomains": "phone.test",
}
# Presses a button of the question of a tab, once it is there, and returns its text.
ANSWER = """const [button, remember, done] = arguments;
    const box = gBrowser.getTabDialogBox(gBrowser.selectedBrowser);
    const answer = () => {
      const page = box.getTabDialogManager()._dialogs[0]?._frame.contentDocument;
      const pressed = page?.querySelector("dialog")?.getButton?.(button);
      const text = page?.getElementById("description")?.textContent;
      if (!pressed || pressed.disabled || !text) return requestAnimationFrame(answer);
      if (remember) page.getElementById("remember").click();
      pressed.click();
      done(text);
    };
    answer();"""


def make_profile(desktop):
    """A folder with the preferences of a Firefox of its own."""
    lines = [f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
             for name, value in PREFERENCES.items()]
    return os.path.dirname(desktop.write("firefox/user.js", "".join(lines)))


class Firefox:
    def __init__(self, desktop, permitted=None):
        """`permitted`: the origin whose links open without a question, by policy."""
        need("firefox-esr", "Xvfb")
        profile = make_profile(desktop)
        command = ["firefox-esr", "--marionette", "--remote-allow-system-access", "--profile", profile]
        process = desktop.spawn(
            *with_policy(desktop, command, "firefox/policies/policies.json", "firefox.json", permitted),
            streams={"stderr": subprocess.DEVNULL})
        while "Listening on port" not in (line := process.output.next()):
            pass
        self._socket = socket.create_connection(("127.0.0.1", int(line.split()[-1])), LIMIT)
        self._stream = self._socket.makefile("rb")
        self._count = 0
        self._receive()
        self._call("WebDriver:NewSession", {})
        desktop.callback(self._quit)

    def show(self, address):
        self._call("WebDriver:Navigate", {"url": address})

    def click(self, selector):
        element = self._call("WebDriver:FindElement", {"using": "css selector", "value": selector})
        (identifier,) = element["value"].values()
        self._call("WebDriver:ElementClick", {"id": identifier})

    def answer(self, button, remember=False):
        """Answers the question about a link by "accept" or "cancel". Returns its text."""
        self._call("Marionette:SetContext", {"value": "chrome"})
        text = self._call("WebDriver:ExecuteAsyncScript", {
            "script": ANSWER, "args": [button, remember]})["value"]
        self._call("Marionette:SetContext", {"value": "content"})
        return text

    def _quit(self):
        self._call("Marionette:Quit", {"flags": ["eForceQuit"]})
        self._stream.close()
        self._socket.close()

    def _call(self, command, parameters):
        self._count += 1
        text = json.dumps([0, self._count, command, parameters]).encode()
        self._socket.sendall(b"%d:%s" % (len(text), text))
        kind, count, error, result = self._receive()
        assert (kind, count) == (1, self._count)
        assert error is None, error
        return result

    def _receive(self):
        """A message: its length, a colon, and so many bytes of JSON."""
        length = b""
        while (byte := self._stream.read(1)) != b":":
            assert byte, "Firefox has ended"
            length += byte
        return json.loads(self._stream.read(int(length)))
