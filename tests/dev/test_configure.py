"""Configuring asks nothing of the machine, which may refuse namespaces."""

import os
import subprocess

from processes import LIMIT, ROOT


def test_configuring_asks_nothing_of_the_machine(tmp_path):
    for name in ("unshare", "mount"):
        (tmp_path / name).write_text(f'#!/bin/sh\necho "$0 $*" >> {tmp_path}/calls\nexit 1\n')
        (tmp_path / name).chmod(0o755)
    subprocess.run(["cmake", "-S", ROOT, "-B", tmp_path / "build", "-G", "Ninja",
                    "-DCONNECT_TESTS=all"], timeout=LIMIT, check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   env={**os.environ, "PATH": f"{tmp_path}:{os.environ['PATH']}"})
    assert not (tmp_path / "calls").exists()
