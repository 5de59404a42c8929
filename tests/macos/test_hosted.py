"""Tests what nobody sees before a Mac runs it: the commands of the workflows and of the document
against the tree, and the workflows' own scripts with stubs for the tools of a Mac."""
import json
import os
import pathlib
import re
import shlex
import signal
import subprocess
import tempfile
import textwrap
import unittest

import yaml

ROOT = pathlib.Path(__file__).parent.parent.parent
WORKFLOWS = ROOT / ".github" / "workflows"
HOSTED = ROOT / "tests" / "macos" / "hosted"
PRESETS = json.loads((ROOT / "CMakePresets.json").read_text())


def names(kind):
    return {preset["name"] for preset in PRESETS[kind + "Presets"]}


def jobs(workflow="*"):
    found = [job for file in sorted(WORKFLOWS.glob(workflow + ".yml"))
             for job in yaml.safe_load(file.read_text())["jobs"].values()]
    assert found
    return found


def scripts(found):
    return [step["run"] for job in found for step in job["steps"] if "run" in step]


def on_macs():
    return [job for job in jobs() if job["runs-on"].startswith("macos")]


def documented():
    return re.findall(r"```sh\n(.*?)```", (ROOT / "docs" / "macos.md").read_text(), re.DOTALL)


def brewed(texts):
    """What each "brew install" names."""
    return [set(line.split()) for text in texts for line in re.findall("brew install (.*)", text)]


class Commands(unittest.TestCase):
    def setUp(self):
        self.scripts = scripts(on_macs()) + documented()
        self.assertGreater(len(self.scripts), 8)

    def test_are_of_the_shells_language(self):
        for script in self.scripts:
            with self.subTest(script):
                subprocess.run(["bash", "-n"], input=script, text=True, check=True)

    def test_name_presets_that_there_are(self):
        named = [(kind, preset) for script in self.scripts
                 for kind, preset in re.findall(
                     r"(cmake|cmake --build|ctest) --preset ([\w-]+)", script)]
        self.assertGreater(len(named), 8)
        kinds = {"cmake": "configure", "cmake --build": "build", "ctest": "test"}
        for kind, preset in named:
            self.assertIn(preset, names(kinds[kind]), kind)

    def test_name_files_that_there_are(self):
        paths = {word for script in self.scripts
                 for word in re.findall(r"[\w./*-]+/[\w./*-]+", script)
                 if re.match(r"(tests|build|packaging|docs|dev)/", word)}
        self.assertGreater(len(paths), 4)
        for path in paths:
            with self.subTest(path):
                if path.startswith("build/"):
                    # The first folder is a preset's, and only two things are looked for in one.
                    preset, *rest = path.split("/")[1:]
                    self.assertIn(preset, names("configure") | {"xcode"})
                    if rest:
                        self.assertRegex("/".join(rest), r"^(Vastel_Connect\.app($|/)"
                                                         r"|vastel-connect-\*\.pkg$)")
                else:
                    self.assertTrue(os.access(ROOT / path, os.X_OK), path)

    def test_install_the_same_packages(self):
        build, tests = {"boost", "ninja", "utf8cpp"}, {"googletest"}
        self.assertEqual(brewed(documented()), [build | tests | {"cmake"}])
        # The image has cmake, and brew fails over what it did not install itself.
        self.assertEqual(brewed(scripts(jobs("macos"))), [build | tests])
        self.assertEqual(brewed(scripts(jobs("release"))), [build])

    def test_are_for_the_oldest_system_that_the_program_is_built_for(self):
        oldest = re.search(r"DEPLOYMENT_TARGET ([0-9]+)", (ROOT / "CMakeLists.txt").read_text())[1]
        document = (ROOT / "docs" / "macos.md").read_text()
        self.assertEqual(re.findall(r"macOS ([0-9]+)", document), [oldest])


class Workflow(unittest.TestCase):
    def test_names_its_image_and_its_action_by_version(self):
        self.assertEqual(len(on_macs()), 2)
        for job in on_macs():
            self.assertRegex(job["runs-on"], r"^macos-\d+$")
        used = [step["uses"] for job in jobs() for step in job["steps"]
                if step.get("uses", "").startswith("actions/checkout")]
        self.assertGreater(len(used), 3)
        for action in used:
            # Runners carry no Node.js for older ones.
            self.assertGreaterEqual(int(re.fullmatch(r"actions/checkout@v(\d+)", action)[1]), 5)

    def test_lets_each_part_tell_its_own_result(self):
        steps = jobs("macos")[0]["steps"]
        first_build = next(i for i, step in enumerate(steps)
                           if "cmake --build" in step.get("run", ""))
        rest = steps[first_build + 1:]
        self.assertGreater(len(rest), 3)
        for step in rest:
            self.assertEqual(step.get("if"), "${{ !cancelled() }}", step)
        self.assertIn("ctest", rest[-1]["run"])

    def test_gives_up_a_link_that_is_not_followed(self):
        step = next(step for step in jobs("macos")[0]["steps"]
                    if "follow-a-link" in step.get("run", ""))
        self.assertEqual(step["timeout-minutes"], 5)


class ScriptTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="connect-hosted-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.stubs = self.folder / "stubs"
        self.stubs.mkdir()

    def stub(self, name, script):
        path = self.stubs / name
        path.write_text("#!/bin/bash\n" + textwrap.dedent(script))
        path.chmod(0o755)

    def run_script(self, name, *arguments):
        return subprocess.run(
            [HOSTED / name, *arguments], text=True, stdout=subprocess.PIPE, timeout=60,
            stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
            env={"PATH": f"{self.stubs}:{os.environ['PATH']}", "CONNECT_TEST_LIMIT": "1",
                 "TMPDIR": str(self.folder)})


class CheckArchive(ScriptTest):
    def check(self, **changes):
        """Checks an archive, of which some text is replaced by another."""
        archive = {
            "Distribution": '<options hostArchitectures="arm64,x86_64"/><os-version min="11.0"/>',
            "vastel-connect-1.0.0-application.pkg/PackageInfo":
                '<pkg-info>\n<bundle path="x"/>\n<relocate>\n</relocate>\n</pkg-info>',
            "vastel-connect-1.0.0-application.pkg/Payload": "payload",
        }
        shell = []
        for name, content in archive.items():
            for old, new in changes.items():
                content = content.replace(old, new)
            if content:
                shell.append(f'mkdir -p "$(dirname "$3/{name}")"\n'
                             f"printf %s {shlex.quote(content)} > \"$3/{name}\"")
        self.stub("pkgutil", "mkdir -p \"$3\"\n" + "\n".join(shell))
        return self.run_script("check-archive", "a.pkg")

    def test_takes_what_is_right(self):
        done = self.check()
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_refuses_what_is_wrong_or_missing(self):
        for changes, words in (
                ({"payload": ""}, "empty"),
                ({'<pkg-info>\n<bundle path="x"/>\n<relocate>\n</relocate>\n</pkg-info>': ""},
                 "no component"),
                ({'min="11.0"': ""}, "macOS 11.0"),
                ({"arm64,x86_64": "x86_64"}, "Rosetta"),
                ({"<options": "<license/><options"}, "licence"),
                ({"<relocate>\n": '<relocate>\n<bundle id="x"/>\n'}, "elsewhere")):
            with self.subTest(words):
                done = self.check(**changes)
                self.assertIn(words, done.stdout)
                self.assertEqual(done.returncode, 1)


class FollowALink(ScriptTest):
    def setUp(self):
        super().setUp()
        self.application = self.bundle("Tested.app")
        self.stub("clang++", 'while [ "$1" != -o ]; do shift; done; : > "$2"')
        self.stub("codesign", "")
        self.stub("lsregister", '[[ $2 != *Receiver.app ]] || echo "$2" > "${0%/*}/receiver"')
        self.stub("log", 'echo "the log"')

    def bundle(self, name):
        """A bundle whose program only waits."""
        programs = self.folder / name / "Contents" / "MacOS"
        programs.mkdir(parents=True)
        (programs / "Vastel_Connect").symlink_to("/bin/sleep")
        return self.folder / name

    def follow(self, opening):
        self.stub("open", opening)
        return self.run_script("follow-a-link", self.application)

    def opening(self, application, page):
        return f"""
            "{application}/Contents/MacOS/Vastel_Connect" 60 > /dev/null 2>&1 &
            record=$(base64 --decode <<< "${{2#screenpop:}}")
            page=$(sed 's/.*:"\\(.*\\)".*/\\1/' <<< "$record")
            echo "{page}" > "$(dirname "$(cat "${{0%/*}}/receiver")")/pipe"
            """

    def test_follows_it(self):
        done = self.follow(self.opening(self.application, "$page"))
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("received connect-test://page/48213?q=a%20b\n", done.stdout)

    def test_tells_of_a_page_that_is_another(self):
        done = self.follow(self.opening(self.application, "connect-test://page/"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("the log", done.stdout)

    def test_tells_that_another_copy_was_started(self):
        other = self.bundle("Other.app")
        done = self.follow(self.opening(other, "$page") + "echo $! > \"${0%/*}/other\"")
        os.kill(int((self.stubs / "other").read_text()), signal.SIGKILL)
        self.assertEqual(done.returncode, 1)
        self.assertIn("another copy", done.stdout)

    def test_tells_of_an_open_that_hangs(self):
        done = self.follow("exec sleep 60")
        self.assertEqual(done.returncode, 1)
        self.assertIn("no page within 1 seconds", done.stdout)
        self.assertIn("the log", done.stdout)
