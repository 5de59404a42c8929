"""The default handler that the program finds by itself, against GIO's choice in the same folders.

Whenever our answer is plain, GIO chooses the same application and starts it with the same
arguments. That an answer is not plain is always allowed, but not where the case is an everyday one.
"""

import concurrent.futures
import os
import sys
import unittest

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


class HandlerTestCase(unittest.TestCase):
    def assert_agrees(self, layout, ours, gio):
        self.assertEqual(ours.application, gio.application, layout)
        self.assertEqual(ours, gio, layout)

    def assert_plain(self, application, files, environment=None, **more):
        layout = Layout(files, environment, **more)
        ours, gio = layout.answers()
        self.assertEqual(ours.application, application, layout)
        self.assert_agrees(layout, ours, gio)
        return ours.launch

    def assert_not_plain(self, application, files, environment=None, **more):
        """`application` is GIO's choice."""
        layout = Layout(files, environment, **more)
        ours, gio = layout.answers()
        self.assertIsNone(ours.application, layout)
        self.assertEqual(gio.application, application, layout)


class HandlerAssociations(HandlerTestCase):
    def test_user_default_wins(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("beta.desktop"),
            "etc1/mimeapps.list": lists("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_user_default_of_the_desktop_wins_over_that_of_all(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("alpha.desktop"),
            "config/gnome-mimeapps.list": lists("beta.desktop"),
        })

    def test_first_desktop_name_wins(self):
        self.assert_plain("beta", BOTH | {
            "config/gnome-mimeapps.list": lists("alpha.desktop"),
            "config/made-mimeapps.list": lists("beta.desktop"),
        })

    def test_user_default_wins_over_that_of_the_system_desktop(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("beta.desktop"),
            "etc1/made-mimeapps.list": lists("alpha.desktop"),
        })

    def test_default_of_the_system(self):
        self.assert_plain("beta", BOTH | {
            "etc2/mimeapps.list": lists("beta.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_default_beside_the_entries(self):
        self.assert_plain("beta", BOTH | {
            "share1/applications/mimeapps.list": lists("beta.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_default_of_the_old_file(self):
        self.assert_plain("beta", BOTH | {
            "share2/applications/defaults.list": lists("beta.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_first_of_the_cache_without_a_default(self):
        self.assert_plain("beta", BOTH | {
            "share2/applications/mimeinfo.cache": cache("beta.desktop;alpha.desktop;"),
        })

    def test_added_by_the_user_before_the_cache(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": added("beta.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
        })

    def test_added_by_one_desktop_counts_for_nothing(self):
        self.assert_plain("alpha", BOTH | {
            "config/made-mimeapps.list": added("beta.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
        })

    def test_removed_by_the_user(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": removed("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_removed_by_one_desktop_counts_for_nothing(self):
        self.assert_plain("alpha", BOTH | {
            "config/made-mimeapps.list": removed("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_removed_by_the_system_but_added_by_the_user(self):
        self.assert_plain("alpha", BOTH | {
            "config/mimeapps.list": added("alpha.desktop"),
            "etc1/mimeapps.list": removed("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
        })

    def test_removed_but_the_default(self):
        self.assert_plain("alpha", BOTH | {
            "config/mimeapps.list": lists("alpha.desktop") + removed("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
        })

    def test_added_and_removed_in_one_file(self):
        self.assert_plain("alpha", BOTH | {
            "config/mimeapps.list": removed("alpha.desktop") + added("alpha.desktop"),
            "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
        })

    def test_second_of_the_list_when_the_first_is_missing(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("missing.desktop;beta.desktop;"),
        })

    def test_next_level_when_all_of_a_list_are_missing(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("missing.desktop;gone.desktop"),
            "etc1/mimeapps.list": lists("beta.desktop"),
        })

    def test_empty_list_says_nothing(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists(""),
            "etc1/mimeapps.list": lists(";;"),
            "share2/applications/mimeinfo.cache": cache("beta.desktop;"),
        })

    def test_earlier_entry_replaces_a_later_one(self):
        self.assertIn("--new", self.assert_plain("alpha", ALPHA | {
            "config/mimeapps.list": lists("alpha.desktop"),
            "data/applications/alpha.desktop": entry("two --new %u"),
        }))

    def test_earlier_entry_hides_one_that_a_later_cache_means(self):
        self.assert_plain("beta", BOTH | {
            "data/applications/alpha.desktop": entry("two --new %u"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;beta.desktop;"),
        })

    def test_earlier_cache_first(self):
        self.assert_plain("beta", ALPHA | {
            "share1/applications/beta.desktop": entry(),
            "share1/applications/mimeinfo.cache": cache("beta.desktop;"),
            "share2/applications/mimeinfo.cache": cache("alpha.desktop;"),
        })

    def test_repeated_key_and_group(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": f"{lists('missing.desktop')}{TYPE}=alpha.desktop\n\n"
                                    f"[Other]\n{TYPE}=alpha.desktop\n{lists('beta.desktop')}",
        })

    def test_comments_blank_lines_and_blanks_around_equals(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": f"\n# [Default Applications]\n\n[Default Applications]\n"
                                    f"#{TYPE}=alpha.desktop\n\n{TYPE} =\t beta.desktop",
        })

    def test_key_of_a_locale_is_another(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": f"{lists('beta.desktop')}{TYPE}[de]=alpha.desktop\n",
        }, {"LANGUAGE": "de", "LC_ALL": "de_DE.UTF-8"})

    def test_line_ends_of_dos_are_not_plain(self):
        self.assert_not_plain("beta", BOTH | {
            "config/mimeapps.list": lists("beta.desktop").replace("\n", "\r\n"),
        })

    def test_blanks_in_a_list_are_not_plain(self):
        self.assert_not_plain("beta", BOTH | {
            "config/mimeapps.list": lists("alpha.desktop ;beta.desktop"),
        })

    def test_broken_list_is_not_plain(self):
        self.assert_not_plain("beta", BOTH | {
            "config/mimeapps.list": lists("alpha.desktop") + "broken\n",
            "etc1/mimeapps.list": lists("beta.desktop"),
        })

    def test_nobody(self):
        self.assert_not_plain(None, BOTH)
        self.assert_not_plain(None, {"config/mimeapps.list": lists("missing.desktop")})


class HandlerEntries(HandlerTestCase):
    """The user's default is the application "alpha"."""

    CHOICE = {
        "config/mimeapps.list": lists("alpha.desktop"),
        "etc1/mimeapps.list": lists("beta.desktop"),
    } | BETA

    def launch(self, command, more="", programs=()):
        return self.assert_plain("alpha", self.CHOICE | {
            "data/applications/alpha.desktop": entry(command, more),
        }, programs=("one", "two", *programs))

    def assert_entry_not_plain(self, gio, text):
        self.assert_not_plain(gio, self.CHOICE | {"data/applications/alpha.desktop": text})

    def test_url_in_the_middle(self):
        self.assertEqual(self.launch("one -a %u -b"), ["@/bin/one", "one", "-a", URL, "-b"])

    def test_absolute_program(self):
        self.assertEqual(self.launch("@/bin/one %U"), ["@/bin/one", "@/bin/one", URL])

    def test_chromium(self):
        self.launch("@/usr/bin/chromium %U", "Terminal=false\nX-MultipleArgs=false\nIcon=chromium\n"
                    "StartupNotify=true\nVersion=1.0\nMimeType=text/html;x-scheme-handler/http;",
                    programs=("../usr/bin/chromium",))

    def test_installed_chromium(self):
        path = "/usr/share/applications/chromium.desktop"
        if not os.path.exists(path):
            self.skipTest(f"no {path}")
        with open(path, encoding="utf-8") as file:
            text = file.read().replace("=/usr/bin/chromium", "=@/usr/bin/chromium")
        launch = self.assert_plain("alpha", self.CHOICE | {"data/applications/alpha.desktop": text},
                                   programs=("../usr/bin/chromium",))
        self.assertEqual(launch[-1], URL)

    def test_firefox(self):
        self.launch("@/usr/lib/firefox-esr/firefox-esr %u",
                    programs=("../usr/lib/firefox-esr/firefox-esr",))

    def test_chrome_and_edge(self):
        for name in ("google-chrome-stable", "microsoft-edge-stable"):
            self.launch(f"@/usr/bin/{name} %U", programs=(f"../usr/bin/{name}",))

    def test_flatpak(self):
        self.launch("@/usr/bin/flatpak run --branch=stable --arch=x86_64 --command=firefox "
                    "--file-forwarding org.mozilla.firefox @@u %u @@",
                    "X-Flatpak=org.mozilla.firefox",
                    programs=("../usr/bin/flatpak",))

    def test_snap(self):
        self.launch("env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/"
                    "firefox_firefox.desktop /snap/bin/firefox %u",
                    "X-SnapInstanceName=firefox", programs=("env",))

    def test_name_with_dashes(self):
        name = "com.example-the.Browser-2"
        self.assert_plain(name, {
            "config/mimeapps.list": lists(f"{name}.desktop"),
            f"share1/applications/{name}.desktop": entry(),
        })

    def test_entry_in_a_subfolder_is_not_plain(self):
        self.assert_not_plain("sub-alpha", {
            "config/mimeapps.list": lists("sub-alpha.desktop"),
            "share1/applications/sub/alpha.desktop": entry(),
        })

    def test_try_exec_that_is_there(self):
        self.launch("one %u", "TryExec=two")
        self.launch("one %u", "TryExec=@/bin/two")

    def test_keys_without_effect(self):
        self.launch("one %u", "NoDisplay=true\nOnlyShowIn=Other;\nTerminal=false\nHidden=false\n"
                    "Path=\nDBusActivatable=false\nExec[de]=two %u\n[Desktop Action new]\nExec=two")

    def test_last_of_a_repeated_key(self):
        self.assertIn("--last", self.launch("two %u", "Exec=one --last %u"))

    def test_missing_program_is_not_plain(self):
        self.assert_entry_not_plain("beta", entry("none %u"))
        self.assert_entry_not_plain("beta", entry("one %u", "TryExec=none"))

    def test_unusual_keys_are_not_plain(self):
        for more in ("Terminal=true", "DBusActivatable=true", "Path=@/home", "Hidden=true",
                     "Type=Link"):
            with self.subTest(more):
                layout = Layout(self.CHOICE | {"data/applications/alpha.desktop": entry(more=more)})
                ours, _ = layout.answers()
                self.assertIsNone(ours.application, layout)

    def test_unusual_command_lines_are_not_plain(self):
        for command in ("one", "one %f", "one %i %u", "one %c %u", "one 100%% %u", "one 'a b' %u",
                        '"one" %u', "one a\\\\b %u", "one a;b %u", "one --url=%u", "one %u %u"):
            with self.subTest(command):
                self.assert_entry_not_plain("alpha", entry(command))

    def test_entry_behind_another_group_is_not_plain(self):
        layout = Layout(self.CHOICE | {"data/applications/alpha.desktop": "[Other]\n" + entry()})
        ours, _ = layout.answers()
        self.assertIsNone(ours.application, layout)


class HandlerEnvironment(HandlerTestCase):
    def test_folders_by_home(self):
        self.assert_plain("alpha", {
            "home/.config/mimeapps.list": lists("alpha.desktop"),
            "home/.local/share/applications/alpha.desktop": entry(),
        }, {"XDG_CONFIG_HOME": None, "XDG_DATA_HOME": ""})

    def test_trailing_slashes_and_empty_parts(self):
        self.assert_plain("beta", BOTH | {
            "etc2/mimeapps.list": lists("beta.desktop"),
        }, {"XDG_CONFIG_DIRS": ":@/etc1/::@/etc2//", "XDG_DATA_DIRS": "@/none:@/share2/:"})

    def test_no_desktop(self):
        for value in (None, "", ":"):
            self.assert_plain("beta", BOTH | {
                "config/gnome-mimeapps.list": lists("alpha.desktop"),
                "config/mimeapps.list": lists("beta.desktop"),
            }, {"XDG_CURRENT_DESKTOP": value})

    def test_relative_folders_are_not_plain(self):
        for name, value in {"XDG_CONFIG_HOME": "config", "XDG_CONFIG_DIRS": "etc1:@/etc2",
                            "XDG_DATA_HOME": "data", "XDG_DATA_DIRS": "@/share2:share1"}.items():
            layout = Layout(BOTH | {"config/mimeapps.list": lists("beta.desktop"),
                                    "etc1/mimeapps.list": lists("beta.desktop")}, {name: value})
            ours, _ = layout.answers()
            self.assertIsNone(ours.application, layout)

    def test_kde_is_plain_where_somebody_has_chosen(self):
        self.assert_plain("beta", BOTH | {
            "config/mimeapps.list": lists("beta.desktop") + lists("beta.desktop").replace(
                "http=", "https="),
        }, {"XDG_CURRENT_DESKTOP": "KDE"})
        self.assert_not_plain("beta", BOTH | {
            "share2/applications/mimeinfo.cache": cache("beta.desktop;alpha.desktop;"),
        }, {"XDG_CURRENT_DESKTOP": "KDE"})


def examine(seed):
    generator = Generator(seed)
    layout = generator.layout()
    ours, gio = layout.answers()
    return layout, ours, gio, gio.application in generator.plain_entries


class HandlerOfManyLayouts(HandlerTestCase):
    def test_agrees_with_gio(self):
        plain = 0
        plain_for_gio = 0
        with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as workers:
            for layout, ours, gio, is_everyday in workers.map(examine, range(LAYOUTS), chunksize=8):
                if ours.application:
                    self.assert_agrees(layout, ours, gio)
                plain += is_everyday and ours.application is not None
                plain_for_gio += is_everyday
        print(f"{plain} of {plain_for_gio} everyday answers are plain")
        self.assertGreater(plain_for_gio, LAYOUTS / 2)
        self.assertGreater(plain, 0.4 * plain_for_gio)
