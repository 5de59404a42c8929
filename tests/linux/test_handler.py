"""The default handler that the program finds by itself, against GIO's choice in the same folders.

Whenever our answer is plain, GIO chooses the same application and starts it with the same
arguments; in everyday folders it always is. What is not plain is left to the desktop's openers.
"""

import concurrent.futures
import os

import pytest

from handler_generator import (HARMLESS_KEYS, HARMLESS_LINES, ODD_EXECS, ODD_KEYS, ODD_LINES,
                               Generator)
from handler_layout import FIFO, URL, Layout

LAYOUTS = 600
CHOICES = "config/mimeapps.list"
CACHE = "share2/applications/mimeinfo.cache"
GROUPS = {"default": "Default Applications", "added": "Added Associations",
          "removed": "Removed Associations", "cache": "MIME Cache"}


def entry(command="one %u", more=""):
    return f"[Desktop Entry]\nType=Application\nName=A\nExec={command}\n{more}\n"


def lists(text):
    """Files by what they say, such as "etc1/mimeapps.list: default tel=alpha;beta". What names no
    scheme is about http, and what names no file is of the user's choices or of the "cache"."""
    files = {}
    for part in text.split(", "):
        path, _, says = part.rpartition(": ")
        group, _, ids = says.partition(" ")
        scheme, _, ids = ids.rpartition("=")
        path = path or (CACHE if group == "cache" else CHOICES)
        names = ";".join(each and each + ".desktop" for each in ids.split(";"))
        files[path] = (files.get(path, "")
                       + f"[{GROUPS[group]}]\nx-scheme-handler/{scheme or 'http'}={names}\n")
    return files


# Applications whose entries name them on the command line.
ENTRIES = {"share2/applications/alpha.desktop": entry("one --alpha %u"),
           "share2/applications/beta.desktop": entry("two --beta %U")}


def choose(text):
    """The user's default is the application "alpha", whose entry is this."""
    return (ENTRIES | lists("default alpha, etc1/mimeapps.list: default beta")
            | {"data/applications/alpha.desktop": text})


def expect_plain(application, files, environment=None, **more):
    layout = Layout(files, environment, **more)
    ours, gio = layout.answers()
    assert ours.application == application, str(layout)
    assert ours == gio, str(layout)
    return ours.launch


def expect_not_plain(files, environment=None, **more):
    layout = Layout(files, environment, **more)
    assert layout.ours().application is None, str(layout)


# Which of two applications is chosen. The desktop is "Made:GNOME".
@pytest.mark.parametrize("chosen, says", [
    ("beta", "default beta, etc1/mimeapps.list: default alpha, cache alpha;beta;"),
    ("beta", "config/gnome-mimeapps.list: default alpha, config/made-mimeapps.list: default beta"),
    ("beta", "share2/applications/defaults.list: default beta, cache alpha;beta;"),
    ("beta", "default missing;beta;, etc1/mimeapps.list: default alpha"),
    ("beta", "default missing, default beta"),
    ("beta", "removed alpha, cache alpha;beta;"),
    ("beta", "config/mimeinfo.cache: cache alpha, cache beta"),
    ("alpha", "config/made-mimeapps.list: removed alpha, cache alpha;beta;")])
def test_choice(chosen, says):
    expect_plain(chosen, ENTRIES | lists(says))


