"""Tests the files that the macOS bundle and its installer are made of."""
import os
import pathlib
import plistlib
import re
import struct
import subprocess
import unittest
import xml.etree.ElementTree

BUNDLE = pathlib.Path(os.environ["CONNECT_BUNDLE"])
ROOT = pathlib.Path(__file__).parent.parent.parent
PACKAGING = ROOT / "packaging" / "macos"


def property_list(path):
    return plistlib.loads(path.read_bytes(), fmt=plistlib.FMT_XML)


def deployment_target():
    """The one place that states it."""
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"CMAKE_OSX_DEPLOYMENT_TARGET ([0-9.]+) ", text)[1]


class Xml(unittest.TestCase):
    def test_is_well_formed(self):
        files = [BUNDLE / "Resources" / "Info.plist", *PACKAGING.glob("*.plist"),
                 *PACKAGING.glob("*.xib"), *PACKAGING.glob("*.entitlements"),
                 PACKAGING / "CPack.distribution.dist.in"]
        self.assertEqual(len(files), 5)
        subprocess.run(["xmllint", "--nonet", "--noout", *files], check=True)


class InfoPlist(unittest.TestCase):
    maxDiff = None

    def test_has_these_keys_and_no_others(self):
        version = re.search("^## ([0-9.]+) ", (ROOT / "CHANGELOG.md").read_text(), re.MULTILINE)[1]
        self.assertEqual(property_list(BUNDLE / "Resources" / "Info.plist"), {
            "CFBundleDevelopmentRegion": "en",
            "CFBundleDisplayName": "Vastel Connect",
            "CFBundleExecutable": "Vastel_Connect",
            "CFBundleIconFile": "AppIcon",
            "CFBundleIdentifier": "com.vastel.Connect",
            "CFBundleInfoDictionaryVersion": "6.0",
            "CFBundleName": "Vastel Connect",
            "CFBundlePackageType": "APPL",
            "CFBundleShortVersionString": version,
            "CFBundleURLTypes": [{
                "CFBundleTypeRole": "Viewer",
                "CFBundleURLName": "com.vastel.Connect.screenpop",
                "CFBundleURLSchemes": ["screenpop"],
            }],
            "CFBundleVersion": version,
            "LSApplicationCategoryType": "public.app-category.business",
            "LSMinimumSystemVersion": deployment_target(),
            "LSUIElement": True,
            "NSHumanReadableCopyright": "\u00a9 2018 - 2026 Vastel",
            "NSMainNibFile": "MainMenu",
            "NSPrincipalClass": "NSApplication",
            "NSSupportsAutomaticTermination": False,
            "NSSupportsSuddenTermination": False,
        })

    def test_names_files_that_the_bundle_has(self):
        keys = property_list(BUNDLE / "Resources" / "Info.plist")
        self.assertTrue((BUNDLE / keys["CFBundleExecutable"]).is_file())
        self.assertTrue((BUNDLE / "Resources" / (keys["CFBundleIconFile"] + ".icns")).is_file())
        self.assertTrue((BUNDLE / "Resources" / (keys["NSMainNibFile"] + ".xib")).is_file())


class Interface(unittest.TestCase):
    def setUp(self):
        self.objects = xml.etree.ElementTree.parse(PACKAGING / "MainMenu.xib").find("objects")

    def only(self, path):
        found = self.objects.findall(path)
        self.assertEqual(len(found), 1, path)
        return found[0]

    def test_makes_the_delegate_of_the_application(self):
        delegate = self.only("customObject[@customClass='AppDelegate']")
        outlet = self.only("customObject[@customClass='NSApplication']/connections/outlet")
        self.assertEqual((outlet.get("property"), outlet.get("destination")),
                         ("delegate", delegate.get("id")))

    def test_has_one_window_that_stays_hidden(self):
        window = self.only("window")
        outlet = self.only("customObject[@customClass='AppDelegate']/connections/outlet")
        self.assertEqual((outlet.get("property"), outlet.get("destination")),
                         ("window", window.get("id")))
        self.assertEqual(window.get("visibleAtLaunch"), "NO")
        self.assertEqual(window.get("releasedWhenClosed"), "NO")

    def test_has_no_menu(self):
        self.assertEqual(self.objects.findall(".//menu"), [])

    def test_has_no_id_twice(self):
        ids = [element.get("id") for element in self.objects.iter() if element.get("id")]
        self.assertEqual(len(ids), len(set(ids)))


class Installer(unittest.TestCase):
    def test_is_not_relocatable(self):
        components = property_list(PACKAGING / "Component.plist")
        self.assertEqual([(c["RootRelativeBundlePath"], c["BundleIsRelocatable"])
                          for c in components], [("Applications/Vastel Connect.app", False)])

    def test_asks_for_no_entitlement(self):
        self.assertEqual(property_list(PACKAGING / "Vastel_Connect.entitlements"), {})


class Icon(unittest.TestCase):
    def test_holds_each_size_as_png(self):
        data = (PACKAGING / "AppIcon.icns").read_bytes()
        self.assertEqual((data[:4], struct.unpack(">I", data[4:8])[0]), (b"icns", len(data)))
        sizes = []
        at = 8
        while at < len(data):
            length = struct.unpack(">I", data[at + 4:at + 8])[0]
            image = data[at + 8:at + length]
            self.assertTrue(image.startswith(b"\x89PNG\r\n\x1a\n"))
            sizes.append(struct.unpack(">II", image[16:24]))
            at += length
        self.assertEqual(sizes, [(size, size) for size in (32, 64, 128, 256, 512, 1024)])
