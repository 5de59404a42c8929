"""What the shells offer behind `vastel-connect -`: the switches that the program knows."""

import os
import re
import subprocess

from packages import LIMIT, PackageTestCase

ZSH = """
fpath=({folder} $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {{
  local -a offered
  builtin compadd -O offered "$@"
  print -rl -- $offered >> {folder}/offered
  builtin compadd "$@"
}}
offer() {{ _main_complete; exit }}
zle -C offer list-choices offer
bindkey '^I' offer
"""


class Completions(PackageTestCase):
    def setUp(self):
        root = self.extract_deb()
        self.share = root + "/usr/share"
        usage = self.expect_success(root + "/usr/bin/vastel-connect", "-help")
        self.switches = set(re.findall(r"^ *(-[a-z]+):", usage, re.MULTILINE)) | {"-help", "-h"}
        self.assertGreaterEqual(len(self.switches), 6, usage)

    def test_bash(self):
        file = self.share + "/bash-completion/completions/vastel-connect"
        offered = self.expect_success("bash", "--norc", "-c", """
            source "$1"
            [[ $(complete -p vastel-connect) =~ -F\\ ([^ ]+) ]]
            "${BASH_REMATCH[1]}" vastel-connect - vastel-connect
            printf '%s\\n' "${COMPREPLY[@]}"
            """, "-", file)
        self.assertEqual(set(offered.split()), self.switches)

    def test_fish(self):
        file = self.share + "/fish/vendor_completions.d/vastel-connect.fish"
        home = self.folder()
        offered = self.expect_success(
            "fish", "--no-config", "-c", "source $argv[1]; complete -C 'vastel-connect -'", file,
            environment={"HOME": home, "XDG_CONFIG_HOME": home, "XDG_DATA_HOME": home})
        self.assertEqual({line.split("\t")[0] for line in offered.splitlines()}, self.switches)

    def test_zsh(self):
        """zsh completes on a terminal only: the tabulator key makes it write down its offers."""
        folder = self.folder()
        with open(self.share + "/zsh/vendor-completions/_vastel-connect", encoding="utf-8") as file:
            completion = file.read()
        for name, text in ("_vastel-connect", completion), ("setup", ZSH.format(folder=folder)):
            with open(f"{folder}/{name}", "w", encoding="utf-8") as file:
                file.write(text)
        master, terminal = os.openpty()
        self.addCleanup(os.close, master)
        zsh = subprocess.Popen(
            ["zsh", "-f", "-i"], stdin=terminal, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True,
            env={"PATH": "/usr/bin:/bin", "HOME": folder, "TERM": "dumb"})
        self.addCleanup(zsh.wait)
        self.addCleanup(zsh.kill)
        os.close(terminal)
        os.write(master, f"source {folder}/setup\nvastel-connect -\t".encode())
        self.assertEqual(zsh.wait(LIMIT), 0)
        with open(folder + "/offered", encoding="utf-8") as file:
            self.assertEqual(set(file.read().split()), self.switches)
