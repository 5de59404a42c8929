"""What nobody sees before a Mac runs it: the commands of the workflows and of the document against
the tree, and the scripts of a Mac with stubs for its tools."""
import json
import os
import re
import subprocess
import textwrap

import pytest
import yaml
from model import make_link
from processes import LIMIT, ROOT

HOSTED = ROOT / "tests" / "macos" / "hosted"
PRESETS = json.loads((ROOT / "CMakePresets.json").read_text())
# The oldest version of each that runs on the Node.js of today's hosted machines, and those that
# take each other's files.
LEAST = {"checkout": 5, "upload-artifact": 6, "download-artifact": 7}


def jobs(workflow="*"):
    found = [job for file in sorted((ROOT / ".github/workflows").glob(workflow + ".yml"))
             for job in yaml.safe_load(file.read_text())["jobs"].values()]
    assert found
    return found


def scripts(found):
    return [step["run"] for job in found for step in job["steps"] if "run" in step]


def images(job):
    matrix = job.get("strategy", {}).get("matrix", {})
    return matrix["image"] if job["runs-on"] == "${{ matrix.image }}" else [job["runs-on"]]


def on_macs():
    return [job for job in jobs() if images(job)[0].startswith("macos")]


def documented():
    return re.findall(r"```sh\n(.*?)```", (ROOT / "docs" / "macos.md").read_text(), re.DOTALL)


COMMANDS = scripts(on_macs()) + documented()


def test_commands_name_presets_that_there_are():
    named = [pair for script in [*COMMANDS, (ROOT / "dev/mac").read_text()]
             for pair in re.findall(r"(cmake|cmake --build|ctest) --preset ([\w-]+)", script)]
    assert len(named) > 8
    kinds = {"cmake": "configure", "cmake --build": "build", "ctest": "test"}
    for kind, preset in named:
        assert preset in {each["name"] for each in PRESETS[kinds[kind] + "Presets"]}, kind


def test_commands_name_files_that_there_are():
    paths = {word for script in COMMANDS for word in re.findall(r"[\w.*-]+(?:/[\w.*-]+)+", script)
             if re.match(r"(tests|packaging|docs|dev)/", word)}
    assert len(paths) > 3
    for path in paths:
        assert (ROOT / path).exists(), path


def test_commands_install_the_same_packages():
    def brewed(texts):
        return [set(line.split()) for text in texts
                for line in re.findall("^ *brew install (.*)", text, re.MULTILINE)]

    build, tests = {"boost", "ninja", "utf8cpp"}, {"googletest"}
    assert brewed(documented()) == [build | tests | {"cmake"}]
    # The image has cmake, and brew fails over what it did not install itself.
    assert brewed(scripts(jobs("macos"))) == [build | tests]
    assert brewed(scripts(jobs("release"))) == [build]


def test_document_names_the_oldest_system():
    oldest = re.search(r"DEPLOYMENT_TARGET ([0-9]+)", (ROOT / "CMakeLists.txt").read_text())[1]
    assert f"needs macOS {oldest} " in (ROOT / "docs" / "macos.md").read_text()


def test_workflows_name_images_and_actions_by_a_version_that_runs():
    assert not [each for job in on_macs() for each in images(job) if "latest" in each]
    used = [step["uses"] for job in jobs() for step in job["steps"] if "uses" in step]
    assert len(used) > 5
    for action in used:
        name, version = re.fullmatch(r"actions/([\w-]+)@v(\d+)", action).groups()
        assert int(version) >= LEAST[name], action
    assert {int(re.search(r"\d+$", action)[0]) - LEAST[name] for action in used
            for name in ("upload-artifact", "download-artifact") if name in action} <= {0, 1}


def test_workflow_lets_each_part_tell_its_own_result():
    steps = jobs("macos")[0]["steps"]
    first_build = next(i for i, step in enumerate(steps) if "cmake --build" in step.get("run", ""))
    assert {step.get("if") for step in steps[first_build + 1:]} == {"${{ !cancelled() }}"}


def test_release_says_what_nobody_has_signed():
    script = "\n".join(scripts(jobs("release")))
    assert "-unsigned.pkg" in script
    assert "dSYM" in script


