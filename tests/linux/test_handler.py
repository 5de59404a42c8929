"""The default handler that the program finds by itself, against GIO's choice in the same folders.

Whenever our answer is plain, GIO chooses the same application and starts it with the same
arguments. That an answer is not plain is always allowed, but not where the case is an everyday one.
"""

import concurrent.futures
import os

import pytest

from handler_generator import Generator
from handler_layout import URL, Layout

LAYOUTS = 600
TYPE = f"x-scheme-handler/{URL.partition(':')[0]}"
GROUPS = {"default": "Default Applications", "added": "Added Associations",
          "removed": "Removed Associations", "cache": "MIME Cache"}


def entry(command="one %u", more=""):
    return f"[Desktop Entry]\nType=Application\nName=A\nExec={command}\n{more}\n"


def lists(text):
    """Files by what they say, such as "config/mimeapps.list: default alpha;beta". One that only says
    what is its "cache" stands beside the applications."""
    files = {}
    for part in text.split(", "):
        path, _, says = part.rpartition(": ")
        group, _, names = says.partition(" ")
        path = path or "share2/applications/mimeinfo.cache"
        ids = ";".join(name and name + ".desktop" for name in names.split(";"))
        files[path] = files.get(path, "") + f"[{GROUPS[group]}]\n{TYPE}={ids}\n"
    return files


# Applications whose entries name them on the command line.
ALPHA = {"share2/applications/alpha.desktop": entry("one --alpha %u")}
BETA = {"share2/applications/beta.desktop": entry("two --beta %U")}
BOTH = ALPHA | BETA
CHOSEN = BETA | lists("config/mimeapps.list: default alpha, etc1/mimeapps.list: default beta")


def choose(text):
    """The user's default is the application "alpha", whose entry is this."""
    return CHOSEN | {"data/applications/alpha.desktop": text}


def expect_plain(application, files, environment=None, **more):
    layout = Layout(files, environment, **more)
    ours, gio = layout.answers()
    assert ours.application == application, layout
    assert ours == gio, layout
    return ours.launch


def expect_not_plain(application, files, environment=None):
    """`application` is GIO's choice."""
    layout = Layout(files, environment)
    ours, gio = layout.answers()
    assert (ours.application, gio.application) == (None, application), layout


# Which of two applications is chosen. The desktop is "Made:GNOME".
@pytest.mark.parametrize("chosen, says", [
    ("beta", "config/mimeapps.list: default beta, etc1/mimeapps.list: default alpha, cache alpha;beta;"),
    ("beta", "config/mimeapps.list: default alpha, config/gnome-mimeapps.list: default beta"),
    ("beta", "config/gnome-mimeapps.list: default alpha, config/made-mimeapps.list: default beta"),
    ("beta", "config/mimeapps.list: default beta, etc1/made-mimeapps.list: default alpha"),
    ("beta", "etc2/mimeapps.list: default beta, cache alpha;beta;"),
    # Beside the entries, in the file of today and in the old one.
    ("beta", "share1/applications/mimeapps.list: default beta, cache alpha;beta;"),
    ("beta", "share2/applications/defaults.list: default beta, cache alpha;beta;"),
    # Without a default.
    ("beta", "cache beta;alpha;"),
    ("beta", "config/mimeapps.list: added beta, cache alpha;"),
    ("alpha", "config/made-mimeapps.list: added beta, cache alpha;"),
    ("beta", "config/mimeapps.list: removed alpha, cache alpha;beta;"),
    ("alpha", "config/made-mimeapps.list: removed alpha, cache alpha;beta;"),
    ("alpha", "config/mimeapps.list: added alpha, etc1/mimeapps.list: removed alpha, cache beta;"),
    ("alpha", "config/mimeapps.list: default alpha, config/mimeapps.list: removed alpha, cache beta;"),
    ("alpha", "config/mimeapps.list: removed alpha, config/mimeapps.list: added alpha, cache beta;"),
    # Lists with applications that are missing, or with none.
    ("beta", "config/mimeapps.list: default missing;beta;"),
    ("beta", "config/mimeapps.list: default missing;gone, etc1/mimeapps.list: default beta"),
    ("beta", "config/mimeapps.list: default , etc1/mimeapps.list: default ;;, cache beta;"),
    ("beta", "config/mimeapps.list: default missing, config/mimeapps.list: default beta")])
def test_choice(chosen, says):
    expect_plain(chosen, BOTH | lists(says))


