"""dev/setup, among tools that only say what is installed and what is offered."""

import os
import re
import shutil
import subprocess

import pytest

from processes import ROOT

SETUP = (ROOT / "dev/setup").read_text()
JSON = "libboost-json1.81-dev"
# What a release offers for the tests of the units, by name and version.
OFFERED = {
    "g++": "4:12.2.0-3", "cmake": "3.25.1-1", "ninja-build": "1.11.1-2", "pkg-config": "1.8.1-1",
    "libsystemd-dev": "252.39-1", JSON: "1.81.0-5", "libutfcpp-dev": "3.2.3-1",
    "libgtest-dev": "1.12.1-0.2", "libgmock-dev": "1.12.1-0.2"}
OTHERS = {name: "1" for name in OFFERED if name != JSON}


@pytest.fixture
def setup(tmp_path):
    """Runs dev/setup where some packages are installed and some are offered, and tools are scripts:
    what it says, and what it has apt-get do."""
    # Installing takes root's rights.
    as_root = [] if os.getuid() == 0 else [shutil.which("unshare"), "--map-root-user"]

    def run(installed, offered=OFFERED, group="unit", status="installed", apt="", **tools):
        shutil.copy(ROOT / "dev/setup", tmp_path)
        for tool in "awk bash dpkg env grep head mktemp paste rm sed sort".split():
            (tmp_path / tool).symlink_to(shutil.which(tool))
        lines = "\n".join(f"{status} {name} {version}" for name, version in installed.items())
        policy = "\n".join(f"{name}:\n  Candidate: {version}" for name, version in offered.items())
        scripts = {"dpkg-query": f"echo '{lines}'", "apt-cache": f"echo '{policy}'",
                   "apt-get": f'shift; echo "$*" >> {tmp_path}/calls\n{apt}', **tools}
        for name, script in scripts.items():
            (tmp_path / name).write_text(f"#!{shutil.which('sh')}\n{script}\n")
            (tmp_path / name).chmod(0o755)
        done = subprocess.run([*as_root, shutil.which("bash"), tmp_path / "setup", group],
                              env={"PATH": str(tmp_path)}, capture_output=True, text=True,
                              check=False)
        calls = tmp_path / "calls"
        words = calls.read_text().replace("update\n", "").split() if calls.exists() else []
        return done.stderr, [word for word in words if not word.startswith("-")]

    return run


@pytest.mark.parametrize("installed, offered, wanted", [
    (OFFERED, {}, []),
    ({name: "9" for name in OTHERS if name != "cmake"}, OFFERED, ["cmake", JSON]),
    # The newest of a library; the release's own version before that; none that is too old.
    (OTHERS, {"libboost-json1.100-dev": "1.100.0-1", "libboost-json1.83-dev": "1.83.0-1"},
     ["libboost-json1.100-dev"]),
    (OTHERS, {"libboost-json-dev": "1.83.0.2", "libboost-json1.88-dev": "1.88.0-1"},
     ["libboost-json-dev"]),
    (OTHERS | {"libboost-json-dev": "1.74.0.3"}, {"libboost-json-dev": "1.74.0.3", JSON: "1.81.0-5"},
     [JSON]),
    # Any version that serves does.
    (OTHERS | {JSON: "1.81.0-5"}, {"libboost-json-dev": "1.92.0.1"}, [])])
def test_what_is_missing_is_installed(setup, installed, offered, wanted):
    assert setup(installed, offered) == ("", ["install", *wanted] if wanted else [])


@pytest.mark.parametrize("error, options", [
    (r"no package source offers libboost-json-dev of at least 1\.81, for reading and writing JSON; "
     r"libutfcpp-dev, for UTF-8\. Add one that does\.",
     {"installed": {name: "1" for name in OTHERS if name != "libutfcpp-dev"},
      "offered": {"libboost-json-dev": "1.74.0.3"}}),
    ("apt does not reach its package sources, so look at the network: Failed to fetch x",
     {"offered": {}, "apt": "echo 'W: Failed to fetch x'"}),
    ("apt-get install failed: Disk full",
     {"apt": "[ $1 = update ] || { echo 'E: Disk full'; exit 1; }"}),
    (r"what is to be installed excludes liba-dev libb\. .*: sudo apt-get remove liba-dev libb",
     {"apt": "[ $1 = update ] || { printf 'The following packages will be REMOVED:\\n  liba-dev"
             "\\n  libb\\nThe following NEW packages will be installed:\\n  libc\\nE: Packages need to be removed\\n'; exit 1; }"}),
    ("an installation was interrupted.*dpkg --configure -a.*", {"status": "half-configured"})])
def test_one_sentence_says_what_is_wrong(setup, error, options):
    errors, _ = setup(**{"installed": {"g++": "1"}, **options})
    assert re.fullmatch(rf"dev/setup: {error}\n", errors)


def test_it_does_without_what_is_in_brackets(setup):
    names = re.findall(r"[a-z][a-z0-9.+*?-]*", SETUP)
    installed = {re.sub("[*?]", "9", name): "99" for name in names if not name.startswith("chromium")}
    assert setup(installed, {}, "tests") == ("", [])


def test_it_knows_what_the_debian_package_is_built_with():
    wanted = re.search(r"^Build-Depends:(.*?)^\S", (ROOT / "debian/control").read_text(),
                       re.MULTILINE | re.DOTALL)[1]
    names = {re.match(r"\s*([a-z0-9+.-]+)", each)[1] for each in wanted.split(",")}
    assert names - set(re.split(r"[\s:|]+", SETUP)) == {"debhelper-compat"}
