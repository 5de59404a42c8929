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
    version, release = re.fullmatch(r"([\d.]+\+deb)(\d+)",
                                    output_of("dpkg-deb", "--field", own, "Version").strip()).groups()
    debs = {"own": own, "next": changed_deb(tmp_path, f"/^Version:/s/{release}$/{int(release) + 1}/")}
    (tmp_path / "conf").mkdir()
    (tmp_path / "conf/distributions").write_text("".join(map(DISTRIBUTION.format, debs)))
    for suite, deb in debs.items():
        output_of("reprepro", "--silent", "--basedir", tmp_path, "includedeb", suite, deb)
    files = io.BytesIO()
    with tarfile.open(fileobj=files, mode="w") as archive:
        archive.add(tmp_path, "repository")
    tree.run("tar", "-C", "/", "-x", input=files.getvalue())

    for suite, number in ("own", int(release)), ("next", int(release) + 1):
        tree.write("/etc/apt/sources.list.d/connect.list",
                   f"deb [trusted=yes] file:/repository {suite} main".encode())
        tree.apt(*UPDATE)
        tree.apt("install", "--no-install-recommends", "vastel-connect")
        assert tree.run("dpkg-query", "--show", "--showformat", "${Version}",
                        "vastel-connect") == f"{version}{number}"