@pytest.mark.parametrize("chosen, files, environment", [
    # Comments, blank lines, blanks around the sign, the key of a locale.
    ("beta", {CHOICES: "\n# [Default Applications]\n\n[Default Applications]\n"
                       "#x-scheme-handler/http=alpha.desktop\n\n"
                       "x-scheme-handler/http =\t beta.desktop"}, {}),
    ("beta", {CHOICES: "[Default Applications]\nx-scheme-handler/http=beta.desktop\n"
                       "x-scheme-handler/http[de]=alpha.desktop\n"},
     {"LANGUAGE": "de", "LC_ALL": "de_DE.UTF-8"}),
    # The environment.
    ("alpha", {"home/.config/mimeapps.list": lists("x: default alpha")["x"],
               "home/.local/share/applications/alpha.desktop": entry()},
     {"XDG_CONFIG_HOME": None, "XDG_DATA_HOME": ""}),
    ("beta", lists("etc2/mimeapps.list: default beta"),
     {"XDG_CONFIG_DIRS": "@/bin/one:@/etc1/::@/etc2//", "XDG_DATA_DIRS": "@/none:@/share2/:"}),
    *(("beta", lists("config/gnome-mimeapps.list: default alpha, default beta"),
       {"XDG_CURRENT_DESKTOP": value}) for value in (None, "", ":")),
    ("beta", lists("cache beta") | {"config/kdeglobals": "[KDE URL Restrictions]\n"},
     {"XDG_CURRENT_DESKTOP": "GNOME:KDEX"}),
    ("alpha-beta.desktop", lists("default alpha-beta.desktop") |
     {"share1/applications/alpha-beta.desktop.desktop": entry()}, {}),
    # No entry is looked for where the choices are.
    ("alpha", lists("default alpha") | {"config/alpha.desktop": entry("two %u")}, {}),
    # The longest list.
    ("alpha", {CHOICES: lists("default alpha")[CHOICES][:-1] + ";" * 16371}, {})])
def test_choice_by_files_and_environment(chosen, files, environment):
    expect_plain(chosen, ENTRIES | files, environment)


@pytest.mark.parametrize("files", [
    # Lines that end as DOS has it, blanks in a list, a broken file, a list that is too long.
    {CHOICES: lists("default alpha")[CHOICES].replace("\n", "\r\n")},
    {CHOICES: lists("default alpha;beta")[CHOICES].replace(";", " ;")},
    {CHOICES: lists("default alpha")[CHOICES] + "broken\n"},
    {CHOICES: lists("default alpha")[CHOICES][:-1] + ";" * 16372},
    # Names that are none, or paths.
    {CHOICES: lists("default alpha")[CHOICES].replace(".desktop", ""),
     "share2/applications/alpha": entry()},
    lists("default ../applications/alpha"),
    lists("default sub-alpha") | {"share1/applications/sub/alpha.desktop": entry()},
    # A folder "sub" could hold an "alpha.desktop": which of both is meant depends on the reader.
    *({"share1/applications/sub--alpha.desktop": entry(), f"share1/applications/{folder}/file": "",
       "config/sub--alpha.desktop": entry()} | lists("default sub--alpha")
      for folder in ("sub", "sub-"))])
def test_odd_lists_are_not_plain(files):
    expect_not_plain(ENTRIES | lists("etc1/mimeapps.list: default beta") | files)


@pytest.mark.parametrize("text", [
    *map(entry, ODD_EXECS), *(entry(more=line) for line in ODD_KEYS + ODD_LINES),
    "[Other]\n" + entry(), "Name=A\n" + entry()])
def test_odd_entries_are_not_plain(text):
    # From one of these folders, "bin/one" would be found.
    expect_not_plain(choose(text) | {"bin/plain": "", "bin/folder/file": ""}, {"PATH": "@/bin:@/"})


@pytest.mark.parametrize("line", HARMLESS_KEYS + HARMLESS_LINES)
def test_lines_without_effect(line):
    expect_plain("alpha", choose(entry(more=line)))


# How the application "alpha" is started.
@pytest.mark.parametrize("command, launch", [
    ("one -a %u -b", ["@/bin/one", "one", "-a", URL, "-b"]),
    ("  @/bin/one   %U  ", ["@/bin/one", "@/bin/one", URL]),
    ("two %u\nExec=one --last %u", ["@/bin/one", "one", "--last", URL]),
    # What browsers' entries hold.
    ("@/usr/bin/chromium run --branch=stable --arch=x86_64 --command=firefox --file-forwarding "
     "org.mozilla.firefox @@u %u @@", None),
    ("@/bin/env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/firefox_firefox.desktop "
     "/snap/bin/firefox %u", None)])
def test_launch(command, launch):
    found = expect_plain("alpha", choose(entry(command)),
                         programs=("one", "two", "env", "../usr/bin/chromium"))
    assert launch in (None, found)


@pytest.mark.parametrize("path, found", [
    ("@/none:@/bin:@/later", ["@/bin/one"]), (":.:../later:@/bin", ["@/bin/one"]),
    (":.:../later:", []), ("bin", []), ("", []), (None, [])])
