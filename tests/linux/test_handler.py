"""The default handler that the program finds by itself, against GIO's choice in the same folders.

Whenever our answer is plain, GIO chooses the same application and starts it with the same
arguments. That an answer is not plain is always allowed, but not where the case is an everyday one.
"""

import concurrent.futures
import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(__file__))

from handler_generator import Generator
from handler_layout import URL, Layout

LAYOUTS = 600
TYPE = f"x-scheme-handler/{URL.partition(':')[0]}"


def entry(command="one %u", more=""):
    return f"[Desktop Entry]\nType=Application\nName=A\nExec={command}\n{more}\n"


def lists(ids, group="Default Applications"):
    return f"[{group}]\n{TYPE}={ids}\n"


def cache(ids):
    return lists(ids, "MIME Cache")


def added(ids):
    return lists(ids, "Added Associations")


def removed(ids):
    return lists(ids, "Removed Associations")


# Applications whose entries name them on the command line.
ALPHA = {"share2/applications/alpha.desktop": entry("one --alpha %u")}
BETA = {"share2/applications/beta.desktop": entry("two --beta %U")}
BOTH = ALPHA | BETA


def expect_agreement(layout, ours, gio):
    assert ours.application == gio.application, layout
    assert ours == gio, layout


def expect_plain(application, files, environment=None, **more):
    layout = Layout(files, environment, **more)
    ours, gio = layout.answers()
    assert ours.application == application, layout
    expect_agreement(layout, ours, gio)
    return ours.launch


def expect_not_plain(application, files, environment=None):
    """`application` is GIO's choice."""
    layout = Layout(files, environment)
    ours, gio = layout.answers()
    assert ours.application is None, layout
    assert gio.application == application, layout


