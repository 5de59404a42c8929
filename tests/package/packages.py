"""The packages that dev/package made."""

import glob
import os
import subprocess

from processes import LIMIT

# Where they are; not all tests want them.
PACKAGES = os.environ.get("CONNECT_PACKAGES")
NAME = "com.vastel.Connect"


def package(pattern):
    """The only package whose file name matches."""
    found = glob.glob(f"{PACKAGES}/{pattern}")
    assert len(found) == 1, f"{pattern} is {found}"
    return found[0]


def run(*command, **environment):
    """Runs a command in the C.UTF-8 locale: the process, which has ended."""
    return subprocess.run(command, env={**os.environ, "LC_ALL": "C.UTF-8", **environment},
                          stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8",
                          timeout=LIMIT, check=False)


def output_of(*command, **environment):
    """The output of a command, which is to succeed without complaints."""
    done = run(*command, **environment)
    assert (done.returncode, done.stderr) == (0, ""), done.stdout
    return done.stdout
