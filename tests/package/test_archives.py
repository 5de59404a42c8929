"""The RPM, and the archive that is unpacked in "/"."""

import os
import subprocess
import tarfile

from packages import COMMON_FILES, NAME, PackageTestCase, mode_of, package, run

FILES = COMMON_FILES | {"share/man/man1/vastel-connect.1",
                        "share/zsh/site-functions/_vastel-connect"}


class ArchiveTestCase(PackageTestCase):
    def expect_runs(self, root, prefix):
        """That an unpacked program runs, and that the entries name the one of the prefix."""
        usage = self.expect_success(f"{root}{prefix}/bin/vastel-connect", "-help")
        self.assertIn("-log", usage)
        unit = {"/usr": "lib"}.get(prefix, "share") + "/systemd/user/vastel-connect.service"
        for name in (f"share/applications/{NAME}.desktop", f"share/dbus-1/services/{NAME}.service",
                     unit):
            with open(f"{root}{prefix}/{name}", encoding="utf-8") as file:
                self.assertRegex(file.read(), rf"(?m)^(Exec|ExecStart)={prefix}/bin/vastel-connect ")


class Rpm(ArchiveTestCase):
    def setUp(self):
        self.rpm = package("vastel-connect-*.rpm")

    def query(self, *arguments):
        # The system has no database of its own, and an ordinary user makes none.
        return self.expect_success("rpm", "--dbpath", self.folder(), "--query", "--package",
                                   self.rpm, *arguments)

    def test_files(self):
        found = set()
        for line in self.query("--queryformat",
                               "[%{FILEMODES:octal} %{FILEUSERNAME} %{FILENAMES}\n]").splitlines():
            mode, owner, name = line.split()
            # No folder is among them: they are the system's.
            self.assertEqual((int(mode, 8), owner), (0o100000 | mode_of(name), "root"), line)
            # Some rpmbuilds compress the manual.
            found.add(name.removesuffix(".gz"))
        self.assertEqual(found, {f"/usr/{name}" for name in FILES} |
                         {"/usr/lib/systemd/user/vastel-connect.service"})

    def test_requires_what_registers_and_opens_links(self):
        names = {line.split("(")[0] for line in self.query("--requires").splitlines()
                 if not line.startswith(("rpmlib(", "rtld("))}
        loader = {name for name in names if name.startswith("ld-linux")}
        self.assertEqual(names - loader, {"desktop-file-utils", "libc.so.6", "libsystemd.so.0",
                                          "xdg-utils"})

    def test_has_no_scripts(self):
        self.assertEqual(self.query("--scripts"), "")

    def test_unpacks(self):
        root = self.folder()
        files = subprocess.run(["rpm2cpio", self.rpm], check=True, capture_output=True).stdout
        subprocess.run(["cpio", "--extract", "--make-directories", "--quiet"], input=files,
                       cwd=root, check=True)
        self.expect_runs(root, "/usr")

    def test_installs_into_a_folder_and_leaves_it(self):
        root = self.folder()
        here = ["unshare", "--map-root-user"] if os.getuid() else []
        # Its plugins want more of a system than a folder.
        rpm = [*here, "rpm", "--root", root, "--dbpath", "/database", "--noplugins"]
        # Debian 12's would rather not; later ones know no such option.
        if run(*rpm, "--force-debian", "--version").status == 0:
            rpm.append("--force-debian")
        self.expect_success(*rpm, "--nodeps", "--install", self.rpm)
        self.expect_runs(root, "/usr")
        self.assertEqual(self.expect_success(*rpm, "--verify", "--nodeps", "vastel-connect"), "")
        self.expect_success(*rpm, "--erase", "vastel-connect")
        left = [name for _, _, names in os.walk(root + "/usr") for name in names]
        self.assertEqual(left, [])


class Tarball(ArchiveTestCase):
    def test_files(self):
        found = set()
        with tarfile.open(package("vastel-connect-*.tar.gz")) as archive:
            for member in archive:
                # Unpacking sets owners and modes, also those of folders that are there.
                self.assertEqual((member.mode, member.uid, member.gid),
                                 (mode_of(member.name, member.isdir()), 0, 0), member.name)
                if not member.isdir():
                    found.add(member.name)
        self.assertEqual(found, {f"usr/local/{name}" for name in FILES} |
                         {"usr/local/share/systemd/user/vastel-connect.service"})

    def test_unpacks(self):
        root = self.folder()
        self.expect_success("tar", "--extract", "--no-same-owner", "--directory", root, "--file",
                            package("vastel-connect-*.tar.gz"))
        self.expect_runs(root, "/usr/local")