# What a Mac's bash 3.2 and BSD's tools lack.
LACKING = re.compile("|".join([
    r"\b(?:declare|local|typeset|readonly) -[a-z]*[Ang]", r"\b(?:mapfile|readarray|coproc)\b",
    r"\$\{\w+(?:\[[^]]*\])?(?:,,?|\^\^?|@[A-Za-z])", r"\$\{\w+\[-", r"\[\[ -v ", r"&>>", r"\|&",
    r"\bexec \{", r"\bread\b[^|;\n]* -t *(?:0\b|\d*\.)", r"\bwait -n", r"%\([^)]*\)T",
    r"\$(?:EPOCH\w+|BASHPID)", r"\bgrep (?:[^;&|\n]* )?-[a-zA-Z]*P",
    r"\bsed (?:[^;&|\n]* )?-i(?! '')",
    r"\b(?:base64|mktemp|mkdir|cp|rm|tar|sed|sort|head|grep|ls|tr|tail|date|stat|paste)"
    r" (?:[^;&|\n]* )?--\w", r"\bbase64 (?:[^;&|\n]* )?-[dw]", r"\bxargs (?:[^;&|\n]* )?-r",
    r"\breadlink -f|\brealpath\b|\bstat -c|\bdate -d|\bfind -|/proc/",
    r"\b(?:timeout|setsid|sha256sum|tac|nproc|flock|unshare|shuf) ",
]))


def test_scripts_use_what_a_mac_has():
    both = ("run", "test", "dev/setup", "dev/package")
    linux = []
    for path in (*both, "dev/mac", *HOSTED.glob("*-*")):
        # Of a script for both systems, what stands before it leaves the rest to dev/mac.
        text, branch, rest = (ROOT / path).read_text().partition("\n[[ $OSTYPE != darwin* ]] || ")
        assert bool(branch) == (path in both), path
        assert LACKING.findall(re.sub(r"^ *#.*|  # .*", "", text, flags=re.MULTILINE)) == [], path
        linux += LACKING.findall(rest)
    assert len(set(linux)) > 10
    for text in COMMANDS:
        assert LACKING.findall(text) == []
        subprocess.run(["bash", "-n"], input=text, text=True, check=True)


class Stubs:
    """A folder of commands that stand before the system's, and what is started with them."""

    def __init__(self, folder):
        self.folder = folder
        self.path = folder / "stubs"
        self.path.mkdir()

    def add(self, name, script=""):
        path = self.path / name
        path.write_text("#!/bin/bash\n" + textwrap.dedent(script))
        path.chmod(0o755)

    def bundle(self, folder, log):
        """A bundle whose program logs this, and waits."""
        program = folder / "Contents" / "MacOS" / "Vastel_Connect"
        program.parent.mkdir(parents=True)
        program.write_text(f"#!/bin/bash\n{log}\nexec -a \"$0\" sleep 60")
        program.chmod(0o755)
        return folder

    def run(self, *command, path=os.environ["PATH"], answer="", **variables):
        return subprocess.run(
            command, text=True, stdout=subprocess.PIPE, timeout=2 * LIMIT, stderr=subprocess.STDOUT,
            input=answer,
            env={"PATH": f"{self.path}:{path}", "CONNECT_LIMIT": str(LIMIT),
                 "TMPDIR": str(self.folder), "STUBS": str(self.path), **variables})


@pytest.fixture
def stubs(tmp_path):
    return Stubs(tmp_path)


@pytest.fixture
def tree(stubs):
    """The scripts of the tree, and a Mac on which cmake makes a bundle, as OSTYPE tells them."""
    tree = stubs.folder / "tree"
    (tree / "dev").mkdir(parents=True)
    for name in ("run", "test", "dev/mac", "dev/setup", "dev/package"):
        (tree / name).symlink_to(ROOT / name)
    for tool in ("cmake", "ctest", "cpack"):
        stubs.add(tool, f'echo "{tool} $*" >> "$STUBS/calls"')
    stubs.add("brew", "[[ $1 == list ]] && printf 'boost\\nutf8cpp\\n' || echo \"brew $*\"")
    stubs.add("lsregister", 'echo "lsregister $*" >> "$STUBS/calls"')
    for tool in ("xcrun", "ninja"):
        stubs.add(tool)
    stubs.bundle(tree / "build/macos/Vastel_Connect.app",
                 'mkfifo "$STUBS/link"; printf "banner\\n\\n"; read -r link < "$STUBS/link"\n'
                 'printf "Log 00:00:00> %s\\n" "process uri: $link" "webpage: https://x.example/"')
    stubs.add("open", 'echo "$2" > "$STUBS/link"')
    return tree


