"""What becomes of a page that is a local file, with the openers of the desktops."""

import os
import shutil

import pytest

from clients import KDE_OPENER, session_variables
from model import page_link

# Types of the files below, for an application that is to open them.
TYPES = ["application/x-desktop", "application/x-executable", "application/x-pie-executable",
         "application/x-sharedlib", "application/x-shellscript", "text/plain"]


def install_files(desktop):
    """Files that would report, were they run or followed; their pages."""
    ran = desktop.install_reporter("bin/ran")
    application = f"[Desktop Entry]\nType=Application\nName=A\nExec={ran} %u\n"
    link = "[Desktop Entry]\nType=Link\nName=L\nURL="
    loop = page_link(f"file://{desktop.folder}/home/loop.desktop")
    for name, text in {"application.desktop": application, "link.desktop": link + "https://page.test/",
                       "loop.desktop": link + loop, "script.sh": f"#!/bin/sh\nexec {ran}\n"}.items():
        desktop.write("home/" + name, text)
        desktop.write("home/x-" + name, text, 0o755)
    # A program that anybody has, and that can be told to report.
    shutil.copy("/bin/bash", desktop.folder + "/home/program")
    desktop.write("started", f'case $0 in */program) exec {ran} ;; esac')
    names = sorted(os.listdir(desktop.folder + "/home"))
    return [f"file://{folder}/{name}" for folder in (desktop.folder + "/home", "/proc/self/cwd")
            for name in names]


@pytest.mark.parametrize("handler", [True, False])
@pytest.mark.parametrize("name, opener", [("XFCE", "exo-open"), ("KDE", KDE_OPENER), ("GNOME", "gio")])
def test_a_file_is_opened_by_its_type_and_never_run_or_followed(new_desktop, name, opener, handler):
    if not shutil.which(opener):
        pytest.skip("not installed: " + opener)
    desktop = new_desktop(screen=True)
    pages = install_files(desktop)
    if handler:
        editor = desktop.install_reporter("bin/editor")
        desktop.write("data/applications/editor.desktop",
                      f"[Desktop Entry]\nType=Application\nName=Editor\nExec={editor} %f\n")
        with open(desktop.folder + "/config/mimeapps.list", "a", encoding="utf-8") as choices:
            choices.writelines(f"{each}=editor.desktop\n" for each in TYPES)
    # All that the machine has but its applications.
    os.mkdir(desktop.folder + "/share")
    for each in {*os.listdir("/usr/share")} - {"applications"}:
        os.symlink(f"/usr/share/{each}", f"{desktop.folder}/share/{each}")
    listener = desktop.listen("-log", **session_variables(name), XDG_DATA_DIRS=desktop.folder + "/share",
                              BASH_ENV=desktop.folder + "/started")
    for page in pages:
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
        if handler:
            report = desktop.page()
            assert (os.path.basename(report.program), report.arguments) == \
                ("editor", [page.removeprefix("file://")])
    # Whatever else was started would be reported in excess.
    desktop.wait_for_children(listener.pid)
    desktop.expect_link(listener)