# Which application is chosen: the case, the choice, and what stands beside the entries of both.
CHOICES = {
    "user default wins": ("beta", {
        "config/mimeapps.list": lists("beta.desktop"),
        "etc1/mimeapps.list": lists("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "user default of the desktop wins over that of all": ("beta", {
        "config/mimeapps.list": lists("alpha.desktop"),
        "config/gnome-mimeapps.list": lists("beta.desktop"),
    }),
    "first desktop name wins": ("beta", {
        "config/gnome-mimeapps.list": lists("alpha.desktop"),
        "config/made-mimeapps.list": lists("beta.desktop"),
    }),
    "user default wins over that of the system desktop": ("beta", {
        "config/mimeapps.list": lists("beta.desktop"),
        "etc1/made-mimeapps.list": lists("alpha.desktop"),
    }),
    "default of the system": ("beta", {
        "etc2/mimeapps.list": lists("beta.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "default beside the entries": ("beta", {
        "share1/applications/mimeapps.list": lists("beta.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "default of the old file": ("beta", {
        "share2/applications/defaults.list": lists("beta.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "first of the cache without a default": ("beta", {
        "share2/applications/mimeinfo.cache": cache("beta.desktop;alpha.desktop;"),
    }),
    "added by the user before the cache": ("beta", {
        "config/mimeapps.list": added("beta.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
    }),
    "added by one desktop counts for nothing": ("alpha", {
        "config/made-mimeapps.list": added("beta.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
    }),
    "removed by the user": ("beta", {
        "config/mimeapps.list": removed("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "removed by one desktop counts for nothing": ("alpha", {
        "config/made-mimeapps.list": removed("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "removed by the system but added by the user": ("alpha", {
        "config/mimeapps.list": added("alpha.desktop"),
        "etc1/mimeapps.list": removed("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
    }),
    "removed but the default": ("alpha", {
        "config/mimeapps.list": lists("alpha.desktop") + removed("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
    }),
    "added and removed in one file": ("alpha", {
        "config/mimeapps.list": removed("alpha.desktop") + added("alpha.desktop"),
        "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
    }),
    "second of the list when the first is missing": ("beta", {
        "config/mimeapps.list": lists("missing.desktop;beta.desktop;"),
    }),
    "next level when all of a list are missing": ("beta", {
        "config/mimeapps.list": lists("missing.desktop;gone.desktop"),
        "etc1/mimeapps.list": lists("beta.desktop"),
    }),
    "empty list says nothing": ("beta", {
        "config/mimeapps.list": lists(""),
        "etc1/mimeapps.list": lists(";;"),
        "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
    }),
    "earlier entry hides one that a later cache means": ("beta", {
        "data/applications/alpha.desktop": entry("two --new %u"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
    }),
    "earlier cache first": ("beta", {
        "share1/applications/beta.desktop": entry(),
        "share1/applications/mimeinfo.cache": cache("beta.desktop;"),
        "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
    }),
    "repeated key and group": ("beta", {
        "config/mimeapps.list": f"{lists('missing.desktop')}{TYPE}=alpha.desktop\n\n"
                                f"[Other]\n{TYPE}=alpha.desktop\n{lists('beta.desktop')}",
    }),
    "comments blank lines and blanks around equals": ("beta", {
        "config/mimeapps.list": f"\n# [Default Applications]\n\n[Default Applications]\n"
                                f"#{TYPE}=alpha.desktop\n\n{TYPE} =\t beta.desktop",
    }),
}
# The same, where our answer is not plain.
NOT_PLAIN = {
    "line ends of dos": ("beta", {
        "config/mimeapps.list": lists("beta.desktop").replace("\n", "\r\n"),
    }),
    "blanks in a list": ("beta", {
        "config/mimeapps.list": lists("alpha.desktop ;beta.desktop"),
    }),
    "broken list": ("beta", {
        "config/mimeapps.list": lists("alpha.desktop") + "broken\n",
        "etc1/mimeapps.list": lists("beta.desktop"),
    }),
}


@pytest.mark.parametrize("case", CHOICES)
def test_choice(case):
    application, files = CHOICES[case]
    expect_plain(application, BOTH | files)


@pytest.mark.parametrize("case", NOT_PLAIN)
def test_choice_is_not_plain(case):
    application, files = NOT_PLAIN[case]
    expect_not_plain(application, BOTH | files)


def test_earlier_entry_replaces_a_later_one():
    assert "--new" in expect_plain("alpha", ALPHA | {
        "config/mimeapps.list": lists("alpha.desktop"),
        "data/applications/alpha.desktop": entry("two --new %u"),
    })


def test_key_of_a_locale_is_another():
    expect_plain("beta", BOTH | {
        "config/mimeapps.list": f"{lists('beta.desktop')}{TYPE}[de]=alpha.desktop\n",
    }, {"LANGUAGE": "de", "LC_ALL": "de_DE.UTF-8"})


def test_nobody():
    expect_not_plain(None, BOTH)
    expect_not_plain(None, {"config/mimeapps.list": lists("missing.desktop")})


# The entry of the application "alpha", which is the user's default.

CHOSEN = BETA | {
    "config/mimeapps.list": lists("alpha.desktop"),
    "etc1/mimeapps.list": lists("beta.desktop"),
}


def choose(text):
    return CHOSEN | {"data/applications/alpha.desktop": text}


def launch(command, more="", programs=()):
    return expect_plain("alpha", choose(entry(command, more)), programs=("one", "two", *programs))


def test_url_in_the_middle():
    assert launch("one -a %u -b") == ["@/bin/one", "one", "-a", URL, "-b"]


def test_absolute_program():
    assert launch("@/bin/one %U") == ["@/bin/one", "@/bin/one", URL]


@pytest.mark.parametrize("program, arguments, more", [
    ("usr/bin/chromium", "%U",
     "Terminal=false\nX-MultipleArgs=false\nIcon=chromium\nStartupNotify=true\nVersion=1.0\n"
     "MimeType=text/html;x-scheme-handler/http;"),
    ("usr/lib/firefox-esr/firefox-esr", "%u", ""),
    ("usr/bin/google-chrome-stable", "%U", ""),
    ("usr/bin/microsoft-edge-stable", "%U", ""),
    ("usr/bin/flatpak", "run --branch=stable --arch=x86_64 --command=firefox --file-forwarding "
                        "org.mozilla.firefox @@u %u @@", "X-Flatpak=org.mozilla.firefox"),
    ("bin/env", "BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/firefox_firefox.desktop"
                " /snap/bin/firefox %u", "X-SnapInstanceName=firefox"),
])
def test_browser(program, arguments, more):
    launch(f"@/{program} {arguments}", more, programs=("../" + program,))


def test_installed_chromium():
    path = "/usr/share/applications/chromium.desktop"
    if not os.path.exists(path):
        pytest.skip(f"no {path}")
    with open(path, encoding="utf-8") as file:
        text = file.read().replace("=/usr/bin/chromium", "=@/usr/bin/chromium")
    assert expect_plain("alpha", choose(text), programs=("../usr/bin/chromium",))[-1] == URL


def test_name_with_dashes():
    name = "com.example-the.Browser-2"
    expect_plain(name, {
        "config/mimeapps.list": lists(f"{name}.desktop"),
        f"share1/applications/{name}.desktop": entry(),
    })


def test_entry_in_a_subfolder_is_not_plain():
    expect_not_plain("sub-alpha", {
        "config/mimeapps.list": lists("sub-alpha.desktop"),
        "share1/applications/sub/alpha.desktop": entry(),
    })


def test_keys_without_effect():
    launch("one %u", "TryExec=two")
    launch("one %u", "TryExec=@/bin/two")
    launch("one %u", "NoDisplay=true\nOnlyShowIn=Other;\nTerminal=false\nHidden=false\nPath=\n"
           "DBusActivatable=false\nExec[de]=two %u\n[Desktop Action new]\nExec=two")


def test_last_of_a_repeated_key():
    assert "--last" in launch("two %u", "Exec=one --last %u")


def test_missing_program_is_not_plain():
    expect_not_plain("beta", choose(entry("none %u")))
    expect_not_plain("beta", choose(entry("one %u", "TryExec=none")))


@pytest.mark.parametrize("command", [
    "one", "one %f", "one %i %u", "one %c %u", "one 100%% %u", "one 'a b' %u", '"one" %u',
    "one a\\\\b %u", "one a;b %u", "one --url=%u", "one %u %u"])
def test_unusual_command_line_is_not_plain(command):
    expect_not_plain("alpha", choose(entry(command)))


def test_entry_behind_another_group_is_not_plain():
    layout = Layout(choose("[Other]\n" + entry()))
    ours, _ = layout.answers()
    assert ours.application is None, layout


# The environment.


def test_folders_by_home():
    expect_plain("alpha", {
        "home/.config/mimeapps.list": lists("alpha.desktop"),
        "home/.local/share/applications/alpha.desktop": entry(),
    }, {"XDG_CONFIG_HOME": None, "XDG_DATA_HOME": ""})


def test_trailing_slashes_and_empty_parts():
    expect_plain("beta", BOTH | {
        "etc2/mimeapps.list": lists("beta.desktop"),
    }, {"XDG_CONFIG_DIRS": ":@/etc1/::@/etc2//", "XDG_DATA_DIRS": "@/none:@/share2/:"})


@pytest.mark.parametrize("value", [None, "", ":"])
def test_no_desktop(value):
    expect_plain("beta", BOTH | {
        "config/gnome-mimeapps.list": lists("alpha.desktop"),
        "config/mimeapps.list": lists("beta.desktop"),
    }, {"XDG_CURRENT_DESKTOP": value})


def test_kde_is_plain_where_somebody_has_chosen():
    chosen = lists("beta.desktop")
    expect_plain("beta", BOTH | {
        "config/mimeapps.list": chosen + chosen.replace("http=", "https="),
    }, {"XDG_CURRENT_DESKTOP": "KDE"})
    expect_not_plain("beta", BOTH | {
        "share2/applications/mimeinfo.cache": cache("beta.desktop;alpha.desktop;"),
    }, {"XDG_CURRENT_DESKTOP": "KDE"})


# Many layouts.


def examine(seed):
    generator = Generator(seed)
    layout = generator.layout()
    ours, gio = layout.answers()
    return layout, ours, gio, gio.application in generator.plain_entries


def test_agrees_with_gio_in_many_layouts():
    plain = 0
    plain_for_gio = 0
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as workers:
        for layout, ours, gio, is_everyday in workers.map(examine, range(LAYOUTS), chunksize=8):
            if ours.application:
                expect_agreement(layout, ours, gio)
            plain += is_everyday and ours.application is not None
            plain_for_gio += is_everyday
    print(f"{plain} of {plain_for_gio} everyday answers are plain")
    assert plain_for_gio > LAYOUTS / 2
    assert plain > 0.4 * plain_for_gio
