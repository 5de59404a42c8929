"""Layouts at random: everyday ones for the most part, with an oddity here and there."""

import random

from handler_layout import Layout

IDS = [
    "alpha.desktop", "beta.desktop", "gamma-browser.desktop", "sub-delta.desktop",
    "com.example.Web.desktop", "a-b-c.desktop",
]
ODD_IDS = [
    "zeta", "../../home/alpha.desktop", ".dot.desktop", "bl ank.desktop", "Alpha.desktop",
    "m\u00fcnchen.desktop", "sub/delta.desktop", "back\\slash.desktop", "desktop", ".desktop",
    " alpha.desktop", "\udcff.desktop", "x.desktop.desktop", "folder.desktop", "*", "..",
]
CONFIG_FOLDERS = ["config", "etc1", "etc2"]
DATA_FOLDERS = ["data", "share1", "share2"]

URLS = [
    "http://127.0.0.1:8080/", "https://host/a?b='c'&d=%20%u%F#f", "ssh-x+1.0://u@h:22/p;q=\"r\"",
    "HTTP://host/$(touch x)`y`", "made:%25,~*|\\back", "made://host/[a]{b}<c>!",
]

PLAIN_EXECS = [
    "one %u", "two %U", "@/bin/one %u", "@/bin/two --new --a=b:c,d @@u %u @@", "one  %u  ",
    "env A_B=c@d @/bin/one %U -", "two -- %u", "one %u end", "one +x,y._ %U",
]
ODD_EXECS = [
    "none %u", "@/bin/none %u", "one", "one %f", "one %F", "one -c %c %u", "one %i %u", "one %k %u",
    "one 100%% %u", '"one" %u', 'one "a b" %u', "one 'a b' %u", 'one "a\\\\$b" %u', "one a\\sb %u",
    "one --url=%u", "one %u %u", "one %u %U", "%u", "%u one", "", "one %", "one %x %u",
    "bin/one %u",
    "one \"%u\"", "one $HOME %u", "one ~ %u", "one a;b %u", "one #a %u", "one\t%u", "one * %u",
    "one %d %D %n %N %v %m %u", "sh -c 'one %u'", "one 'a %u", "one a\\", "one \u00fc %u",
    "one \udcff %u", "./bin/one %u", "folder %u", "plain %u", "one (%u)", "one a|b %u", "one <a %u",
    "one %%u", "one =%u", "A=b one %u", "one `a` %u", "one a&b %u", "one %u%u",
]
# Lines of an entry that change nothing, and those with which it is not plain.
HARMLESS_KEYS = [
    "Hidden=false", "NoDisplay=true", "Path=", "TryExec=", "TryExec=one", "TryExec=@/bin/one",
    "Terminal=false", "DBusActivatable=false", "Exec[de]=none %u", "Exec =one --alpha %u",
    "Type[de]=Link", "OnlyShowIn=Other;", "NotShowIn=GNOME;", "StartupNotify=true", "Icon=icon",
    "URL=x", "Implements=a.b;", "Actions=none;", "X-Flatpak=org.example", "SingleMainWindow=true",
    "Name=\udcff", "Name[de]=eins", "X-GNOME-UsesNotifications=true", "X-MultipleArgs=false",
    "MimeType=text/html;x-scheme-handler/made;",
]
ODD_KEYS = [
    "Hidden=true", "Hidden=1", "Hidden=True", "Hidden=false \t", "Terminal=true", "Terminal=1",
    "Terminal=false ", "DBusActivatable=true", "DBusActivatable=1", "Path=@/home", "Type=Link",
    "Type=", "Type=Application ", "Type=application", "TryExec=none", "TryExec=@/none",
    "TryExec=bin/one", "TryExec=\udcff", "TryExec=o\\sne", "Exec=", "Exec=one a\\nb %u",
]
HARMLESS_LINES = [
    "#\udcff", "#=x", "[#]", "[ Desktop Entry]", "[Desktop Entry]", "[Default Applications]",
    "[Added Associations]", "[Removed Associations]", "[MIME Cache]", "[X-Unknown]", "k;*\"=x",
    "[~!]", "~!=x", "k[d]=x",
]
ODD_LINES = [
    "no equals sign", "=value", "[group", "[a]b]", "[]", "[", "[a[b]", "key[de=x", "key[de]x=y",
    "key[]=x", "k[d]e]=v", "k]=x", "]=x", "  ", "\t", "  # blank", " key=blank", "\tkey=blank",
    "\u00fc=x", "k\udcff=x", "a\0b=c", "key=a\rb", "key=x\r", "[Other]  ", "a b=c", "key [de]=x",
    "\ufeff", "[\u00fc]", "key\v=x", "\f", "; comment", "key=\v\f", "[a\tb]",
]


