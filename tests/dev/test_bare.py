"""What dev/bare says when it makes no system, and what it leaves behind."""

import os
import re
import subprocess

import pytest

from processes import LIMIT, ROOT

SYSTEMS = ROOT / "build/bare"


@pytest.mark.parametrize("arguments, errors, status", [
    (["bookworm"], "usage: dev/bare SUITE COMMAND .*", 2),
    (["no-such-suite", "true"],
     "dev/bare: no system of the suite no-such-suite can be made: .*", 1),
    (["bookworm", "true"], "This machine refuses namespaces: .*", 77)])
def test_a_sentence_says_why_no_system_is_made(tmp_path, arguments, errors, status):
    systems = lambda: [*SYSTEMS.iterdir()] if SYSTEMS.exists() else []
    before = systems()
    folder, tools = tmp_path / "temporary", tmp_path / "tools"
    folder.mkdir()
    tools.mkdir()
    # The system's own users pass through it when it is made and removed.
    for each in (*folder.parents, folder):
        if each.is_relative_to(tmp_path.parent.parent):
            each.chmod(0o755)
    if status == 77:
        (tools / "unshare").write_text("#!/bin/sh\necho Not permitted >&2\nexit 1\n")
        (tools / "unshare").chmod(0o755)
    done = subprocess.run([ROOT / "dev/bare", *arguments], timeout=2 * LIMIT, check=False,
                          env={**os.environ, "TMPDIR": str(folder),
                               "PATH": f"{tools}:{os.environ['PATH']}"},
                          stdin=subprocess.DEVNULL, capture_output=True, text=True)
    assert re.fullmatch(rf"{errors}\n", done.stderr)
    assert done.returncode == status
    assert [*folder.iterdir()] == []
    assert systems() == before