@pytest.mark.parametrize("chosen, files, environment", [
    # An earlier entry hides one that a later cache means; the earlier cache comes first.
    ("beta", {"data/applications/alpha.desktop": entry("two --new %u")} | lists("cache alpha;beta;"), {}),
    ("beta", {"share1/applications/beta.desktop": entry()} | lists(
        "share1/applications/mimeinfo.cache: cache beta;, cache alpha;"), {}),
    # Comments, blank lines, blanks around the sign, the key of a locale.
    ("beta", {"config/mimeapps.list": f"\n# [Default Applications]\n\n[Default Applications]\n"
                                      f"#{TYPE}=alpha.desktop\n\n{TYPE} =\t beta.desktop"}, {}),
    ("beta", {"config/mimeapps.list": f"[Default Applications]\n{TYPE}=beta.desktop\n"
                                      f"{TYPE}[de]=alpha.desktop\n"},
     {"LANGUAGE": "de", "LC_ALL": "de_DE.UTF-8"}),
    # The environment.
    ("alpha", {"home/.config/mimeapps.list": lists("x: default alpha")["x"],
               "home/.local/share/applications/alpha.desktop": entry()},
     {"XDG_CONFIG_HOME": None, "XDG_DATA_HOME": ""}),
    ("beta", lists("etc2/mimeapps.list: default beta"),
     {"XDG_CONFIG_DIRS": ":@/etc1/::@/etc2//", "XDG_DATA_DIRS": "@/none:@/share2/:"}),
    *(("beta", lists("config/gnome-mimeapps.list: default alpha, config/mimeapps.list: default beta"),
       {"XDG_CURRENT_DESKTOP": value}) for value in (None, "", ":")),
    # On KDE, somebody has to have chosen.
    ("beta", {"config/mimeapps.list": f"[Default Applications]\n{TYPE}=beta.desktop\n"
                                      f"{TYPE.replace('http', 'https')}=beta.desktop\n"},
     {"XDG_CURRENT_DESKTOP": "KDE"})])
def test_choice_by_files_and_environment(chosen, files, environment):
    expect_plain(chosen, BOTH | files, environment)


@pytest.mark.parametrize("chosen, files, environment", [
    (None, BOTH, {}), (None, lists("config/mimeapps.list: default missing"), {}),
    # Lines that end as DOS has it, blanks in a list, and a file that is broken.
    ("beta", BOTH | {"config/mimeapps.list": lists("x: default beta")["x"].replace("\n", "\r\n")}, {}),
    ("beta", BOTH | {"config/mimeapps.list": lists("x: default alpha;beta")["x"].replace(";", " ;")}, {}),
    ("beta", BOTH | {"config/mimeapps.list": lists("x: default alpha")["x"] + "broken\n"} |
     lists("etc1/mimeapps.list: default beta"), {}),
    ("beta", BOTH | lists("cache beta;alpha;"), {"XDG_CURRENT_DESKTOP": "KDE"}),
    ("sub-alpha", {"share1/applications/sub/alpha.desktop": entry()} |
     lists("config/mimeapps.list: default sub-alpha"), {}),
    ("beta", choose(entry("none %u")), {}), ("beta", choose(entry("one %u", "TryExec=none")), {}),
    *(("alpha", choose(entry(command)), {}) for command in (
        "one", "one %f", "one %i %u", "one 100%% %u", "one 'a b' %u", '"one" %u', "one a\\\\b %u",
        "one a;b %u", "one --url=%u", "one %u %u"))])
def test_what_is_not_plain(chosen, files, environment):
    expect_not_plain(chosen, files, environment)


def test_an_entry_behind_another_group_is_not_plain():
    layout = Layout(choose("[Other]\n" + entry()))
    assert layout.answers()[0].application is None, layout


# How the application "alpha" is started.
@pytest.mark.parametrize("command, more, launch", [
    ("one -a %u -b", "", ["@/bin/one", "one", "-a", URL, "-b"]),
    ("@/bin/one %U", "", ["@/bin/one", "@/bin/one", URL]),
    # Keys without effect, and the last of one that is repeated.
    ("one %u", "TryExec=two", None), ("one %u", "TryExec=@/bin/two", None),
    ("one %u", "NoDisplay=true\nOnlyShowIn=Other;\nTerminal=false\nHidden=false\nPath=\n"
     "DBusActivatable=false\nExec[de]=two %u\n[Desktop Action new]\nExec=two", None),
    ("two %u", "Exec=one --last %u", ["@/bin/one", "one", "--last", URL]),
    # What browsers' entries hold.
    ("@/usr/bin/chromium %U",
     "Terminal=false\nX-MultipleArgs=false\nIcon=chromium\nStartupNotify=true\nVersion=1.0\n"
     "MimeType=text/html;x-scheme-handler/http;", None),
    ("@/usr/bin/chromium run --branch=stable --arch=x86_64 --command=firefox --file-forwarding "
     "org.mozilla.firefox @@u %u @@", "X-Flatpak=org.mozilla.firefox", None),
    ("@/bin/env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/firefox_firefox.desktop "
     "/snap/bin/firefox %u", "X-SnapInstanceName=firefox", None)])
def test_launch(command, more, launch):
    found = expect_plain("alpha", choose(entry(command, more)),
                         programs=("one", "two", "env", "../usr/bin/chromium"))
    assert launch in (None, found)


def test_a_name_with_dashes():
    name = "com.example-the.Browser-2"
    expect_plain(name, lists(f"config/mimeapps.list: default {name}") | {
        f"share1/applications/{name}.desktop": entry()})


def test_agrees_with_gio_in_many_layouts():
    plain = plain_for_gio = 0
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as workers:
        for layout, ours, gio, is_everyday in workers.map(examine, range(LAYOUTS), chunksize=8):
            if ours.application:
                assert ours == gio, layout
            plain += is_everyday and ours.application is not None
            plain_for_gio += is_everyday
    print(f"{plain} of {plain_for_gio} everyday answers are plain")
    assert plain_for_gio > LAYOUTS / 2
    assert plain > 0.4 * plain_for_gio


def examine(seed):
    generator = Generator(seed)
    layout = generator.layout()
    ours, gio = layout.answers()
    return layout, ours, gio, gio.application in generator.plain_entries
