"""Which handler of a page is started, if any, and how."""

import os

import pytest
from gi.repository import Gio, GLib

from browser import OVER_ETC, need
from desktop import PROGRAM, SERVICE
from model import page_link
from processes import SILENCE, children, status_of
from road import LINK, PAGE, pages

KDE_OPENERS = ["kde-open", "kde-open5"]


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


def test_a_page_that_forms_no_url_reaches_no_handler_and_no_opener(desktop):
    refused = ["", "foo", "/etc/passwd", "--help", "-h", "//page.test/", "#", "$(reboot)", "C:\\x",
               "https://page.test/a b", "https://page.test/\0", "https://page.test/\0--help",
               " https://page.test/", "https://page.test/%", "https://page.test/ü", "other:`x`"]
    listener = desktop.listen_with_openers()
    for page in refused:
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
    # Had one been started, its report would be in excess.
    desktop.expect_link(listener)


def test_what_is_not_plain_is_left_to_the_opener(desktop):
    desktop.listen_with_openers()
    # The kernel does not start a script without "#!".
    nameless = desktop.write("bin/nameless", "exit\n", 0o755)
    for page, handler in [("file:///etc/passwd", {"schemes": ("http", "https", "file")}),
                          ("other:page", {}), (PAGE, {"lines": ["Terminal=true"]}),
                          (PAGE, {"command": nameless + " %u"})]:
        desktop.install_handler(**handler)
        expect_opener(desktop, page, "gio", "open", page)


@pytest.mark.parametrize("name, openers", [
    ("GNOME", ["gio open", "xdg-open"]), ("KDE", ["kde-open", "kde-open5", "gio open", "xdg-open"])])
def test_openers_are_asked_in_turn_and_none_harms_nothing(desktop, name, openers):
    desktop.listen_with_openers(*KDE_OPENERS, "gio", "xdg-open", XDG_CURRENT_DESKTOP=name)
    for opener in map(str.split, openers):
        expect_opener(desktop, "other:page", *opener, "other:page")
        os.remove(f"{desktop.folder}/openers/{opener[0]}")
    expect_no_opener(desktop, "other:page")


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


def test_the_real_opener_finds_a_handler_that_is_not_plain(desktop):
    desktop.install_handler(command=f'"{desktop.folder}/bin/browser" %u')
    desktop.open(LINK)
    assert desktop.opened() == PAGE


def test_what_a_shell_would_read_reaches_the_handler_as_one_argument(desktop):
    for page in ("https://page.test/$(touch;x)&y=*?~'!", "https://page.test/%20--help%25u",
                 "HTTPS://page.test/%C3%BC+%20?q=a&b;c='d'($HOME)*~!#e"):
        desktop.open(page_link(page))
        assert desktop.opened() == page


# The administrator's file.


