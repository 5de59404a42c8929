"""What the shells offer behind `vastel-connect -`: the switches that the program knows."""

import os
import subprocess

from packages import LIMIT, output_of

STAGE = os.environ["CONNECT_STAGE"]
SHARE = STAGE + "/share"
# The completions ask the program.
PATH = STAGE + "/bin:/usr/bin:/bin"

BASH = r"""
source "$1"
[[ $(complete -p vastel-connect) =~ -F\ ([^ ]+) ]]
"${BASH_REMATCH[1]}" vastel-connect - vastel-connect
printf '%s\n' "${COMPREPLY[@]}"
"""
ZSH = """
fpath=($1 $fpath) offers=$2
autoload -Uz compinit
compinit -u -D
compadd() {
  local -a offered
  builtin compadd -O offered "$@"
  print -rl -- $offered >> $offers
  builtin compadd "$@"
}
offer() { _main_complete; exit }
zle -C offer list-choices offer
bindkey '^I' offer
"""


def test_bash(switches):
    file = SHARE + "/bash-completion/completions/vastel-connect"
    assert set(output_of("bash", "--norc", "-c", BASH, "-", file, PATH=PATH).split()) == switches


def test_fish(switches, tmp_path):
    file = SHARE + "/fish/vendor_completions.d/vastel-connect.fish"
    home = str(tmp_path)
    offered = output_of("fish", "--no-config", "-c",
                        "source $argv[1]; complete -C 'vastel-connect -'", file,
                        HOME=home, XDG_CONFIG_HOME=home, XDG_DATA_HOME=home, PATH=PATH)
    assert {line.split("\t")[0] for line in offered.splitlines()} == switches


def test_zsh(switches, tmp_path):
    """zsh completes on a terminal only: the tabulator key makes it write down its offers."""
    setup, offers = tmp_path / "setup", tmp_path / "offers"
    setup.write_text(ZSH)
    keys = f"source {setup} {SHARE}/zsh/site-functions {offers}\nvastel-connect -\t"
    subprocess.run(["script", "-qec", "zsh -f -i", "/dev/null"], input=keys, text=True, timeout=LIMIT,
                   env={"PATH": PATH, "HOME": str(tmp_path), "TERM": "dumb"}, check=True,
                   stdout=subprocess.DEVNULL)
    assert set(offers.read_text().split()) == switches
