"""Which handler of a page is started, and how."""

import os
import signal

from gi.repository import Gio, GLib

from desktop import Desktop
from model import page_link
from processes import children, status_of, wait_for_end
from road import LINK, PAGE, RoadTestCase, pages


class HandlersTest(RoadTestCase):
    # Which handler is started.

    def expect_opener(self, desktop, page, *expected):
        """Follows a link, whose page is to reach an opener with these arguments."""
        desktop.open(page_link(page))
        report = desktop.page()
        self.assertEqual((os.path.basename(report.program), *report.arguments), expected)

    def test_a_page_without_a_scheme_reaches_no_opener(self):
        self.expect_no_opener("", "foo", "/etc/passwd", "--help", "-h", "//page.test/", ":x",
                              "1http://page.test/", "../x", "%68ttp://page.test/", "?", "#")

    def test_a_page_that_forms_no_url_reaches_no_opener(self):
        self.expect_no_opener(
            "https://page.test/a b", "https://page.test/\0", " https://page.test/",
            "https://page.test/%", "https://page.test/%zz", "https://page.test/#a#b",
            "https://page.test/ü", "https://page.test/\\", "https://page.test/\t",
            "https://page.test/|", "other:<x>", "other:\"x\"", "other:`x`", "other:{x}")

    def test_what_is_not_plain_is_left_to_the_opener(self):
        desktop = Desktop(self)
        self.listen_with_openers(desktop)
        quoted = f'"{desktop.folder}/bin/browser" "%u"'
        for page, handler in (("file:///etc/passwd", {"schemes": ("http", "https", "file")}),
                              ("other:page", {}), (PAGE, {"lines": ["Terminal=true"]}),
                              (PAGE, {"command": quoted})):
            with self.subTest(page=page, **handler):
                desktop.install_handler(**handler)
                self.expect_opener(desktop, page, "gio", "open", page)

    def test_another_opener_stands_in_where_one_is_missing(self):
        desktop = Desktop(self)
        self.listen_with_openers(desktop, "xdg-open")
        self.expect_opener(desktop, "other:page", "xdg-open", "other:page")

    def test_no_opener_at_all_harms_nothing(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log", PATH="/nowhere")
        link = page_link("other:page")
        desktop.open(link)
        self.expect_messages(listener, link)
        self.expect_link(desktop, listener)

    def test_the_choice_of_a_user_of_kde_is_started_without_an_opener(self):
        desktop = Desktop(self)
        self.listen_with_openers(desktop, XDG_CURRENT_DESKTOP="KDE")
        for page in (PAGE + "a%20b?c=%26&d#e", "http://page.test/%20"):
            self.expect_opener(desktop, page, "browser", page)

    def test_kde_is_asked_by_its_own_opener_whatever_its_version(self):
        desktop = Desktop(self)
        openers = [("kde-open",), ("kde-open5",), ("gio", "open"), ("xdg-open",)]
        for version in ("5", "6", None, "none"):
            self.listen_with_openers(desktop, *(opener[0] for opener in openers),
                                     XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION=version)
            for opener in openers:
                with self.subTest(version=version, opener=opener):
                    self.expect_opener(desktop, "other:page", *opener, "other:page")
                os.remove(f"{desktop.folder}/openers/{opener[0]}")

    def test_the_real_opener_finds_a_handler_that_is_not_plain(self):
        desktop = Desktop(self)
        desktop.install_handler(command=f'"{desktop.folder}/bin/browser" %u')
        desktop.open(LINK)
        self.assertEqual(desktop.opened(), PAGE)

    def test_a_handler_may_have_further_arguments(self):
        desktop = Desktop(self)
        desktop.install_handler(command=desktop.folder + "/bin/browser --new-window %U --")
        self.listen_with_openers(desktop)
        self.expect_opener(desktop, PAGE, "browser", "--new-window", PAGE, "--")

    # How a handler is started.

    def expect_clean_start(self, page):
        self.assertEqual(int(page.status["SigBlk"], 16), 0)
        ignored = int(page.status["SigIgn"], 16)
        for number in (signal.SIGPIPE, signal.SIGINT, signal.SIGTERM, signal.SIGHUP,
                       signal.SIGCHLD):
            self.assertFalse(ignored >> (number - 1) & 1, number)
        self.assertEqual(page.descriptors, [0, 1, 2])
        self.assertEqual(page.session, page.pid)
        self.assertEqual([name for name in page.environment if name.startswith("DBUS_STARTER")], [])

    def test_a_handler_starts_clean_of_a_program_that_the_bus_started(self):
        desktop = Desktop(self)
        for _ in ("launch link", "later link"):
            desktop.open(LINK)
            page = desktop.page()
            self.expect_clean_start(page)

    def test_a_handler_starts_clean_of_a_listener(self):
        desktop = Desktop(self)
        reader, writer = os.pipe()
        os.set_inheritable(writer, True)
        desktop.listen("-log", streams={"pass_fds": [writer]})
        os.close(writer)
        os.close(reader)
        desktop.open(LINK)
        self.expect_clean_start(desktop.page())

    def test_an_opener_starts_clean(self):
        desktop = Desktop(self)
        self.install_openers(desktop)
        desktop.listen(PATH=desktop.folder + "/openers")
        desktop.open(page_link("other:page"))
        self.expect_clean_start(desktop.page())

    def test_a_handler_outlives_the_program(self):
        desktop = Desktop(self)
        # It reads from the end of a pipe that only the test closes.
        os.mkfifo(desktop.folder + "/fifo")
        handler = desktop.install_script("patient", f"read line < {desktop.folder}/fifo\n"
                                                    f"exec {desktop.folder}/bin/browser \"$@\"\n")
        desktop.install_handler(command=handler + " %u")
        listener = desktop.listen()
        desktop.open(LINK)
        with open(desktop.folder + "/fifo", "w", encoding="ascii") as fifo:
            self.expect_silence(listener.end())
            fifo.write("now\n")
        self.assertEqual(desktop.opened(), PAGE)

    def test_no_zombie_is_left_after_twenty_links(self):
        desktop = Desktop(self)
        listener = desktop.listen()
        desktop.open(*[LINK] * 20)
        for _ in range(20):
            wait_for_end(desktop.page().pid)
        desktop.open(LINK)
        last = desktop.page().pid
        self.assertLessEqual(set(children(listener.pid)), {last})

    def test_a_handler_gets_a_scope_of_its_own(self):
        desktop = Desktop(self)
        units = self.provide_service_manager(desktop)
        desktop.open(LINK)
        pid = desktop.page().pid
        desktop.wait_until(lambda: units)
        ((name, mode, properties, auxiliary, expects_no_answer),) = units
        self.assertEqual(name, f"app-vastel\\x2dconnect-browser-{pid}.scope")
        self.assertEqual((mode, auxiliary, expects_no_answer), ("fail", [], True))
        self.assertEqual(dict(properties), {"PIDs": [pid], "Slice": "app.slice",
                                            "CollectMode": "inactive-or-failed"})

    def test_no_service_manager_is_started_for_a_scope(self):
        desktop = Desktop(self, bus=False)
        desktop.install_service("org.freedesktop.systemd1", "/bin/sleep 60")
        desktop.start_bus()
        for page in pages(2):
            desktop.open(page_link(page))
            self.assertEqual(desktop.opened(), page)
        # Once this is answered, the bus has done what the first page's scope made it do.
        desktop.ask_bus("GetId")
        names = [status_of(pid)["Name"] for pid in children("self")]
        self.assertEqual(names.count("sleep") + names.count("dbus-daemon"), 1)

    def provide_service_manager(self, desktop):
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
        self.assertEqual(desktop.ask_bus("RequestName", "org.freedesktop.systemd1", 0), 1)
        return calls

    # Activation tokens.

    def expect_tokens(self, desktop, token=None, startup_id=None):
        environment = desktop.page().environment
        self.assertEqual((environment.get("XDG_ACTIVATION_TOKEN"),
                          environment.get("DESKTOP_STARTUP_ID")), (token, startup_id))

    def test_tokens_of_the_bus_reach_the_handler_of_their_link_only(self):
        desktop = Desktop(self)
        desktop.open(LINK, activation_token="token-1", desktop_startup_id="id_TIME1")
        self.expect_tokens(desktop, "token-1", "id_TIME1")
        desktop.open(LINK)
        self.expect_tokens(desktop)
        desktop.open(LINK, LINK, desktop_startup_id="id_TIME2")
        self.expect_tokens(desktop, None, "id_TIME2")
        self.expect_tokens(desktop, None, "id_TIME2")
        desktop.open(LINK, activation_token="token-2")
        self.expect_tokens(desktop, "token-2")

    def test_on_wayland_a_startup_id_alone_is_the_token_too(self):
        desktop = Desktop(self, WAYLAND_DISPLAY="wayland-0")
        for _ in ("cold", "warm"):
            self.expect_silence(desktop.run(LINK, DESKTOP_STARTUP_ID="id"))
            self.expect_tokens(desktop, "id", "id")
        desktop.end_programs()
        for _ in ("cold", "warm"):
            desktop.open(LINK, desktop_startup_id="id")
            self.expect_tokens(desktop, "id", "id")
        desktop.open(LINK, activation_token="token", desktop_startup_id="id")
        self.expect_tokens(desktop, "token", "id")
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_a_token_goes_with_no_link_when_its_own_opens_nothing(self):
        desktop = Desktop(self)
        desktop.open("screenpop:", activation_token="token")
        desktop.call("Activate", GLib.Variant("(a{sv})", (
            {"activation-token": GLib.Variant("s", "token")},)))
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_a_command_line_reach_the_handler_of_their_link_only(self):
        desktop = Desktop(self)
        for _ in ("cold", "warm"):
            self.expect_silence(desktop.run(LINK, XDG_ACTIVATION_TOKEN="token",
                                            DESKTOP_STARTUP_ID="id_TIME1"))
            self.expect_tokens(desktop, "token", "id_TIME1")
            self.expect_silence(desktop.run(LINK))
            self.expect_tokens(desktop)

    def test_tokens_of_a_launch_link_reach_its_handler_only(self):
        desktop = Desktop(self, service=None)
        process = desktop.start(LINK, XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id_TIME1")
        self.expect_tokens(desktop, "token", "id_TIME1")
        process.banner()
        desktop.wait_for_owner(process.pid)
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_the_start_are_not_those_of_a_later_link(self):
        desktop = Desktop(self)
        desktop.listen(XDG_ACTIVATION_TOKEN="token", DESKTOP_STARTUP_ID="id_TIME1")
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_tokens_of_the_bus_environment_reach_no_handler(self):
        desktop = Desktop(self, XDG_ACTIVATION_TOKEN="stale", DESKTOP_STARTUP_ID="stale")
        desktop.open(LINK)
        self.expect_tokens(desktop)

    def test_the_longest_token_is_passed_on(self):
        desktop = Desktop(self)
        desktop.open(LINK, activation_token="x" * 1024, desktop_startup_id="!~" * 512)
        self.expect_tokens(desktop, "x" * 1024, "!~" * 512)

    def test_hostile_tokens_are_dropped(self):
        desktop = Desktop(self)
        for token in ("", "x" * 1025, "a b", "a\nb", "a\tb", "a\x7f", "\x1b[0m", "tökén",
                      GLib.Variant("i", 1), GLib.Variant("as", ["token"]), GLib.Variant("ay", b"t"),
                      GLib.Variant("v", GLib.Variant("s", "token"))):
            with self.subTest(token=token):
                desktop.open(LINK, activation_token=token, desktop_startup_id=token)
                self.expect_tokens(desktop)

    def test_hostile_tokens_of_a_command_line_are_dropped(self):
        desktop = Desktop(self)
        for token in ("", "x" * 1025, "a b", b"\xff"):
            with self.subTest(token=token):
                self.expect_silence(desktop.run(LINK, XDG_ACTIVATION_TOKEN=token,
                                                DESKTOP_STARTUP_ID=token))
                self.expect_tokens(desktop)