MAC = {"OSTYPE": "darwin24"}


def test_run_on_a_mac_follows_the_sample(stubs, tree):
    done = stubs.run(tree / "run", **MAC)
    assert done.returncode == 0, done.stdout
    record = re.search("^sample_record='(.*)'$", (ROOT / "run").read_text(), re.MULTILINE)[1]
    link = make_link(record).replace("://", ":")
    assert f"Log 00:00:00> process uri: {link}\n" in done.stdout
    assert done.stdout.endswith("What macOS was asked to open\n  https://x.example/\n")
    assert (stubs.path / "calls").read_text().splitlines() == [
        "cmake --preset macos", "cmake --build --preset macos",
        f"lsregister -f {tree}/build/macos/Vastel_Connect.app"]


def test_run_on_a_mac_tells_of_a_link_that_does_not_arrive(stubs, tree):
    stubs.add("open")
    done = stubs.run(tree / "run", "screenpop:e30=", CONNECT_LIMIT="1", **MAC)
    assert (done.returncode, done.stdout.splitlines()[-1]) == (
        1, 'The link did not arrive: docs/macos.md, "When a link opens nothing".')


def test_units_are_built_and_run_on_a_mac(stubs, tree):
    done = stubs.run(tree / "test", answer="y\n", **MAC)
    assert done.returncode == 0, done.stdout
    assert done.stdout == "brew install googletest\n"
    assert (stubs.path / "calls").read_text().splitlines() == [
        "cmake --preset unit", "cmake --build --preset unit", "ctest --preset unit"]


@pytest.mark.parametrize("command, stub, words", [
    (["test", "clients"], None, 'On a Mac, ./test knows "unit" alone.'),
    (["dev/setup", "tests"], None, 'On a Mac, dev/setup knows "unit" alone.'),
    # What is missing is not installed behind anybody's back.
    (["dev/setup", "unit"], None, "Missing are googletest. Install them: brew install googletest"),
    (["run"], "brew", "Homebrew, from which the libraries come, is missing: docs/macos.md, step 1, "
                      "says how to get it."),
    (["dev/package"], "xcrun", "Xcode is missing, or not chosen: docs/macos.md, step 1, says what "
                               "to do."),
])
def test_mac_says_in_a_line_what_is_missing(stubs, tree, command, stub, words):
    if stub:
        (stubs.path / stub).unlink()
    done = stubs.run(tree / command[0], *command[1:], path="/usr/bin:/bin", **MAC)
    assert (done.returncode, done.stdout) == (1, words + "\n")


def test_link_is_followed(stubs):
    log = "printf 'banner\\n\\n{\"message\":\"webpage: x\"}\\n'"
    application = stubs.bundle(stubs.folder / "Tested.app", log)
    stubs.add("clang++", 'while [ "$1" != -o ]; do shift; done; : > "$2"')
    stubs.add("codesign")
    stubs.add("lsregister", '[[ $2 != *Receiver.app ]] || echo "$2" > "$STUBS/receiver"')
    # The second link starts the application.
    stubs.add("open", f"""
        program={application}/Contents/MacOS/Vastel_Connect
        if [[ -e $STUBS/opened ]]; then
          "$program" > /dev/null 2>&1 &
          until pgrep -f "^$program" > /dev/null; do :; done
        fi
        touch "$STUBS/opened"
        record=$(base64 --decode <<< "${{2#screenpop:}}")
        sed 's/.*:"\\(.*\\)".*/\\1/' <<< "$record" > "$(dirname "$(cat "$STUBS/receiver")")/pipe"
        """)
    done = stubs.run(HOSTED / "follow-a-link", application)
    assert done.returncode == 0
    assert done.stdout.startswith("received connect-test://page/48213?q=a%20b\n" * 2)
    (stubs.path / "opened").unlink()
    stubs.add("open", "exec sleep 60")
    stubs.add("log", 'echo "the log"')
    done = stubs.run(HOSTED / "follow-a-link", application, CONNECT_LIMIT="1")
    assert done.returncode == 1
    assert "no page within 1 seconds" in done.stdout and "the log" in done.stdout
