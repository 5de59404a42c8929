"""Which handler of a page is started, and how."""

import os
import signal

import pytest
from gi.repository import Gio, GLib

from model import page_link
from processes import SILENCE, children, status_of, wait_for_end
from road import LINK, PAGE, pages

OTHER = page_link("other:page")


def expect_opener(desktop, page, *expected):
    """Follows a link, whose page is to reach an opener with these arguments."""
    desktop.open(page_link(page))
    report = desktop.page()
    assert (os.path.basename(report.program), *report.arguments) == expected


def expect_no_opener(desktop, *refused):
    """Follows links of pages that nothing gets: the report of an opener would be in excess."""
    desktop.open(*map(page_link, refused))
    desktop.open()  # This is answered once the pages are done with.


# Which handler is started.


@pytest.mark.parametrize("refused", [
    # Without a scheme: words, paths, options.
    ["", "foo", "passwd", "foo bar", "/etc/passwd", "../etc/passwd", "../x", "~", ".", "--help", "-h",
     "--version", "//page.test/", ":x", "1http://page.test/", "%68ttp://page.test/", "?", "#",
     "$(reboot)", "`id`"],
    # With one.
    ["https://page.test/a b", "https://page.test/\0", "https://page.test/\0--help",
     " https://page.test/", "https://page.test/%", "https://page.test/%zz", "https://page.test/#a#b",
     "https://page.test/ü", "https://page.test/\\", "https://page.test/\t", "https://page.test/|",
     "C:\\x", "other:<x>", "other:\"x\"", "other:`x`", "other:{x}"]], ids=["no scheme", "scheme"])
def test_a_page_that_forms_no_url_reaches_no_handler_and_no_opener(desktop, refused):
    listener = desktop.listen_with_openers()
    for page in refused:
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
    # Had one been started, its report would be in excess.
    desktop.expect_link(listener)


@pytest.mark.parametrize("page, handler", [
    ("file:///etc/passwd", {"schemes": ("http", "https", "file")}), ("other:page", {}),
    (PAGE, {"lines": ["Terminal=true"]}), (PAGE, {"command": '"{}/bin/browser" "%u"'}),
    # The kernel does not start a script without "#!".
    (PAGE, {"command": "{}/bin/nameless %u"})])
def test_what_is_not_plain_is_left_to_the_opener(desktop, page, handler):
    desktop.listen_with_openers()
    os.chmod(desktop.write("bin/nameless", "exit\n"), 0o755)
    if "command" in handler:
        handler = {"command": handler["command"].format(desktop.folder)}
    desktop.install_handler(**handler)
    expect_opener(desktop, page, "gio", "open", page)


def test_another_opener_stands_in_where_one_is_missing(desktop):
    desktop.listen_with_openers("xdg-open")
    expect_opener(desktop, "other:page", "xdg-open", "other:page")


KDE_OPENERS = ["kde-open", "kde-open5"]
FILES = ["file:///home/x.desktop", "FILE:///x", "file:x", "File:/proc/self/cwd/x"]


@pytest.mark.parametrize("name", ["KDE", "XFCE", "GNOME"])
def test_a_file_is_given_to_gio_and_to_no_other_opener(desktop, name):
    desktop.listen_with_openers(*KDE_OPENERS, "gio", "xdg-open", XDG_CURRENT_DESKTOP=name)
    for page in FILES:
        expect_opener(desktop, page, "gio", "open", page)
    os.remove(desktop.folder + "/openers/gio")
    expect_no_opener(desktop, *FILES)


@pytest.mark.parametrize("path, text", [
    ("config/kdeglobals", "[Colors:Header][Inactive]\na=1\n\n[KDE URL Restrictions][$i]\n"),
    ("config/system.kdeglobals", "[KDE URL Restrictions]"),
    ("empty/kdeglobals", "[KDE URL Restrictions]\n"), ("empty/kdeglobals/folder", "")])
def test_where_kde_restricts_pages_its_openers_alone_are_asked(desktop, path, text):
    desktop.listen_with_openers(*KDE_OPENERS, "gio", "xdg-open", XDG_CURRENT_DESKTOP="KDE")
    expect_opener(desktop, PAGE, "browser", PAGE)
    desktop.write(path, text)
    for opener in KDE_OPENERS:
        expect_opener(desktop, PAGE, opener, PAGE)
        expect_no_opener(desktop, *FILES)
        os.remove(f"{desktop.folder}/openers/{opener}")
    expect_no_opener(desktop, PAGE, "other:page")


def test_no_opener_at_all_harms_nothing(desktop):
    listener = desktop.listen("-log", PATH="/nowhere")
    desktop.open(OTHER)
    listener.expect_log(OTHER)
    desktop.expect_link(listener)


def test_the_choice_of_a_user_of_kde_is_started_without_an_opener(desktop):
    desktop.listen_with_openers(XDG_CURRENT_DESKTOP="KDE")
    for page in (PAGE + "a%20b?c=%26&d#e", "http://page.test/%20"):
        expect_opener(desktop, page, "browser", page)