class Generator:
    """Makes one layout, which depends on the seed alone."""

    urls = URLS

    def __init__(self, seed):
        self.rng = random.Random(seed)
        self.oddness = self.rng.choice([0, 0, 0.02, 0.1])

    def odd(self):
        return self.rng.random() < self.oddness

    def often(self, chance):
        return self.rng.random() < chance

    def is_everyday(self):
        """Whether nothing in the layout is odd; KDE has rules of its own."""
        return not self.oddness and "KDE" not in (self.environment.get("XDG_CURRENT_DESKTOP") or "")

    def layout(self):
        rng = self.rng
        url = rng.choice(self.urls)
        self.type = "x-scheme-handler/" + url.partition(":")[0].lower()
        self.files = {}
        self.environment = self.make_environment()
        for folder in CONFIG_FOLDERS + [f"{folder}/applications" for folder in DATA_FOLDERS]:
            self.add_associations(folder)
        for folder in DATA_FOLDERS:
            self.add_entries(folder)
        if self.odd():
            path = rng.choice(list(self.files) or ["config/mimeapps.list"])
            self.files[path] = self.spoil(self.files.get(path, ""))
        return Layout(self.files, self.environment, url)

    def make_environment(self):
        """Variables that are other than usual."""
        rng = self.rng
        environment = {}
        if self.often(0.3):
            environment["XDG_CURRENT_DESKTOP"] = rng.choice(
                [None, "", "GNOME", "made", "KDE", "Made:KDE", ":Made::", "Other", "GNOME:Made",
                 "Made-X"])
        if not self.odd():
            return environment
        values = {
            "XDG_CONFIG_HOME": [None, "", "config", "@/config/", "@/none", "@/etc1"],
            "XDG_CONFIG_DIRS": ["@/etc2", "etc1:@/etc2", "@/etc1/:@/etc1", "@/etc2::@/etc1:"],
            "XDG_DATA_HOME": [None, "", "data", "@/data//", "@/none", "@/share1"],
            "XDG_DATA_DIRS": ["@/share2", "share1:@/share2", "@/share1/:@/share1", ":@/share2:"],
            "HOME": ["@/none", "home", "@/home/"],
            "PATH": ["@/none", "@/none:@/bin", ":@/bin:", "bin:@/bin", "@/bin/", "bin"],
            "GTK_USE_PORTAL": ["", "0", "1"],
            "LANGUAGE": ["de"],
            "LC_ALL": ["de_DE.UTF-8"],
            "XDG_CURRENT_DESKTOP": ["../config/made", "ma.de:ma de:M\u00e4de"],
        }
        name = rng.choice(list(values))
        return environment | {name: rng.choice(values[name])}

    def add_associations(self, folder):
        names = {"mimeapps.list": 0.5, "gnome-mimeapps.list": 0.1, "made-mimeapps.list": 0.1,
                 "-mimeapps.list": 0.02}
        if folder.endswith("applications"):
            names |= {"mimeapps.list": 0.15, "defaults.list": 0.1, "mimeinfo.cache": 0.7}
        for name, chance in names.items():
            if self.often(chance):
                groups = ["MIME Cache"] if name == "mimeinfo.cache" else [
                    "Default Applications", "Added Associations", "Removed Associations"]
                if self.odd():
                    groups.append("MIME Cache")
                self.files[f"{folder}/{name}"] = self.association_text(groups)

    def association_text(self, groups):
        rng = self.rng
        lines = []
        if self.odd():
            lines.append(rng.choice(["", "# comment", "key=before any group"]))
        chances = {"Default Applications": 0.5, "MIME Cache": 1.0}
        for group in rng.sample(groups, len(groups)):
            if not self.often(chances.get(group, 0.3)):
                continue
            lines.append(f"[{group}]")
            for _ in range(2 if self.odd() else 1):
                lines.append("text/html=alpha.desktop;other.desktop")
                lines.append(f"{self.type}{self.equals()}{self.id_list()}")
            if self.odd():
                lines.insert(rng.randrange(len(lines) + 1), rng.choice(HARMLESS_LINES + ODD_LINES))
            if self.often(0.5):
                lines.append("")
        return "\n".join(lines) + "\n"

    def equals(self):
        return self.rng.choice([" =", "= ", " = ", "\t=\t", "[de]=", "=="]) if self.odd() else "="

    def id_list(self):
        rng = self.rng
        ids = rng.sample(IDS, rng.choice([0, 1, 1, 1, 2, 3]))
        if self.odd():
            ids.insert(rng.randrange(len(ids) + 1), rng.choice(ODD_IDS + IDS))
        text = ";".join(ids)
        if self.odd():
            text += rng.choice([" ", "; ;", ";;", "\\", "\t"])
        return text + rng.choice(["", ";"])

    def add_entries(self, folder):
        rng = self.rng
        for name in IDS:
            if self.often(0.45):
                path = f"{folder}/applications/{name}"
                if "-" in name and self.odd():
                    path = f"{folder}/applications/{name.replace('-', '/', 1)}"
                self.add_entry(path)
        if self.odd():
            name = rng.choice(ODD_IDS)
            if "/" not in name and name != "..":
                self.add_entry(f"{folder}/applications/{name}")

    def add_entry(self, path):
        rng = self.rng
        plain = not self.oddness or not self.odd() and self.often(0.7)
        lines = ["Type=Application", "Name[de]=caf\u00e9 \\s; \"x\"", "", "# comment",
                 f"Exec={rng.choice(PLAIN_EXECS if plain else ODD_EXECS + PLAIN_EXECS)}",
                 *rng.sample(HARMLESS_KEYS, 2)]
        if not plain:
            lines += rng.sample(ODD_KEYS, rng.choice([0, 0, 1]))
        if self.odd():
            rng.shuffle(lines)
        if self.odd():
            lines.insert(rng.randrange(len(lines) + 1), rng.choice(HARMLESS_LINES + ODD_LINES))
        lines += ["[Desktop Action new]", "Exec=none --new"]
        lines.insert(0, "[Desktop Entry]")
        if self.odd():
            lines.insert(0, rng.choice(["", "# comment", "#!/usr/bin/env xdg-open", "[Other]"]))
        self.files[path] = "\n".join(lines) + ("\n" if self.often(0.9) else "")

    def spoil(self, text):
        rng = self.rng
        at = rng.randrange(len(text) + 1)
        return rng.choice([
            text.replace("\n", "\r\n"), text[:at], text + text, "", text[:at] + "\0" + text[at:],
            text[:at] + "\udcfe" + text[at:], text[:at] + "x" * 100000 + text[at:],
            "".join(chr(rng.randrange(1, 127)) for _ in range(200)), text[:at] + "\n" + text[at:],
            text[:at] + rng.choice("[]=#;% \t\\\"'") + text[at:], text.upper(), text.rstrip("\n"),
        ])
