"""The files that tell the desktop about the program, by the judgement of its own tools."""

import os
import re

from packages import NAME, output_of

SHARE = os.environ["CONNECT_STAGE"] + "/share"


def test_desktop_entry():
    # Hints go to the output, and change no status.
    assert output_of("desktop-file-validate", f"{SHARE}/applications/{NAME}.desktop") == ""


def test_metainfo():
    output = output_of("appstreamcli", "validate", "--pedantic", "--no-net",
                       f"{SHARE}/metainfo/{NAME}.metainfo.xml")
    remarks = re.findall(r"^[A-Z]: [^ ]+ (.*?) *$", output, re.MULTILINE)
    # Each release knows one of the two forms that the maker's name has there.
    names = {"unknown-tag developer", "developer-name-tag-deprecated"}
    # The identifier is the name on the bus, which the bundle on macOS has, too.
    assert set(remarks) - names == {f"cid-contains-uppercase-letter {NAME}"}, output


def test_manual_page(switches):
    """No request of it is unknown; it names all switches, and files that are there."""
    text = output_of("man", "--warnings", "--encoding=UTF-8", "--local-file",
                     SHARE + "/man/man1/vastel-connect.1", MANROFFOPT="-ww", MANWIDTH="160")
    for switch in switches:
        assert re.search(rf"(?m)^ +(-help, )?{switch}(, -h)?(  |$)", text), switch
    files = re.findall(r"(?m)^ +(/\S+/share/\S+)$", text)
    assert len(files) >= 4, text
    assert [name for name in files if not os.path.exists(name)] == []


def test_icon(tmp_path):
    output_of("rsvg-convert", "--output", tmp_path / "icon.png",
              f"{SHARE}/icons/hicolor/scalable/apps/{NAME}.svg")


def test_unit(tmp_path):
    file = SHARE + "/systemd/user/vastel-connect.service"
    assert output_of("systemd-analyze", "--user", "--man=no", "verify", file,
                     XDG_RUNTIME_DIR=str(tmp_path)) == ""
