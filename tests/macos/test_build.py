"""Configures, builds and packages as on a Mac, where each of Apple's tools is a stub: what they are
asked for, and what becomes of the files that they make."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).parent.parent.parent
GNUSTEP_BUNDLE = pathlib.Path(os.environ["CONNECT_BUNDLE"])
TOOLS = ("c++", "codesign", "ibtool", "install_name_tool", "sw_vers", "xcrun")
TEMPLATE = "CPack.distribution.dist.in"


def cache_variables(preset):
    """A preset as options of CMake. The preset itself can be named on a Mac only."""
    presets = {p["name"]: p
               for p in json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}

    def of(name):
        parent = presets[name].get("inherits")
        return {**(of(parent) if parent else {}), **presets[name].get("cacheVariables", {})}
    return [f"-D{name}={value}" for name, value in of(preset).items()]


def deployment_target():
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"CMAKE_OSX_DEPLOYMENT_TARGET ([0-9.]+) ", text)[1]


class MacTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="connect-mac-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.stubs = cls.folder / "stubs"
        cls.stubs.mkdir()
        for tool in TOOLS:
            (cls.stubs / tool).symlink_to(ROOT / "tests" / "macos" / "stub-tool")
        cls.environment = {"PATH": f"{cls.stubs}:{os.environ['PATH']}",
                           "CONNECT_STUBS": str(cls.stubs)}
        cls.release = cls.configure("macos")
        cls.run_tool("cmake", "--build", cls.release)
        cls.calls = (cls.stubs / "calls").read_text().splitlines()
        cls.bundle = cls.release / "Vastel_Connect.app"

    @classmethod
    def run_tool(cls, *command):
        done = subprocess.run(command, env=cls.environment, cwd=cls.folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            raise AssertionError(done.stdout)

    @classmethod
    def configure(cls, preset):
        build = cls.folder / preset
        cls.run_tool("cmake", "-G", "Ninja", "-S", ROOT, "-B", build,
                     f"-DCMAKE_TOOLCHAIN_FILE={ROOT}/tests/macos/Darwin.cmake",
                     "-DCMAKE_LIBRARY_ARCHITECTURE=" + os.environ["CONNECT_LIBRARY_ARCHITECTURE"],
                     *cache_variables(preset))
        return build


class Build(MacTest):
    def test_compiles_for_both_architectures_and_the_oldest_system(self):
        compiled = [call for call in self.calls if re.search(r"^c\+\+ .* -c .*\.(cpp|mm)$", call)]
        self.assertGreater(len(compiled), 20)
        for call in compiled:
            self.assertIn("-arch arm64 -arch x86_64 ", call)
            self.assertIn(f" -mmacosx-version-min={deployment_target()} ", call)
            self.assertEqual(call.endswith(".mm"), " -fobjc-arc " in call, call)

    def test_signs_the_bundle_when_it_is_whole(self):
        self.assertEqual({str(file.relative_to(self.bundle))
                          for file in self.bundle.rglob("*") if file.is_file()},
                         {"Contents/Info.plist", "Contents/MacOS/Vastel_Connect",
                          "Contents/Resources/AppIcon.icns",
                          "Contents/Resources/MainMenu.nib/keyedobjects.nib"})
        self.assertRegex(self.calls[-1],
                         f"^codesign --force --options runtime .* --sign - {self.bundle}$")

    def test_has_the_property_list_that_gnustep_runs(self):
        self.assertEqual((self.bundle / "Contents/Info.plist").read_text(),
                         (GNUSTEP_BUNDLE / "Resources/Info.plist").read_text())

    def test_installs_the_bundle_under_its_other_name(self):
        self.run_tool("cmake", "--install", self.release, "--prefix", self.folder / "Applications")
        installed = self.folder / "Applications" / "Vastel Connect.app" / "Contents"
        self.assertTrue(os.access(installed / "MacOS" / "Vastel_Connect", os.X_OK))
        self.assertTrue((installed / "Resources" / "MainMenu.nib" / "keyedobjects.nib").exists())

    def test_debug_build_lets_itself_be_debugged(self):
        build = (self.configure("debug") / "build.ninja").read_text()
        self.assertRegex(build, "codesign --force --timestamp=none")
        self.assertNotIn("--options runtime", build)

    def test_gives_new_test_programs_time_to_start(self):
        build = (self.configure("debug") / "build.ninja").read_text()
        self.assertEqual(set(re.findall("TEST_DISCOVERY_TIMEOUT=([0-9]+)", build)), {"60"})


class Distribution(MacTest):
    """What the Installer is told. CPack makes a product archive on a Mac only: here it fills in our
    template as the header of a shell archive, for which it looks in the same places."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        config = cls.release / "CPackConfig.cmake"
        modules = pathlib.Path(re.search(r'set\(CPACK_MODULE_PATH "([^";]+)',
                                         config.read_text())[1])
        places = [file.parent.relative_to(modules) for file in modules.rglob(TEMPLATE)]
        assert len(places) == 1, places
        copied = cls.folder / "modules" / places[0]
        copied.mkdir(parents=True)
        shutil.copy(modules / places[0] / TEMPLATE, copied / "CPack.STGZ_Header.sh.in")
        cls.run_tool("cpack", "-G", "STGZ", "--config", config, "-B", cls.folder,
                     "-D", f"CPACK_MODULE_PATH={cls.folder}/modules",
                     "-D", "CPACK_PACKAGEMAKER_CHOICES=<choices-outline/>")
        header = next(cls.folder.glob("*.sh")).read_bytes()
        end = b"</installer-gui-script>"
        assert end in header, "CPack took a template of its own"
        cls.root = xml.etree.ElementTree.fromstring(header[:header.index(end) + len(end)])

    def attributes(self, path):
        return [element.attrib for element in self.root.findall(path)]

    def test_runs_on_both_architectures_and_asks_nothing(self):
        self.assertEqual(self.attributes("options"),
                         [{"customize": "never", "require-scripts": "false",
                           "hostArchitectures": "arm64,x86_64"}])
        self.assertEqual([element.tag for element in self.root],
                         ["title", "options", "domains", "volume-check", "choices-outline"])

    def test_installs_for_the_whole_computer(self):
        self.assertEqual(self.attributes("domains"),
                         [{"enable_anywhere": "false", "enable_currentUserHome": "false",
                           "enable_localSystem": "true"}])

    def test_refuses_an_older_system(self):
        self.assertEqual(self.attributes("volume-check/allowed-os-versions/os-version"),
                         [{"min": deployment_target()}])
