"""The life of an installation: from a system without the program to one without it."""

import re

from packages import NAME, output_of, package

from model import page_link
from processes import ROOT, wait_for_end

# What apt and dpkg remember of all that they did.
MEMORIES = re.compile(r"/var/cache/apt/.*|/var/lib/apt/lists/auxfiles|/var/lib/dpkg/status-old|"
                      r"/var/cache/debconf/tmp\.ci|"
                      r"/var/log/(alternatives\.log|apt/.*|dpkg\.log)")
DEPLOY = (ROOT / "docs/deploy.md").read_text(encoding="utf-8")
OPENERS = [("gio open", "GNOME"), ("xdg-open", "GNOME"), ("xdg-open", "")]


def expect_page(tree, page, *command, **environment):
    """Follows a link to the page by a command, in which LINK stands for it."""
    link = page_link(page, "screenpop:")
    tree.run(*(word.replace("LINK", link) for word in command), agent=True, **environment)
    assert tree.page().url == page


def expect_openers_work(tree):
    """Follows a link by each; xdg-open has a road of its own where it knows no desktop."""
    for opener, desktop in OPENERS:
        expect_page(tree, f"https://page.test/{opener[:3]}{desktop}", *opener.split(), "LINK",
                    XDG_CURRENT_DESKTOP=desktop, DISPLAY=":none")


def end(tree, pid):
    process = tree.host_pid(pid)
    tree.run("sh", "-c", 'kill "$1"', "-", str(pid))
    wait_for_end(process)


def next_deb(folder):
    """The Debian package again, as that of the same release for the next release of Debian."""
    folder /= "next"
    output_of("dpkg-deb", "--raw-extract", package("vastel-connect_*.deb"), folder)
    output_of("sed", "--in-place", r"/^Version:/s/\(+[a-z]*\)[0-9.]*$/\199/", folder / "DEBIAN/control")
    output_of("dpkg-deb", "--root-owner-group", "--build", folder)
    return f"{folder}.deb"


def test_installs_upgrades_and_leaves(tree, tmp_path):
    before = tree.files()
    tree.install(package("vastel-connect_*.deb"))
    tree.start_bus()

    assert tree.owner() is None
    expect_page(tree, "https://page.test/cold", "gdbus", "call", "--session", "--dest", NAME,
                "--object-path", "/com/vastel/Connect", "--method",
                "org.freedesktop.Application.Open", "['LINK']", "{}")
    first = tree.owner()
    expect_openers_work(tree)
    tree.write("/tmp/check", re.search(r"(?s)```sh\n(command -v .*?)```", DEPLOY)[1].encode())
    tree.run("sh", "-c", re.search("(?m)^runuser .*$", DEPLOY)[0])
    assert tree.owner() == first
    tree.run("sh", "-c", (ROOT / "debian/tests/smoke").read_text(), agent=True)

    tree.install(next_deb(tmp_path))
    expect_openers_work(tree)
    assert tree.owner() == first
    assert not tree.runs_installed(first)
    end(tree, first)
    expect_openers_work(tree)
    assert tree.runs_installed(tree.owner())

    tree.apt("remove", "vastel-connect")
    # The program goes on until it is ended. Nobody takes the scheme, while the packages that keep
    # indexes are still there.
    end(tree, tree.owner())
    assert "No default applications" in tree.run("gio", "mime", "x-scheme-handler/screenpop",
                                                 agent=True)
    # Nothing is found.
    tree.run("grep", "--recursive", "screenpop", "/etc", "/usr/share", status=1)
    # apt has forgotten it by then: there is nothing to purge.
    tree.run("dpkg", "--purge", "vastel-connect")
    tree.apt("autoremove", "--purge")
    after = tree.files()
    changed = {path for path in before.keys() | after.keys() if before.get(path) != after.get(path)}
    assert {path for path in changed if not MEMORIES.fullmatch(path)} == set()


def test_one_repository_holds_the_builds_for_two_releases(tmp_path):
    debs = {"own": package("vastel-connect_*.deb"), "next": next_deb(tmp_path)}
    (tmp_path / "conf").mkdir()
    (tmp_path / "conf/distributions").write_text("".join(
        f"Codename: {suite}\nComponents: main\nArchitectures: amd64 arm64 i386\n\n" for suite in debs))
    for suite, deb in debs.items():
        output_of("reprepro", "--silent", "--basedir", tmp_path, "includedeb", suite, deb)


def test_the_archive_takes_links(tree):
    """After the commands that docs/deploy.md gives."""
    # As Debian's installer leaves it.
    tree.run("chmod", "2775", "/usr/local")
    folders = ["stat", "--format=%n %a %u:%g", "/", "/usr", "/usr/local", "/usr/local/share"]
    before = tree.run(*folders)
    tree.copy(package("vastel-connect-*.tar.gz"), "/tmp/archive.tar.gz")
    tree.apt("install", "--no-install-recommends", "desktop-file-utils", "libglib2.0-bin")
    tree.run("tar", "--no-overwrite-dir", "-C", "/", "-xzf", "/tmp/archive.tar.gz")
    tree.run("update-desktop-database", "/usr/local/share/applications")
    assert tree.run(*folders) == before

    tree.start_bus()
    expect_page(tree, "https://page.test/", "gio", "open", "LINK")
    assert tree.run("readlink", f"/proc/{tree.owner()}/exe") == "/usr/local/bin/vastel-connect\n"
