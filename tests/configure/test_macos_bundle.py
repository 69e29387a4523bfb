"""The bundle of the macOS application: test_macos_bundle.py configures the project as for a Mac, and runs
script/package-macos with programs that only note how they were called. Exit status 77: clang 14 is not here."""

import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
NOT_RUN = 77
COMPILER = shutil.which("clang++-14")
# What CMake asks about a Mac's tools; nothing is compiled for one.
TOOLS = f"""set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_C_COMPILER {shutil.which("clang-14")})
set(CMAKE_CXX_COMPILER {COMPILER})
set(CMAKE_OBJCXX_COMPILER {COMPILER})
"""
FEED = "https://example.org/feed?channel=beta&arch=arm64"
# Each notes its name and arguments. The configuration writes Info.plist into the bundle, as CMake does; the
# build makes the rest.
NOTE = '#!/bin/bash\necho "$(basename "$0") $*" >> "$NOTES"\n'
PROGRAMS = {
    "uname": "#!/bin/bash\necho Darwin\n",
    "cmake": NOTE + """contents="$PWD/build/macos/bin/Voxtrel.app/Contents"
mkdir -p "$contents/MacOS"
if [[ "$1" == --build ]]; then
  touch "$contents/MacOS/Voxtrel"
  for part in $PARTS; do mkdir -p "$(dirname "$contents/$part")" && touch "$contents/$part"; done
else
  touch "$contents/Info.plist"
fi
""",
    "rsvg-convert": NOTE + '[[ -f "${@: -3:1}" ]] && touch "${@: -1}"\n',
    "iconutil": NOTE + 'ls "${@: -1}" | sed "s/^/icon /" >> "$NOTES"\ntouch "$4"\n',
    "codesign": NOTE + '[[ "${@: -1}" == *.dmg || -f build/macos/bin/Voxtrel.app/Contents/Info.plist ]]\n',
    "hdiutil": NOTE + 'ls -A build/macos/dmg >> "$NOTES"\ntouch "${@: -1}"\n',
    "xcrun": NOTE,
}
SPARKLE = "Frameworks/Sparkle.framework/Versions/B"


class Bundle(unittest.TestCase):
    """What the configuration puts into the bundle."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="macos-bundle-")
        cls.addClassCleanup(folder.cleanup)
        cls.tools = pathlib.Path(folder.name) / "tools.cmake"
        cls.tools.write_text(TOOLS, encoding="utf-8")
        cls.build = pathlib.Path(folder.name) / "build"

    def configure(self, *options, **updates):
        """The bundle's property list."""
        done = subprocess.run(
            ["cmake", "-G", "Ninja", "-S", ROOT, "-B", self.build, f"-DCMAKE_TOOLCHAIN_FILE={self.tools}",
             "-DCMAKE_INSTALL_NAME_TOOL=/bin/true", "-DVOXTREL_TESTS=OFF", "-DCMAKE_BUILD_TYPE=Release",
             *options, *(f"-DVOXTREL_UPDATE_{name}={value}" for name, value in updates.items())],
            text=True, capture_output=True, check=False, timeout=100)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return plistlib.loads((self.build / "bin/Voxtrel.app/Contents/Info.plist").read_bytes())

    def linking(self):
        """The rule that links the application and fills its bundle."""
        rules = (self.build / "build.ninja").read_text(encoding="utf-8")
        return re.search(r"^build bin/Voxtrel.app.*?\n\n", rules, re.MULTILINE | re.DOTALL)[0]

    def test_it_is_an_agent_that_says_why_it_asks(self):
        info = self.configure(FEED="", KEY="")
        self.assertIs(info["LSUIElement"], True)
        self.assertEqual(info["CFBundleIdentifier"], "org.voxtrel.Voxtrel")
        self.assertEqual(info["CFBundleExecutable"], "Voxtrel")
        self.assertEqual(info["CFBundlePackageType"], "APPL")
        self.assertEqual(info["CFBundleIconFile"], "Voxtrel")
        self.assertEqual(info["LSMinimumSystemVersion"], "13.0")
        self.assertRegex(info["CFBundleShortVersionString"], r"^\d+\.\d+\.\d+$")
        self.assertIn("speech", info["NSMicrophoneUsageDescription"])
        self.assertIn("push-to-talk", info["NSAccessibilityUsageDescription"])

    def test_it_is_built_for_the_oldest_system_that_it_names(self):
        oldest = self.configure()["LSMinimumSystemVersion"]
        rules = (self.build / "build.ninja").read_text(encoding="utf-8")
        flags = re.findall(r"^  FLAGS = (.*)", rules, re.MULTILINE)
        self.assertTrue(flags and all(f"-mmacosx-version-min={oldest}" in each for each in flags))
        self.assertNotIn("-Wl,-z", self.linking(), "Apple's linker refuses it")

    def test_it_has_a_feed_where_there_is_a_key(self):
        info = self.configure(FEED=FEED, KEY="a+b/c=")
        self.assertEqual((info["SUFeedURL"], info["SUPublicEDKey"]), (FEED, "a+b/c="))
        self.assertNotIn("SUFeedURL", self.configure(FEED=FEED, KEY=""))

    def test_it_takes_engine_icon_and_framework_along(self):
        self.configure("-DVOXTREL_ENGINE=/made/up/quillback", "-DVOXTREL_ICNS=/made/up/Voxtrel.icns",
                       "-DSPARKLE=/made/up/Sparkle.framework")
        for file, folder in ("quillback", "MacOS"), ("Voxtrel.icns", "Resources"), ("Sparkle.framework", "Frameworks"):
            self.assertRegex(self.linking(), rf"cp -R /made/up/{file} \S*/Voxtrel.app/Contents/{folder}/")
        self.assertIn("-needed_framework -Xlinker Sparkle", self.linking())
        self.assertIn("-rpath -Xlinker @executable_path/../Frameworks", self.linking())
        self.configure("-DVOXTREL_ENGINE=", "-DVOXTREL_ICNS=", "-USPARKLE")
        self.assertNotIn("cp -R", self.linking())

    def test_its_only_entitlement_is_the_microphone(self):
        entitlements = plistlib.loads((ROOT / "packaging/macos/Voxtrel.entitlements").read_bytes())
        self.assertEqual(entitlements, {"com.apple.security.device.audio-input": True})


