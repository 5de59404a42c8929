"""The default handler that the program finds by itself on KDE, against what KDE's own opener starts
in the same folders.

Whenever our answer is plain, KDE's opener starts the same program with the same arguments.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess

import pytest

from clients import KDE_OPENER
from desktop import MENU
from handler_generator import CONFIG_FOLDERS, Generator
from handler_layout import Answer, Layout

LAYOUTS = 600
OPENER = shutil.which(KDE_OPENER)
pytestmark = pytest.mark.skipif(not OPENER, reason="not installed: " + KDE_OPENER)
WEB = ("http", "https")

# Of KDE 6 and of KDE 5.
MENUS = {f"{folder}/menus/{prefix}applications.menu": MENU
         for folder in CONFIG_FOLDERS for prefix in ("", "kf5-")}
# The forms of KDE's older setting for the browser.
BROWSERS = ["", "alpha.desktop", "beta.desktop", "alpha", "!@/bin/two --set", "!two", "none.desktop"]


def answers(files, environment=None, url="https://127.0.0.1/", if_plain=True):
    """Our answer, and that of KDE's opener, which is asked only when ours is plain: each the program
    that is started and its arguments without its name, which KDE writes as a path."""
    layout = Layout(MENUS | files, {"XDG_CURRENT_DESKTOP": "KDE"} | (environment or {}), url)
    launch = lambda answer: answer.launch[:1] + answer.launch[2:]
    with layout.made() as (environment, root):
        ours = Answer.ours(layout, environment, root)
        if if_plain and not ours.application:
            return None, None
        os.mkdir(f"{root}/run", 0o700)
        own = {"XDG_CACHE_HOME": f"{root}/cache", "XDG_RUNTIME_DIR": f"{root}/run",
               "QT_QPA_PLATFORM": "offscreen"}
        done = subprocess.run([OPENER, url], env=environment | own, cwd=root, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        # Its end is that of the handler's output.
        return (launch(ours) if ours.application else None,
                launch(Answer.from_bytes(b"\0" + done.stdout, root)))


class KdeGenerator(Generator):
    """Layouts of KDE, in which each entry puts its own path on its command line."""

    urls = ["http://127.0.0.1:8080/?a=1", "https://127.0.0.1:8080/#a", "made:page"]

    def make_environment(self):
        return super().make_environment() | {
            "XDG_CURRENT_DESKTOP": self.rng.choice(["KDE", "KDE", "KDE", "Made:KDE"])}

    def add_associations(self, folder):
        super().add_associations(folder)
        if self.often(0.05):
            self.files[f"{folder}/kde-mimeapps.list"] = self.association_text(
                ["Default Applications", "Added Associations", "Removed Associations"])
        if folder in CONFIG_FOLDERS and self.often(0.3):
            self.files[f"{folder}/kdeglobals"] = (
                f"[General]\nBrowserApplication={self.rng.choice(BROWSERS)}\n")

    def association_text(self, groups):
        """Most choose the same for both schemes of the web."""
        def add_other(match):
            (other,) = {*WEB} - {match[1]}
            ids = match[2] if self.often(0.9) else "=" + self.id_list()
            return match[0] if self.often(0.1) else (
                f"{match[0]}\nx-scheme-handler/{other}{ids}")

        text = super().association_text(groups)
        return re.sub("(?m)^x-scheme-handler/(https?)(.*)$", add_other, text)

    def add_entry(self, path):
        if not path.isprintable():
            return  # See test_a_choice_in_a_folder_that_kde_6_does_not_read.
        super().add_entry(path)
        name = re.sub("[^a-z0-9/.-]", "_", path)
        text = re.sub("(?m)^(Exec ?=.*) (%[uU])", rf"\1 --of={name} \2", self.files[path])
        if self.often(0.8):
            types = "".join(f"x-scheme-handler/{scheme};" for scheme in (*WEB, "made"))
            text = text.replace("[Desktop Action", f"MimeType={types}\n[Desktop Action", 1)
        self.files[path] = text


def examine(seed):
    layout = KdeGenerator(seed).layout()
    return layout, *answers(layout.files, layout.environment, layout.url)


def test_many_layouts():
    plain = 0
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as workers:
        for layout, ours, kde in workers.map(examine, range(LAYOUTS), chunksize=8):
            assert ours == kde, layout
            plain += ours is not None
    print(f"{plain} of {LAYOUTS} answers are plain")
    assert plain > LAYOUTS / 8


ENTRIES = {f"share2/applications/{name}.desktop":
           f"[Desktop Entry]\nType=Application\nName=A\nExec={program} %u\n"
           for name, program in (("alpha", "one"), ("beta", "two"))}


def choices(**ids):
    return {"config/mimeapps.list": "[Default Applications]\n" + "".join(
        f"x-scheme-handler/{scheme}={name}.desktop\n" for scheme, name in ids.items())}


def test_the_choice_for_https_is_that_for_http():
    files = ENTRIES | choices(https="beta", http="alpha")
    assert answers(files, url="http://127.0.0.1/", if_plain=False) == (
        None, ["@/bin/two", "http://127.0.0.1/"])


def test_a_choice_in_a_folder_that_kde_6_does_not_read():
    """A name in it is not UTF-8. The choice is opened there as well, on purpose: KDE's opener would
    open another application, or nothing."""
    ours, kde = answers(ENTRIES | choices(http="beta", https="beta") | {
        "share2/applications/\udcff": ""})
    assert ours == ["@/bin/two", "https://127.0.0.1/"]
    assert kde in [ours, []]