@pytest.mark.parametrize("version", ["5", "6", None, "none"])
def test_kde_is_asked_by_its_own_opener_whatever_its_version(desktop, version):
    openers = [("kde-open",), ("kde-open5",), ("gio", "open"), ("xdg-open",)]
    desktop.listen_with_openers(*(opener[0] for opener in openers), XDG_CURRENT_DESKTOP="KDE",
                                KDE_SESSION_VERSION=version)
    for opener in openers:
        expect_opener(desktop, "other:page", *opener, "other:page")
        os.remove(f"{desktop.folder}/openers/{opener[0]}")


def test_the_real_opener_finds_a_handler_that_is_not_plain(desktop):
    desktop.install_handler(command=f'"{desktop.folder}/bin/browser" %u')
    desktop.open(LINK)
    assert desktop.opened() == PAGE


def test_a_handler_may_have_further_arguments(desktop):
    desktop.install_handler(command=desktop.folder + "/bin/browser --new-window %U --")
    desktop.listen_with_openers()
    expect_opener(desktop, PAGE, "browser", "--new-window", PAGE, "--")


# How a handler is started.


def expect_clean_start(page):
    assert int(page.status["SigBlk"], 16) == 0
    ignored = int(page.status["SigIgn"], 16)
    for number in (signal.SIGPIPE, signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGCHLD):
        assert not ignored >> (number - 1) & 1, number
    assert page.descriptors == [0, 1, 2]
    assert page.session == page.pid
    assert {*UNIT_VARIABLES} & {*page.environment} == set()
    assert not any(name.startswith("DBUS_STARTER") for name in page.environment)
    assert page.folder == page.environment["HOME"]


# What a service manager tells a unit of the unit.
UNIT_VARIABLES = dict.fromkeys([
    "INVOCATION_ID", "JOURNAL_STREAM", "LISTEN_FDNAMES", "LISTEN_FDS", "LISTEN_PID", "LISTEN_PIDFDID",
    "MANAGERPID", "MANAGERPIDFDID", "MEMORY_PRESSURE_WATCH", "MEMORY_PRESSURE_WRITE", "NOTIFY_SOCKET",
    "SYSTEMD_EXEC_PID", "WATCHDOG_PID", "WATCHDOG_USEC"], "1")


def test_a_handler_starts_clean_of_a_program_that_the_bus_started(desktop):
    desktop.set_service_environment(**UNIT_VARIABLES)
    for _ in ("launch link", "later link"):
        desktop.open(LINK)
        expect_clean_start(desktop.page())


def test_a_handler_starts_clean_of_a_listener(desktop):
    reader, writer = os.pipe()
    os.set_inheritable(writer, True)
    desktop.listen("-log", streams={"pass_fds": [writer]})
    os.close(writer)
    os.close(reader)
    desktop.open(LINK)
    expect_clean_start(desktop.page())


def test_an_opener_starts_clean(desktop):
    desktop.listen_with_openers()
    desktop.open(OTHER)
    expect_clean_start(desktop.page())


def test_a_handler_outlives_the_program(desktop):
    # It reads from the end of a pipe that only the test closes.
    os.mkfifo(desktop.folder + "/fifo")
    handler = desktop.install_script("patient", f"read line < {desktop.folder}/fifo\n"
                                                f"exec {desktop.folder}/bin/browser \"$@\"\n")
    desktop.install_handler(command=handler + " %u")
    listener = desktop.listen()
    desktop.open(LINK)
    with open(desktop.folder + "/fifo", "w", encoding="ascii") as fifo:
        assert listener.end() == SILENCE
        fifo.write("now\n")
    assert desktop.opened() == PAGE


def test_no_zombie_is_left_after_twenty_links(desktop):
    listener = desktop.listen()
    desktop.open(*[LINK] * 20)
    for _ in range(20):
        wait_for_end(desktop.page().pid)
    desktop.open(LINK)
    assert set(children(listener.pid)) <= {desktop.page().pid}


def test_a_handler_gets_a_scope_of_its_own(desktop):
    units = provide_service_manager(desktop)
    desktop.open(LINK)
    pid = desktop.page().pid
    desktop.wait_until(lambda: units)
    ((name, mode, properties, auxiliary, expects_no_answer),) = units
    assert name == f"app-vastel\\x2dconnect-browser-{pid}.scope"
    assert (mode, auxiliary, expects_no_answer) == ("fail", [], True)
    assert dict(properties) == {"PIDs": [pid], "Slice": "app.slice",
                                "CollectMode": "inactive-or-failed"}


def test_no_service_manager_is_started_for_a_scope(new_desktop):
    desktop = new_desktop(bus=False)
    desktop.install_service("org.freedesktop.systemd1", "/bin/sleep 60")
    desktop.start_bus()
    for page in pages(2):
        desktop.open(page_link(page))
        assert desktop.opened() == page
    # Once this is answered, the bus has done what the first page's scope made it do.
    desktop.ask_bus("GetId")
    names = [status_of(pid)["Name"] for pid in children("self")]
    assert names.count("sleep") + names.count("dbus-daemon") == 1