class Package(unittest.TestCase):
    """What the script does on a Mac, in its order."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="macos-package-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name in ("script", "packaging"):
            shutil.copytree(ROOT / name, self.folder / name)
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        for name, text in PROGRAMS.items():
            (self.programs / name).write_text(text, encoding="utf-8")
            (self.programs / name).chmod(0o755)

    def package(self, parts=(), **variables):
        """The lines that the programs noted, with the bundle as APP; none where the script fails."""
        notes = self.folder / "notes"
        notes.unlink(missing_ok=True)
        environment = {"PATH": f"{self.programs}:{os.environ['PATH']}", "NOTES": str(notes), "PARTS": " ".join(parts)}
        done = subprocess.run([self.folder / "script/package-macos"], env=environment | variables, text=True,
                              capture_output=True, check=False, timeout=60)
        if done.returncode != 0:
            return []
        app = str(self.folder.resolve() / "build/macos/bin/Voxtrel.app")
        return notes.read_text(encoding="utf-8").replace(app, "APP").splitlines()

    @staticmethod
    def signed(lines):
        """Every command that signs, by what it signs and in its order."""
        words = [line.split() for line in lines if line.startswith("codesign --force")]
        return {each[-1]: each for each in words}

    def test_it_refuses_another_system(self):
        (self.programs / "uname").unlink()
        self.assertEqual(self.package(), [])

    def test_it_makes_every_size_of_the_icon(self):
        icons = {line for line in self.package() if line.startswith("icon ")}
        sizes = (16, 32, 128, 256, 512)
        self.assertEqual(icons, {f"icon icon_{size}x{size}{scale}.png" for size in sizes for scale in ("", "@2x")})

    def test_the_bundle_is_new_each_time_and_keeps_what_the_configuration_wrote(self):
        stale = self.folder / "build/macos/bin/Voxtrel.app/Contents/stale"
        stale.parent.mkdir(parents=True)
        stale.touch()
        self.assertTrue(self.package())
        self.assertFalse(stale.exists())
        self.assertTrue((stale.parent / "Info.plist").exists())

    def test_without_an_identity_it_signs_ad_hoc_with_the_hardened_runtime(self):
        lines = self.package()
        self.assertEqual(list(self.signed(lines)), ["APP"])
        how = " ".join(self.signed(lines)["APP"])
        self.assertIn("--timestamp=none --options runtime --sign -", how)
        self.assertIn("--entitlements packaging/macos/Voxtrel.entitlements", how)
        self.assertTrue(any(line.startswith("codesign --verify --strict") for line in lines))
        self.assertFalse([line for line in lines if "notarytool" in line or line.endswith("dmg") and "--sign" in line])

    def test_it_signs_from_the_inside_to_the_outside(self):
        inner = [f"{SPARKLE}/XPCServices/Installer.xpc", f"{SPARKLE}/Autoupdate", f"{SPARKLE}/Updater.app"]
        lines = self.package([*inner, "MacOS/quillback"], VOXTREL_SIGN_IDENTITY="Developer")
        signed = self.signed(lines)
        expected = [*inner, "Frameworks/Sparkle.framework", "MacOS/quillback"]
        self.assertEqual(list(signed), [*(f"APP/Contents/{part}" for part in expected), "APP"])
        for how in signed.values():
            self.assertIn("--options runtime --timestamp --sign Developer", " ".join(how))
        for each in ("APP", "APP/Contents/MacOS/quillback"):
            self.assertIn("packaging/macos/Voxtrel.entitlements", signed[each])

    def test_ad_hoc_a_framework_of_ours_excludes_the_hardened_runtime(self):
        self.assertNotIn("runtime", self.signed(self.package([f"{SPARKLE}/Autoupdate"]))["APP"])

    def test_it_notarises_where_a_profile_is_named(self):
        lines = self.package(VOXTREL_SIGN_IDENTITY="Developer", VOXTREL_NOTARY_PROFILE="profile")
        image = f"{self.folder.resolve()}/build/macos/Voxtrel.dmg"
        self.assertEqual(lines[-3:], [
            f"codesign --timestamp --sign Developer {image}",
            f"xcrun notarytool submit {image} --keychain-profile profile --wait", f"xcrun stapler staple {image}"])

    def test_the_image_has_the_application_and_a_way_to_install_it(self):
        lines = self.package()
        self.assertEqual(lines[-2:], ["Applications", "Voxtrel.app"])

    def test_it_tells_the_build_of_engine_feed_and_key(self):
        lines = self.package(VOXTREL_ENGINE="/opt/quillback", VOXTREL_UPDATE_FEED=FEED, VOXTREL_UPDATE_KEY="key")
        configured = next(line for line in lines if line.startswith("cmake -G"))
        for option in ("ENGINE=/opt/quillback", f"UPDATE_FEED={FEED}", "UPDATE_KEY=key"):
            self.assertIn(f"-DVOXTREL_{option} ", configured + " ")


if __name__ == "__main__":
    if not COMPILER:
        sys.exit(NOT_RUN)
    unittest.main()
