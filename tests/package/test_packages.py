"""What lies in the Debian package, in the RPM and in the archive, and what they depend on."""

import glob
import io
import os
import re
import subprocess
import tarfile
import tempfile

import pytest

from packages import NAME, PACKAGES, output_of, package, run
from processes import ROOT

# The prefix of each package, and the command that makes a tar archive of it.
KINDS = {
    "vastel-connect_*.deb": ("/usr", "dpkg-deb --fsys-tarfile"),
    "vastel-connect-*.rpm": ("/usr", "rpm2archive - <"),
    "vastel-connect-*.tar.gz": ("/usr/local", "cat"),
}
FORMS = pytest.mark.parametrize("pattern", KINDS)
DOCUMENTS = ("clients.md", "deploy.md", "examples/chromium.json", "examples/firefox.json",
             "examples/vastel-connect.conf", "links.html", "links.md", "pictures/terminal.svg",
             "troubleshooting.md")
FILES = {
    "bin/vastel-connect",
    f"share/applications/{NAME}.desktop",
    "share/bash-completion/completions/vastel-connect",
    f"share/dbus-1/services/{NAME}.service",
    *(f"share/doc/vastel-connect/{name}" for name in DOCUMENTS),
    "share/fish/vendor_completions.d/vastel-connect.fish",
    f"share/icons/hicolor/scalable/apps/{NAME}.svg",
    "share/man/man1/vastel-connect.1.gz",
    f"share/metainfo/{NAME}.metainfo.xml",
    "lib/systemd/user/vastel-connect.service",
    "share/doc/vastel-connect/LICENSE",
    "share/zsh/site-functions/_vastel-connect",
}
# The places that some systems have for them.
PLACES = {
    "share/systemd": "lib/systemd",
    "share/doc/vastel-connect/copyright": "share/doc/vastel-connect/LICENSE",
    "share/zsh/vendor-completions": "share/zsh/site-functions",
    "vastel-connect.1": "vastel-connect.1.gz",
}


def content(pattern):
    prefix, command = KINDS[pattern]
    done = subprocess.run(["sh", "-c", f'{command} "$1"', "-", package(pattern)], check=True,
                          stdout=subprocess.PIPE)
    return prefix, tarfile.open(fileobj=io.BytesIO(done.stdout))


def query(question):
    """Asks the RPM, with an empty database, which rpm makes where there is none."""
    with tempfile.TemporaryDirectory() as database:
        return output_of("rpm", "--dbpath", database, "--query", "--package",
                         package("vastel-connect-*.rpm"), question)


@FORMS
def test_holds_these_files_and_their_modes(pattern):
    prefix, archive = content(pattern)
    found = set()
    for member in archive:
        executable = member.isdir() or "/bin/" in member.name
        assert (member.mode & 0o7777, member.uid, member.gid) == (
            0o755 if executable else 0o644, 0, 0), member.name
        if not member.isdir():
            name = member.name.removeprefix(".").removeprefix("/").removeprefix(prefix[1:] + "/")
            for place, common in PLACES.items():
                name = re.sub(f"{re.escape(place)}(?=/|$)", common, name)
            found.add(name)
    assert found - {"share/doc/vastel-connect/changelog.gz"} == FILES


@FORMS
def test_runs_and_is_named_by_its_path(pattern, tmp_path):
    prefix, archive = content(pattern)
    archive.extractall(tmp_path)
    root = f"{tmp_path}{prefix}"
    assert "-log" in output_of(f"{root}/bin/vastel-connect", "-help")
    unit = "lib" if prefix == "/usr" else "share"
    for name in (f"share/applications/{NAME}.desktop", f"share/dbus-1/services/{NAME}.service",
                 f"{unit}/systemd/user/vastel-connect.service"):
        with open(f"{root}/{name}", encoding="utf-8") as file:
            assert re.search(f"(?m)^(Exec|ExecStart)={prefix}/bin/vastel-connect ", file.read())