def provide_service_manager(desktop):
    """Stands in for the user's service manager; its calls are appended to the result."""
    calls = []

    def on_call(_bus, _sender, _path, _interface, _method, parameters, invocation):
        # Whoever does not read an answer shall not be sent one.
        flags = invocation.get_message().get_flags()
        calls.append((*parameters.unpack(), bool(flags & Gio.DBusMessageFlags.NO_REPLY_EXPECTED)))
        invocation.return_value(GLib.Variant("(o)", ("/job/1",)))

    interface = Gio.DBusNodeInfo.new_for_xml("""<node>
        <interface name="org.freedesktop.systemd1.Manager"><method name="StartTransientUnit">
        <arg type="s" direction="in"/><arg type="s" direction="in"/>
        <arg type="a(sv)" direction="in"/><arg type="a(sa(sv))" direction="in"/>
        <arg type="o" direction="out"/></method></interface></node>""").interfaces[0]
    desktop.bus.register_object("/org/freedesktop/systemd1", interface, on_call, None, None)
    assert desktop.ask_bus("RequestName", "org.freedesktop.systemd1", 0) == 1
    return calls


# Activation tokens.


def expect_tokens(desktop, token=None, startup_id=None):
    environment = desktop.page().environment
    assert (environment.get("XDG_ACTIVATION_TOKEN"),
            environment.get("DESKTOP_STARTUP_ID")) == (token, startup_id)


def test_tokens_of_the_bus_reach_the_handler_of_their_link_only(desktop):
    desktop.open(LINK, activation_token="token-1", desktop_startup_id="id_TIME1")
    expect_tokens(desktop, "token-1", "id_TIME1")
    desktop.open(LINK)
    expect_tokens(desktop)
    desktop.open(LINK, LINK, desktop_startup_id="id_TIME2")
    expect_tokens(desktop, None, "id_TIME2")
    expect_tokens(desktop, None, "id_TIME2")
    desktop.open(LINK, activation_token="token-2")
    expect_tokens(desktop, "token-2")
    # The longest that there may be.
    desktop.open(LINK, activation_token="x" * 1024, desktop_startup_id="!~" * 512)
    expect_tokens(desktop, "x" * 1024, "!~" * 512)


def test_on_wayland_a_startup_id_alone_is_the_token_too(new_desktop):
    desktop = new_desktop(WAYLAND_DISPLAY="wayland-0")
    for _ in ("cold", "warm"):
        assert desktop.run(LINK, DESKTOP_STARTUP_ID="id") == SILENCE
        expect_tokens(desktop, "id", "id")
    desktop.end_programs()
    for _ in ("cold", "warm"):
        desktop.open(LINK, desktop_startup_id="id")
        expect_tokens(desktop, "id", "id")
    desktop.open(LINK, activation_token="token", desktop_startup_id="id")
    expect_tokens(desktop, "token", "id")
    desktop.open(LINK)
    expect_tokens(desktop)


def test_a_token_goes_with_no_link_when_its_own_opens_nothing(desktop):
    desktop.open("screenpop:", activation_token="token")
    desktop.call("Activate", GLib.Variant("(a{sv})", (
        {"activation-token": GLib.Variant("s", "token")},)))
    desktop.open(LINK)
    expect_tokens(desktop)


def test_tokens_of_a_command_line_reach_the_handler_of_their_link_only(desktop):
    for _ in ("cold", "warm"):
        assert desktop.run(LINK, XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id") == SILENCE
        expect_tokens(desktop, "token", "id")
        assert desktop.run(LINK) == SILENCE
        expect_tokens(desktop)


def test_tokens_of_a_launch_link_reach_its_handler_only(new_desktop):
    desktop = new_desktop(service=None)
    process = desktop.start(LINK, XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id")
    expect_tokens(desktop, "token", "id")
    desktop.wait_for_owner(process.pid)
    desktop.open(LINK)
    expect_tokens(desktop)


def test_tokens_of_the_start_and_of_the_bus_environment_reach_no_handler(new_desktop):
    stale = {"XDG_ACTIVATION_TOKEN": "stale", "DESKTOP_STARTUP_ID": "stale"}
    desktop = new_desktop(**stale)
    desktop.open(LINK)
    expect_tokens(desktop)
    desktop.listen(**stale)
    desktop.open(LINK)
    expect_tokens(desktop)


def test_hostile_tokens_are_dropped(desktop):
    for token in ("", "x" * 1025, "a b", "a\nb", "a\tb", "a\x7f", "\x1b[0m", "tökén",
                  GLib.Variant("i", 1), GLib.Variant("as", ["token"]), GLib.Variant("ay", b"t"),
                  GLib.Variant("v", GLib.Variant("s", "token"))):
        desktop.open(LINK, activation_token=token, desktop_startup_id=token)
        expect_tokens(desktop)
    for token in ("", "x" * 1025, "a b", b"\xff"):
        assert desktop.run(LINK, XDG_ACTIVATION_TOKEN=token, DESKTOP_STARTUP_ID=token) == SILENCE
        expect_tokens(desktop)
