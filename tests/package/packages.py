"""The packages that dev/package made."""

import glob
import os
import subprocess

from processes import LIMIT

# Where they are; not all tests want them.
PACKAGES = os.environ.get("CONNECT_PACKAGES")
NAME = "com.vastel.Connect"


def package(pattern, folder=PACKAGES):
    """The only package whose file name matches."""
    found = glob.glob(f"{folder}/{pattern}")
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


def changed_deb(folder, *changes):
    """The Debian package again, with fields that are changed as `sed` says."""
    tree, deb = folder / "changed", folder / "changed.deb"
    output_of("dpkg-deb", "--raw-extract", package("vastel-connect_*.deb"), tree)
    output_of("sed", "--in-place", *(f"--expression={change}" for change in changes),
              tree / "DEBIAN/control")
    output_of("dpkg-deb", "--root-owner-group", "--build", tree, deb)
    output_of("rm", "--recursive", tree)
    return deb
