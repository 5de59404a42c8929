"""What dev/bare says when it makes no system, and what it leaves behind."""

import os
import pathlib
import re
import subprocess
import tempfile

import pytest

from processes import LIMIT, ROOT

SYSTEMS = ROOT / "build/bare"


@pytest.mark.parametrize("arguments, errors, status", [
    (["bookworm"], "usage: dev/bare SUITE COMMAND .*", 2),
    (["no-such-suite", "true"],
     "dev/bare: no system of the suite no-such-suite can be made: .*", 1),
    (["bookworm", "true"], "This machine refuses namespaces: .*", 77)])
def test_a_sentence_says_why_no_system_is_made(arguments, errors, status):
    systems = lambda: [*SYSTEMS.iterdir()] if SYSTEMS.exists() else []
    before = systems()
    with tempfile.TemporaryDirectory() as root:
        # The system's own users pass through it when it is made and removed. pytest closes its own.
        os.chmod(root, 0o755)
        folder, tools = pathlib.Path(root, "temporary"), pathlib.Path(root, "tools")
        folder.mkdir(mode=0o755)
        tools.mkdir()
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