def test_pages_of_permitted_schemes_alone_are_opened_from_one_page_to_the_next(desktop):
    need()
    desktop.write("policy", "")
    # What changes is outside the folder, whose content the kernel may remember.
    os.mkdir(desktop.folder + "/over")
    os.symlink(desktop.folder + "/policy", desktop.folder + "/over/vastel-connect.conf")
    listener = desktop.listen("-log", command=(*OVER_ETC, desktop.folder + "/over", PROGRAM))
    for policy, page, refusal in [
            ("[Pages]\nSchemes=https\n", "HTTPS://page.test/", ""),
            ("[Pages]\nSchemes=http;tel\n", PAGE, "its Schemes lack https"),
            ("[Pages]\nSchemes=https;other\n", PAGE, ""),
            ("[Pages]\nSchemes=https;other\n", "file:///etc/passwd", "its Schemes lack file"),
            ("", PAGE, "it has no Schemes in [Pages]")]:
        desktop.write("policy", policy)
        desktop.open(page_link(page))
        listener.expect_log(page_link(page))
        if refusal:
            assert listener.errors.next() == ("vastel-connect: the scheme of a page is not permitted "
                                              "by /etc/vastel-connect.conf: " + refusal)
        else:
            assert desktop.opened() == page
    assert listener.end() == SILENCE
    # Without a bus, the start itself is told.
    start = desktop.spawn(*OVER_ETC, desktop.folder + "/over", PROGRAM, LINK,
                          DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
    assert start.errors.next().endswith(refusal)
    assert start.errors.next() == "vastel-connect: a page was not opened"
    assert start.finish().status == 1


# How a handler is started.


# What a service manager tells a unit of the unit, and the bus of itself.
STARTER_VARIABLES = dict.fromkeys([
    "INVOCATION_ID", "JOURNAL_STREAM", "LISTEN_FDNAMES", "LISTEN_FDS", "LISTEN_PID", "LISTEN_PIDFDID",
    "MANAGERPID", "MANAGERPIDFDID", "MEMORY_PRESSURE_WATCH", "MEMORY_PRESSURE_WRITE", "NOTIFY_SOCKET",
    "SYSTEMD_EXEC_PID", "WATCHDOG_PID", "WATCHDOG_USEC", "DBUS_STARTER_ADDRESS",
    "DBUS_STARTER_BUS_TYPE"], "1")


def test_a_handler_starts_clean_of_us_and_of_who_started_us(desktop):
    def expect_clean_start():
        desktop.open(LINK)
        page = desktop.page()
        assert page.descriptors == [0, 1, 2]
        assert not {*STARTER_VARIABLES} & {*page.environment}
        assert page.folder == page.environment["HOME"]
        assert page.group == page.pid

    desktop.set_service_environment(**STARTER_VARIABLES)
    for _ in ("launch link", "later link"):
        expect_clean_start()
    with open("/dev/null", encoding="ascii") as inherited:
        desktop.listen(streams={"pass_fds": [inherited.fileno()]}, **STARTER_VARIABLES)
    expect_clean_start()


def test_a_handler_leaves_the_terminal(desktop):
    for each in (terminals := os.openpty()):
        desktop.callback(os.close, each)
    desktop.listen(command=("setsid", "--ctty", PROGRAM), streams={"stdin": terminals[1]})
    desktop.open(LINK)
    page = desktop.page()
    assert page.session == page.pid


def test_a_handler_gets_a_scope_of_its_own(desktop):
    units = []

    def on_call(*arguments):
        # Whoever does not read an answer shall not be sent one.
        flags = arguments[-1].get_message().get_flags()
        units.append((*arguments[-2].unpack(), bool(flags & Gio.DBusMessageFlags.NO_REPLY_EXPECTED)))

    # Stands in for the user's service manager.
    interface = Gio.DBusNodeInfo.new_for_xml("""<node>
        <interface name="org.freedesktop.systemd1.Manager"><method name="StartTransientUnit">
        <arg type="s" direction="in"/><arg type="s" direction="in"/>
        <arg type="a(sv)" direction="in"/><arg type="a(sa(sv))" direction="in"/>
        </method></interface></node>""").interfaces[0]
    desktop.bus.register_object("/org/freedesktop/systemd1", interface, on_call, None, None)
    assert desktop.ask_bus("RequestName", "org.freedesktop.systemd1", 0) == 1
    desktop.open(LINK)
    pid = desktop.page().pid
    desktop.wait_until(lambda: units)
    assert units == [(f"app-vastel\\x2dconnect-browser-{pid}.scope", "fail", [
        ("PIDs", [pid]), ("Slice", "app.slice"), ("CollectMode", "inactive-or-failed")], [], True)]


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


# Activation tokens.


def expect_tokens(desktop, token=None, startup_id=None):
    environment = desktop.page().environment
    assert (environment.get("XDG_ACTIVATION_TOKEN"),
            environment.get("DESKTOP_STARTUP_ID")) == (token, startup_id)


def test_tokens_of_the_bus_reach_the_handler_of_their_link_only(new_desktop):
    # Those of the start are of the program itself, or of whoever started the bus.
    desktop = new_desktop(XDG_ACTIVATION_TOKEN="stale", DESKTOP_STARTUP_ID="stale")
    for _ in ("started by the bus", "started by hand"):
        for token, startup_id in [(None, None), ("token", "id_TIME1"), (None, "id_TIME2"),
                                  ("token", None), ("x" * 1024, "!~" * 512)]:
            given = {"activation_token": token, "desktop_startup_id": startup_id}
            desktop.open(LINK, LINK, **{name: text for name, text in given.items() if text})
            for _ in range(2):
                expect_tokens(desktop, token, startup_id)
        desktop.listen()


@pytest.mark.parametrize("service", [SERVICE, None])
def test_tokens_of_a_command_line_reach_the_handler_of_their_link_only(new_desktop, service):
    desktop = new_desktop(service=service)
    for _ in ("cold", "warm"):
        desktop.start(LINK, XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id")
        expect_tokens(desktop, "token", "id")
        desktop.wait_until(desktop.owner)
        desktop.open(LINK)
        expect_tokens(desktop)


def test_platform_data_sets_no_variable_but_the_two(desktop):
    desktop.open(LINK)
    known = set(desktop.page().environment)
    data = {"LD_PRELOAD": "/tmp/x.so", "PATH": "/tmp", "DISPLAY": ":9", "activation-token": "a",
            "desktop-startup-id": "b", "XDG_ACTIVATION_TOKEN": "c", "activation-token=x": "d",
            "": "e", "x\nLD_PRELOAD": "f"}
    data = {key: GLib.Variant("s", value) for key, value in data.items()}
    data["of any other kind"] = GLib.Variant("(ia{sv}v)", (1, {}, GLib.Variant("as", ["y"])))
    desktop.call("Open", GLib.Variant("(asa{sv})", ([LINK], data)))
    environment = desktop.page().environment
    assert set(environment) - known == {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}
    assert (environment["XDG_ACTIVATION_TOKEN"], environment["PATH"]) == ("a", "/usr/bin:/bin")


def test_hostile_tokens_are_dropped(desktop):
    for token in ("x" * 1025, "a b", GLib.Variant("i", 1), GLib.Variant("as", ["token"]),
                  GLib.Variant("ay", b"t"), GLib.Variant("v", GLib.Variant("s", "token"))):
        desktop.open(LINK, activation_token=token, desktop_startup_id=token)
        expect_tokens(desktop)
    for token in ("a b", b"\xff"):
        assert desktop.run(LINK, XDG_ACTIVATION_TOKEN=token, DESKTOP_STARTUP_ID=token) == SILENCE
        expect_tokens(desktop)
