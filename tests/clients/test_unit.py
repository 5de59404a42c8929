"""The installed unit, from login to logout, in a system that systemd has booted; and the commands
for it that the documents give."""

import re
import time

import pytest

from booted import booted_tree
from packages import package

from clients import link_to, page_of
from model import make_link
from processes import LIMIT, ROOT, log_message, messages_of, wait_for_end
from test_troubleshooting import commands, pattern

UNIT = "vastel-connect.service"
DEPLOY = (ROOT / "docs/deploy.md").read_text(encoding="utf-8")
# The drop-in for the unit that it gives.
SETTING = re.search(r"^```ini\n(\[Service\]\n.*?)^```$", DEPLOY, re.MULTILINE | re.DOTALL)[1]


@pytest.fixture(scope="module")
def system():
    with booted_tree() as tree:
        tree.install(package("vastel-connect_*.deb"))
        yield tree


@pytest.fixture
def tree(system):
    """The system, with a login of the test's own."""
    system.log_in()
    yield system
    system.log_out()


def follow(tree, link):
    tree.run("gio", "open", link, agent=True)


def follow_and_open(tree, page=page_of("unit")):
    """Follows a link to its page."""
    follow(tree, link_to(page))
    assert tree.page().url == page


def stay(tree):
    """Opens a page whose program stays."""
    follow(tree, link_to("https://page.test/#stay"))
    return tree.page()


def manage(tree, *arguments):
    return tree.run("systemctl", "--user", *arguments, agent=True)


def unit_property(tree, name):
    return manage(tree, "show", "--value", f"--property={name}", UNIT).strip()


def group(tree, pid):
    """The control group of a process."""
    return re.search("^0::.*", tree.run("cat", f"/proc/{pid}/cgroup"), re.MULTILINE)[0]


def wait_for(condition):
    """Waits until the manager has noticed something."""
    deadline = time.monotonic() + LIMIT
    while not condition():
        assert time.monotonic() < deadline


def run_documented(tree, command, as_agent=True):
    """Runs a command that docs/deploy.md gives."""
    assert command in " ".join(DEPLOY.split())
    return tree.run("sh", "-c", command.removeprefix("sudo "), agent=as_agent)


def test_a_link_starts_the_unit_and_the_documented_command_ends_it(tree):
    assert unit_property(tree, "ActiveState") == "inactive"
    follow_and_open(tree)
    assert (unit_property(tree, "ActiveState"), unit_property(tree, "Type")) == ("active", "dbus")
    assert unit_property(tree, "MainPID") == str(tree.owner())
    assert "/session.slice/" + UNIT in group(tree, tree.owner())
    process = tree.host_pid(tree.owner())
    run_documented(tree, "sudo pkill -x vastel-connect", as_agent=False)
    wait_for_end(process)


def test_it_starts_again_after_links_that_end_it(tree):
    # The manager counts the starts of a unit that fails, and allows five in ten seconds.
    for _ in range(10):
        follow_and_open(tree)
        program = tree.host_pid(tree.owner())
        follow(tree, make_link("[]"))
        wait_for_end(program)
    wait_for(lambda: unit_property(tree, "ActiveState") == "failed")
    assert unit_property(tree, "ExecMainStatus") == "70"


# The program logs.


def expect_log(tree):
    """Restarts the program, and follows a link that it logs."""
    assert "/usr/bin/vastel-connect --dbus-service -jsonlog" in run_documented(
        tree, f"systemctl --user cat {UNIT}")
    (command,) = re.findall("^journalctl .*--follow.*$", DEPLOY, re.MULTILINE)
    log = tree.start("sh", "-c", command)
    run_documented(tree, f"systemctl --user restart {UNIT}")
    # This link may be taken for the one that starts the program.
    follow_and_open(tree)
    page = page_of(time.monotonic_ns())
    follow_and_open(tree, page)
    _, *expected = messages_of(link_to(page))
    while expected[0] not in (line := log.next()):
        pass
    assert [log_message(line), *(log_message(log.next()) for _ in expected[1:])] == expected


def test_it_logs_for_one_user(tree):
    tree.write("/tmp/setting", SETTING.encode())
    # It edits on terminals only.
    assert f"systemctl --user edit {UNIT}" in " ".join(DEPLOY.split())
    tree.run("script", "-qec", f"systemctl --user edit {UNIT}", "/dev/null", agent=True,
             SYSTEMD_EDITOR="cp /tmp/setting")
    expect_log(tree)
    run_documented(tree, f"systemctl --user revert {UNIT}")
    run_documented(tree, f"systemctl --user restart {UNIT}")
    assert "-jsonlog" not in unit_property(tree, "ExecStart")
    follow_and_open(tree)


def test_it_logs_for_all(tree):
    file = f"/etc/systemd/user/{UNIT}.d/log.conf"
    assert file in DEPLOY
    tree.run("install", "-D", "/dev/stdin", file, input=SETTING.encode())
    run_documented(tree, "systemctl --user daemon-reload")
    expect_log(tree)
    tree.run("rm", file)


# The page's program stays, and the display changes, while the user's manager goes on.


@pytest.mark.parametrize("ended", [UNIT, "desktop.target"])
def test_a_page_outlives_its_program(tree, ended):
    if ended != UNIT:
        manage(tree, "start", ended)
    page = stay(tree)
    # The manager is asked for the scope once the page's program runs.
    wait_for(lambda: group(tree, page.pid).endswith(".scope"))
    scope = group(tree, page.pid)
    assert re.search(r"/app\.slice/app-[^/]*\.scope$", scope)
    program = tree.host_pid(tree.owner())
    manage(tree, "stop", ended)
    wait_for_end(program)
    assert group(tree, page.pid) == scope
    wait_for(lambda: unit_property(tree, "ActiveState") == "inactive")


def test_the_next_desktop_has_its_own_display(tree):
    for display in ":1", ":2":
        manage(tree, "set-environment", f"DISPLAY={display}")
        manage(tree, "start", "desktop.target")
        page = stay(tree)
        assert f"DISPLAY={display}" in tree.run("cat", f"/proc/{page.pid}/environ").split("\0")
        manage(tree, "stop", "desktop.target")


# When something is wrong with it.


def test_commands_for_support_print_what_is_shown(tree):
    manage(tree, "set-environment", "WAYLAND_DISPLAY=wayland-0")
    follow_and_open(tree)
    shown = commands("console systemd")
    assert len(shown) == 3
    for command, (form,) in shown:
        first, *_ = tree.run("sh", "-c", command, agent=True).splitlines()
        assert re.fullmatch(pattern(form), first)
