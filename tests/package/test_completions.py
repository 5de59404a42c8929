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
fpath=({completions} $fpath)
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
    (tmp_path / "setup").write_text(
        ZSH.format(completions=SHARE + "/zsh/site-functions", folder=tmp_path))
    master, terminal = os.openpty()
    with subprocess.Popen(
            ["zsh", "-f", "-i"], stdin=terminal, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True,
            env={"PATH": PATH, "HOME": str(tmp_path), "TERM": "dumb"}) as zsh:
        os.close(terminal)
        try:
            os.write(master, f"source {tmp_path}/setup\nvastel-connect -\t".encode())
            assert zsh.wait(LIMIT) == 0
        finally:
            zsh.kill()
            os.close(master)
    assert set((tmp_path / "offered").read_text().split()) == switches