if glob.glob(f"{PACKAGES}/*+deb12_*"):  # What is published for other systems is built there.
    def test_wants_no_newer_c_library_than_the_oldest_system_has(tmp_path):
        """Enterprise Linux 9 has that of 2.34."""
        _, archive = content("vastel-connect-*.rpm")
        archive.extractall(tmp_path)
        symbols = output_of("objdump", "--dynamic-syms", tmp_path / "usr/bin/vastel-connect")
        versions = re.findall(r"GLIBC_(\d+)\.(\d+)", symbols)
        assert max((int(major), int(minor)) for major, minor in versions) <= (2, 34)


# What registers the program, opens links, and is linked.


def test_the_debian_package_depends_on_what_it_uses():
    fields = output_of("dpkg-deb", "--field", package("vastel-connect_*.deb"))
    names = lambda field: {each.split()[0] for each in re.search(
        rf"(?m)^{field}: (.*)$", fields)[1].split(", ")}
    assert names("Depends") == {"desktop-file-utils", "libglib2.0-bin", "xdg-utils", "libc6",
                                "libgcc-s1", "libsystemd0"}
    # Their fixes come with a release of ours only.
    static = {re.sub(r"[-\d.]+$", "", name) for name in names("Static-Built-Using")}
    assert static == {"boost", "gcc", "utfcpp"}


def test_the_rpm_depends_on_what_it_uses():
    names = {line.split("(")[0] for line in query("--requires").splitlines()
             if not line.startswith(("rpmlib(", "rtld("))}
    loader = {name for name in names if name.startswith("ld-linux")}
    assert names - loader == {"/usr/bin/gio", "desktop-file-utils", "xdg-utils", "libc.so.6",
                              "libgcc_s.so.1", "libsystemd.so.0"}


def test_none_has_scripts():
    assert query("--scripts") == ""
    members = subprocess.run(["dpkg-deb", "--ctrl-tarfile", package("vastel-connect_*.deb")],
                             check=True, stdout=subprocess.PIPE).stdout
    with tarfile.open(fileobj=io.BytesIO(members)) as archive:
        assert {member.name for member in archive} == {".", "./control", "./md5sums"}


def test_lintian_is_silent():
    # Chance letters in machine code are other ones with each compiler; Debian 12's lintian does not
    # know the field Static-Built-Using; the page about links is not for a register of books.
    tags = ("spelling-error-in-binary", "unknown-field",
            "possible-documentation-but-no-doc-base-registration")
    done = run("lintian", "-I", "--pedantic", "--suppress-tags", ",".join(tags),
               package("*.changes"))
    assert (done.returncode, done.stdout) == (0, "")


def test_the_rpm_installs_into_a_folder_and_leaves_it(tmp_path):
    here = ["unshare", "--map-root-user"] if os.getuid() else []
    # Its plugins want more of a system than a folder.
    rpm = [*here, "rpm", "--root", tmp_path, "--dbpath", "/database", "--noplugins"]
    # Debian 12's would rather not; later ones know no such option.
    if run(*rpm, "--force-debian", "--version").returncode == 0:
        rpm.append("--force-debian")
    output_of(*rpm, "--nodeps", "--install", package("vastel-connect-*.rpm"))
    assert output_of(*rpm, "--verify", "--nodeps", "vastel-connect") == ""
    output_of(*rpm, "--erase", "vastel-connect")
    assert [names for _, _, names in os.walk(tmp_path / "usr") if names] == []


def test_changes_are_folded_for_debian_and_told_in_the_rpm():
    changes = "".join(f"## 1.{minor}.0 (2026-12-01)\n\n- {'word ' * 18}\n  more\n- Second.\n\n"
                      for minor in (1, 0))
    text = subprocess.run([ROOT / "packaging/linux/changelog", "deb", "bookworm", "+deb12"],
                          check=True, input=changes, stdout=subprocess.PIPE, text=True).stdout
    assert [line[:8] for line in text.splitlines() if line] == 2 * [
        "vastel-c", "  * word", "    word", "  * Seco", " -- Vast"]
    assert max(map(len, text.splitlines())) <= 80
    assert re.match(r"\* \w{3} \w{3} \d+ \d{4} Vastel <support@vastel.example> - [\d.]+-1\n- ",
                    query("--changelog"))
