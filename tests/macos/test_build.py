"""The bundle and its installer: their files, and a build as on a Mac, where each of Apple's tools is
a stub, which notes what it is asked for and makes the files that are expected of it."""
import json
import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import xml.etree.ElementTree

import pytest
from processes import ROOT

PACKAGING = ROOT / "packaging" / "macos"
GNUSTEP_BUNDLE = pathlib.Path(os.environ["CONNECT_BUNDLE"])
TOOLS = ("c++", "codesign", "dsymutil", "ibtool", "install_name_tool", "strip", "sw_vers", "xattr",
         "xcrun")
TEMPLATE = "CPack.distribution.dist.in"
OLDEST = re.search(r"CMAKE_OSX_DEPLOYMENT_TARGET ([0-9.]+) ",
                   (ROOT / "CMakeLists.txt").read_text())[1]


def cache_variables(name):
    """A preset as options of CMake. The preset itself can be named on a Mac only."""
    presets = {p["name"]: p
               for p in json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}
    options = []
    while name:
        options[:0] = [f"-D{key}={value}"
                       for key, value in presets[name].get("cacheVariables", {}).items()]
        name = presets[name].get("inherits")
    return options


class Mac:
    """A folder with the stubs, and the preset `macos` built in it."""

    def __init__(self, folder):
        self.folder = folder
        self.stubs = folder / "stubs"
        self.stubs.mkdir()
        for tool in TOOLS:
            (self.stubs / tool).symlink_to(ROOT / "tests" / "macos" / "stub-tool")
        self.release = self.configure("macos")
        self.run("cmake", "--build", self.release)
        self.calls = (self.stubs / "calls").read_text().splitlines()
        self.bundle = self.release / "Vastel_Connect.app"

    def run(self, *command):
        environment = {"PATH": f"{self.stubs}:{os.environ['PATH']}",
                       "CONNECT_STUBS": str(self.stubs)}
        done = subprocess.run(command, env=environment, cwd=self.folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == 0, done.stdout

    def configure(self, preset):
        build = self.folder / preset
        self.run("cmake", "-G", "Ninja", "-S", ROOT, "-B", build,
                 f"-DCMAKE_TOOLCHAIN_FILE={ROOT}/tests/macos/Darwin.cmake",
                 "-DCMAKE_LIBRARY_ARCHITECTURE=" + os.environ["CONNECT_LIBRARY_ARCHITECTURE"],
                 *cache_variables(preset))
        return build


@pytest.fixture(scope="module")
def mac(tmp_path_factory):
    return Mac(tmp_path_factory.mktemp("mac"))


def test_compiles_for_both_architectures_and_the_oldest_system(mac):
    compiled = [call for call in mac.calls if re.search(r"^c\+\+ .* -c .*\.(cpp|mm)$", call)]
    assert len(compiled) > 20
    for call in compiled:
        assert "-arch arm64 -arch x86_64 " in call
        assert f" -mmacosx-version-min={OLDEST} " in call
        assert " -g " in call
        assert ("_LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_FAST" in call) \
            != call.endswith("BoostJson.cpp")
        assert call.endswith(".mm") == (" -fobjc-arc " in call)


def test_signs_the_bundle_when_it_is_whole(mac):
    files = {str(file.relative_to(mac.bundle)) for file in mac.bundle.rglob("*") if file.is_file()}
    assert files == {
        "Contents/Info.plist", "Contents/MacOS/Vastel_Connect", "Contents/Resources/AppIcon.icns",
        "Contents/Resources/MainMenu.nib/keyedobjects.nib"}
    program = mac.bundle / "Contents/MacOS/Vastel_Connect"
    *_, symbols, stripped, cleared, signed = [call for call in mac.calls
                                              if not call.startswith(("ibtool", "xcrun"))]
    assert symbols == f"dsymutil {program} -o {mac.bundle}.dSYM"
    assert stripped == f"strip -S {program}"
    assert cleared == f"xattr -cr {mac.bundle}"
    assert re.search(f"^codesign --force --options runtime .* --sign - {mac.bundle}$", signed)


def test_debug_build_lets_itself_be_debugged(mac):
    build = (mac.configure("debug") / "build.ninja").read_text()
    assert "codesign --force --timestamp=none" in build
    assert "--options runtime" not in build
    assert "strip -S" not in build
    # A Mac may look at a new test program for longer than CMake waits.
    assert set(re.findall("TEST_DISCOVERY_TIMEOUT=([0-9]+)", build)) == {"60"}


def test_property_list_has_what_macos_alone_reads(mac):
    text = (mac.bundle / "Contents/Info.plist").read_bytes()
    assert text == (GNUSTEP_BUNDLE / "Resources/Info.plist").read_bytes()
    keys = plistlib.loads(text, fmt=plistlib.FMT_XML)
    assert keys["CFBundleURLTypes"][0]["CFBundleURLSchemes"] == ["screenpop"]
    assert keys["CFBundleURLTypes"][0]["CFBundleTypeRole"] == "Viewer"
    version = re.search("^## ([0-9.]+) ", (ROOT / "CHANGELOG.md").read_text(), re.MULTILINE)[1]
    assert keys["CFBundleVersion"] == keys["CFBundleShortVersionString"] == version
    assert keys["CFBundlePackageType"] == "APPL"
    assert keys["LSMinimumSystemVersion"] == OLDEST
    assert keys["LSUIElement"] is keys["LSAppNapIsDisabled"] is True
    assert keys["NSSupportsAutomaticTermination"] is keys["NSSupportsSuddenTermination"] is False
    assert "LSMultipleInstancesProhibited" not in keys
    for name in (keys["CFBundleExecutable"], f"Resources/{keys['CFBundleIconFile']}.icns",
                 f"Resources/{keys['NSMainNibFile']}.xib"):
        assert (GNUSTEP_BUNDLE / name).is_file()


def test_installs_the_bundle_under_its_other_name(mac):
    mac.run("cmake", "--install", mac.release, "--prefix", mac.folder / "Applications")
    installed = mac.folder / "Applications" / "Vastel Connect.app" / "Contents"
    assert os.access(installed / "MacOS" / "Vastel_Connect", os.X_OK)
    assert (installed / "Resources" / "MainMenu.nib" / "keyedobjects.nib").exists()


def test_installer_is_told_what_it_needs(mac):
    """CPack makes a product archive on a Mac only: here it fills in our template as the header of a
    shell archive, for which it looks in the same places."""
    config = mac.release / "CPackConfig.cmake"
    modules = pathlib.Path(re.search(r'set\(CPACK_MODULE_PATH "([^";]+)', config.read_text())[1])
    place, = [file.parent.relative_to(modules) for file in modules.rglob(TEMPLATE)]
    copied = mac.folder / "modules" / place
    copied.mkdir(parents=True)
    shutil.copy(modules / place / TEMPLATE, copied / "CPack.STGZ_Header.sh.in")
    mac.run("cpack", "-G", "STGZ", "--config", config, "-B", mac.folder,
            "-D", f"CPACK_MODULE_PATH={mac.folder}/modules",
            "-D", "CPACK_PACKAGEMAKER_CHOICES=<choices-outline/>")
    header = next(mac.folder.glob("*.sh")).read_bytes()
    end = b"</installer-gui-script>"
    assert end in header, "CPack took a template of its own"
    root = xml.etree.ElementTree.fromstring(header[:header.index(end) + len(end)])
    assert [element.tag for element in root] == \
        ["title", "options", "domains", "volume-check", "choices-outline"]
    assert root.find("options").attrib == {"customize": "never", "require-scripts": "false",
                                           "hostArchitectures": "arm64,x86_64"}
    assert root.find("domains").attrib == {
        "enable_anywhere": "false", "enable_currentUserHome": "false", "enable_localSystem": "true"}
    assert root.find("volume-check/allowed-os-versions/os-version").attrib == {"min": OLDEST}

    component, = plistlib.loads((PACKAGING / "Component.plist").read_bytes())
    assert component["RootRelativeBundlePath"] == "Applications/Vastel Connect.app"
    assert component["BundleIsRelocatable"] is False
    folder, = mac.folder.glob("_CPack_Packages/**/Applications")
    assert folder.stat().st_mode & 0o777 == 0o775
    assert plistlib.loads((PACKAGING / "Vastel_Connect.entitlements").read_bytes()) == {}
