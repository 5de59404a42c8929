"""The Debian package."""


from packages import COMMON_FILES, NAME, PackageTestCase, mode_of, package, run

FILES = {f"usr/{name}" for name in COMMON_FILES} | {
    "usr/lib/systemd/user/vastel-connect.service",
    "usr/share/doc/vastel-connect/changelog.gz",
    "usr/share/doc/vastel-connect/copyright",
    "usr/share/man/man1/vastel-connect.1.gz",
    "usr/share/zsh/vendor-completions/_vastel-connect",
}


class Deb(PackageTestCase):
    def setUp(self):
        self.deb = package("vastel-connect_*.deb")

    def test_lintian_is_silent(self):
        # Chance letters in machine code are other ones with each compiler.
        result = run("lintian", "-I", "--pedantic", "--suppress-tags", "spelling-error-in-binary",
                     package("*.changes"))
        self.assertEqual((result.status, result.output), (0, ""), result.errors)

    def test_files(self):
        found = set()
        for line in self.expect_success("dpkg-deb", "--contents", self.deb).splitlines():
            mode, owner, *_, name = line.split()
            name = name.removeprefix("./")
            is_folder = mode.startswith("d")
            expected = {0o755: "rwxr-xr-x", 0o644: "rw-r--r--"}[mode_of(name, is_folder)]
            self.assertEqual((mode[1:], owner), (expected, "root/root"), line)
            if not is_folder:
                found.add(name)
        self.assertEqual(found, FILES)

    def test_has_no_maintainer_scripts(self):
        root = self.folder()
        self.expect_success("dpkg-deb", "--control", self.deb, root)
        self.assertEqual(set(self.expect_success("ls", root).split()), {"control", "md5sums"})

    def test_depends_on_what_registers_and_opens_links(self):
        depends = self.expect_success("dpkg-deb", "--field", self.deb, "Depends").strip()
        names = {part.split()[0] for part in depends.split(", ")}
        self.assertEqual(names, {"desktop-file-utils", "xdg-utils", "libc6", "libsystemd0"})

    def test_commands_are_those_of_the_package(self):
        root = self.extract_deb()
        for name in (f"share/applications/{NAME}.desktop", f"share/dbus-1/services/{NAME}.service",
                     "lib/systemd/user/vastel-connect.service"):
            with open(f"{root}/usr/{name}", encoding="utf-8") as file:
                self.assertRegex(file.read(), "(?m)^(Exec|ExecStart)=/usr/bin/vastel-connect ")
