"""One apt repository for the packages of several releases of Debian."""

import io
import re
import tarfile

from packages import changed_deb, output_of, package

DISTRIBUTION = "Codename: {}\nComponents: main\nArchitectures: amd64 arm64 i386\n\n"
UPDATE = ("update", "-o", "Dir::Etc::sourcelist=sources.list.d/connect.list",
          "-o", "Dir::Etc::sourceparts=-", "-o", "APT::Get::List-Cleanup=0")


def test_an_upgrade_of_the_system_brings_the_build_for_the_next_release(tree, tmp_path):
    own = package("vastel-connect_*.deb")
    start, release = re.fullmatch(r"([\d.]+\+[a-z]+)([\d.]+)\n",
                                  output_of("dpkg-deb", "--field", own, "Version")).groups()
    releases = {"own": release, "next": f"{float(release) + 1:g}"}
    debs = {"own": own, "next": changed_deb(tmp_path, f"/^Version:/s/{release}$/{releases['next']}/")}
    (tmp_path / "conf").mkdir()
    (tmp_path / "conf/distributions").write_text("".join(map(DISTRIBUTION.format, debs)))
    for suite, deb in debs.items():
        output_of("reprepro", "--silent", "--basedir", tmp_path, "includedeb", suite, deb)
    files = io.BytesIO()
    with tarfile.open(fileobj=files, mode="w") as archive:
        archive.add(tmp_path, "repository")
    tree.run("tar", "-C", "/", "-x", input=files.getvalue())

    for suite, release in releases.items():
        tree.write("/etc/apt/sources.list.d/connect.list",
                   f"deb [trusted=yes] file:/repository {suite} main".encode())
        tree.apt(*UPDATE)
        tree.apt("install", "--no-install-recommends", "vastel-connect")
        assert tree.run("dpkg-query", "--show", "--showformat", "${Version}",
                        "vastel-connect") == start + release
