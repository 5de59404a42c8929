"""dev/setup, among tools that only say what is installed and what is offered."""

import os
import re
import shutil
import subprocess
import tempfile
import types
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ANYTHING = "awk bash dpkg env grep head mktemp paste rm sed sort".split()
NOBODY = 65534

# What a release offers, by name and version.
OFFERED = {
    "g++": "4:12.2.0-3", "cmake": "3.25.1-1", "ninja-build": "1.11.1-2", "pkg-config": "1.8.1-1",
    "libsystemd-dev": "252.39-1", "libboost-json1.81-dev": "1.81.0-5", "libutfcpp-dev": "3.2.3-1",
    "libgtest-dev": "1.12.1-0.2", "libgmock-dev": "1.12.1-0.2",
}
UNIT = [name for name in OFFERED if name != "libboost-json1.81-dev"]


class Setup(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="connect-test-")
        self.addCleanup(folder.cleanup)
        os.chmod(folder.name, 0o777)
        self.folder = folder.name
        shutil.copy(ROOT + "/dev/setup", self.folder)
        for tool in ANYTHING:
            os.symlink(shutil.which(tool), f"{self.folder}/{tool}")
        self.tool("apt-get", f'shift; echo "$*" >> {self.folder}/calls')
        self.installed({})
        self.offered(OFFERED)
        self.arguments = ["unit"]

    def tool(self, name, script):
        path = f"{self.folder}/{name}"
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"#!{shutil.which('sh')}\n{script}\n")
        os.chmod(path, 0o755)

    def installed(self, packages, status="installed"):
        self.tool("dpkg-query", "echo '" + "\n".join(
            f"{status} {name} {version}" for name, version in packages.items()) + "'")

    def offered(self, packages):
        self.tool("apt-cache", "echo '" + "\n".join(
            f"{name}:\n  Installed: (none)\n  Candidate: {version}\n  Version table:"
            for name, version in {**packages, "virtual": "(none)"}.items()) + "'")

    def run_setup(self, root=True, status=0):
        command = ["bash", self.folder + "/setup", *self.arguments]
        if root and os.getuid() != 0:
            command = ["unshare", "--user", "--map-root-user", *command]
        if not root and os.getuid() == 0:
            command = ["setpriv", f"--reuid={NOBODY}", "--clear-groups", *command]
        command[0] = shutil.which(command[0])
        done = subprocess.run(command, env={"PATH": self.folder}, capture_output=True,
                              encoding="utf-8", timeout=60, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        calls = []
        if os.path.exists(self.folder + "/calls"):
            with open(self.folder + "/calls", encoding="utf-8") as file:
                calls = file.read().splitlines()
        return types.SimpleNamespace(output=done.stdout, errors=done.stderr, calls=calls)

    def expect_installation(self, *packages):
        done = self.run_setup()
        self.assertEqual(done.errors, "")
        update, install = done.calls
        self.assertEqual(update, "update")
        self.assertEqual([word for word in install.split() if not word.startswith("-")],
                         ["install", *packages])

    def expect_one_sentence(self, text, calls=(), **options):
        done = self.run_setup(status=1, **options)
        self.assertRegex(done.errors, rf"\Adev/setup: {text}\n\Z")
        self.assertEqual(done.calls, list(calls))

    def test_installs_nothing_twice(self):
        self.installed(OFFERED)
        self.tool("apt-cache", "exit 1")
        done = self.run_setup(root=False)
        self.assertEqual((done.output, done.errors, done.calls), ("", "", []))

    def test_installs_what_is_missing(self):
        self.installed({name: "9" for name in UNIT if name != "cmake"})
        self.expect_installation("cmake", "libboost-json1.81-dev")

    def test_takes_the_newest_of_a_library(self):
        self.installed(dict.fromkeys(UNIT, "1"))
        self.offered({"libboost-json1.100-dev": "1.100.0-1", "libboost-json1.83-dev": "1.83.0-1"})
        self.expect_installation("libboost-json1.100-dev")

    def test_prefers_the_release_s_own_version(self):
        self.installed(dict.fromkeys(UNIT, "1"))
        self.offered({"libboost-json-dev": "1.83.0.2", "libboost-json1.88-dev": "1.88.0-1"})
        self.expect_installation("libboost-json-dev")

    def test_leaves_a_library_that_is_too_old(self):
        self.installed(dict.fromkeys(UNIT, "1") | {"libboost-json-dev": "1.74.0.3"})
        self.offered({"libboost-json-dev": "1.74.0.3", "libboost-json1.81-dev": "1.81.0-5"})
        self.expect_installation("libboost-json1.81-dev")

    def test_is_content_with_any_version_that_serves(self):
        self.installed(dict.fromkeys(UNIT, "1") | {"libboost-json1.81-dev": "1.81.0-5"})
        self.offered({"libboost-json-dev": "1.92.0.1"})
        self.assertEqual(self.run_setup().calls, [])

    def test_says_what_nobody_offers(self):
        self.installed({name: "1" for name in UNIT if name != "libutfcpp-dev"})
        self.offered({"libboost-json-dev": "1.74.0.3"})
        self.expect_one_sentence(
            r"no package source offers libboost-json-dev of at least 1\.81, for reading and "
            r"writing JSON; libutfcpp-dev, for UTF-8\. Add one that does\.", ["update"])

    def test_does_without_what_is_in_brackets(self):
        self.arguments = ["tests"]
        with open(ROOT + "/dev/setup", encoding="utf-8") as file:
            names = re.findall(r"[a-z][a-z0-9.+-]*\*?[a-z0-9.+-]*", file.read())
        self.installed({name.replace("*", "9"): "99" for name in names
                        if not name.startswith("chromium")})
        self.offered({})
        done = self.run_setup(root=False)
        self.assertEqual((done.output, done.errors, done.calls), ("", "", []))

    def test_knows_what_the_debian_package_is_built_with(self):
        with open(ROOT + "/debian/control", encoding="utf-8") as file:
            wanted = re.search(r"^Build-Depends:(.*?)^\S", file.read(), re.MULTILINE | re.DOTALL)[1]
        names = {re.match(r"\s*([a-z0-9+.-]+)", each)[1] for each in wanted.split(",")}
        with open(ROOT + "/dev/setup", encoding="utf-8") as file:
            listed = set(re.split(r"[\s:|]+", file.read()))
        self.assertEqual(names - listed, {"debhelper-compat"})

    def test_says_that_the_network_is_missing(self):
        self.offered({})
        self.tool("apt-get", "echo 'W: Failed to fetch http://source.test/'")
        self.expect_one_sentence("apt does not reach its package sources, so look at the network: "
                                 "Failed to fetch http://source.test/")

    def test_says_why_apt_fails(self):
        self.tool("apt-get", "case $2 in install) echo 'E: Disk full'; exit 100; esac")
        self.expect_one_sentence("apt-get install failed: Disk full")

    def test_says_that_an_installation_was_interrupted(self):
        self.installed({"g++": "1"}, status="half-configured")
        self.expect_one_sentence("an installation was interrupted.*dpkg --configure -a.*")

    def test_says_whose_rights_are_missing(self):
        self.expect_one_sentence("installing takes root's rights, and there is no sudo.*",
                                 root=False)
        self.tool("sudo", "exit 1")
        self.expect_one_sentence("installing takes root's rights, which sudo refuses.*", root=False)

    def test_names_what_other_systems_need(self):
        os.remove(self.folder + "/apt-get")
        done = self.run_setup(status=1)
        self.assertIn("\n  libboost-json-dev of at least 1.81, for reading and writing JSON\n",
                      done.errors)
        self.assertEqual(len(done.errors.splitlines()), 1 + len(OFFERED))