def test_the_program_is_the_first_of_an_absolute_folder(path, found):
    programs = ("one", "../one", "../later/one")
    assert Layout(choose(entry()), {"PATH": path}, programs=programs).ours().launch[:1] == found


@pytest.mark.parametrize("name, value", [
    ("HOME", None), ("HOME", "home"), ("XDG_CONFIG_HOME", "config"), ("XDG_DATA_HOME", "data"),
    ("XDG_CONFIG_DIRS", "@/none:etc1"), ("XDG_DATA_DIRS", "@/share2:share1"), ("SNAP", "/snap/x"),
    ("GTK_USE_PORTAL", "1"), ("XDG_CURRENT_DESKTOP", "../config/made"),
    ("XDG_CURRENT_DESKTOP", "Made:a\tb"), ("XDG_CURRENT_DESKTOP", "Other:kDe")])
def test_an_odd_environment_is_not_plain(name, value):
    expect_not_plain(choose(entry()), {name: value})


# All of these are read before the choice is made.
@pytest.mark.parametrize("content", ["\x7fELF\x02\x01\x01", FIFO])
@pytest.mark.parametrize("path", [
    "config/made-mimeapps.list", CHOICES, "etc1/mimeapps.list", "data/applications/mimeapps.list",
    "share2/applications/defaults.list", "data/applications/alpha.desktop", CACHE])
def test_a_hostile_file_is_not_plain(path, content):
    choice = "share2/applications/mimeapps.list: " + ("added" if path == CACHE else "default")
    expect_not_plain(ENTRIES | lists(choice + " alpha") | {path: content})


def test_no_file_behind_the_choice_is_read():
    files = choose(entry()) | {"etc1/mimeapps.list": FIFO, CACHE: FIFO}
    assert Layout(files).ours().application == "alpha"


ALL = "default alpha, default https=alpha, default tel=alpha"


# On KDE an answer is plain only where its own opener gives the same one.
@pytest.mark.parametrize("url, chosen, files", [
    ("http:", "alpha", lists(ALL)), ("https:", "alpha", lists(ALL)), ("tel:", "alpha", lists(ALL)),
    # It takes the handler of https for http.
    ("http:", None, lists(ALL + ", default https=beta")),
    ("http:", None, lists(ALL + ", default https=missing")),
    ("https:", "beta", lists(ALL + ", default https=beta")),
    # It does not read these files.
    ("https:", "alpha", lists(ALL + ", config/kde-mimeapps.list: default tel=beta")),
    ("tel:", None, lists(ALL + ", config/kde-mimeapps.list: default tel=beta")),
    ("tel:", None, lists("share2/applications/defaults.list: default tel=alpha")),
    # What is added or removed has a say.
    ("tel:", "alpha", lists(ALL + ", added tel=beta")),
    ("tel:", None, lists(ALL + ", removed tel=beta")),
    ("tel:", "alpha", lists("etc1/mimeapps.list: default tel=alpha")),
    ("tel:", None, lists("etc1/mimeapps.list: default tel=alpha, added tel=beta")),
    # Where nobody has chosen, or what is chosen is gone, it has an order of its own.
    ("tel:", None, lists("cache tel=alpha")), ("tel:", None, lists("default tel=missing;alpha")),
    # It may be told not to open some URLs, but not by a key.
    ("tel:", "alpha",
     lists(ALL) | {"etc1/kdeglobals": "[A][B]\n#\udcff\nKDE URL Restrictions=1\n"})])
def test_choice_on_kde(url, chosen, files):
    layout = Layout(ENTRIES | files, {"XDG_CURRENT_DESKTOP": "Other:KDE"}, url + "1")
    assert layout.ours().application == chosen


def test_agrees_with_gio_in_many_layouts():
    plain = 0
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as workers:
        for layout, ours, gio, is_everyday in workers.map(examine, range(LAYOUTS), chunksize=8):
            assert ours == gio or not (ours.application or is_everyday), str(layout)
            plain += ours.application is not None
    assert plain > LAYOUTS / 2


def examine(seed):
    generator = Generator(seed)
    layout = generator.layout()
    return layout, *layout.answers(), generator.is_everyday()
