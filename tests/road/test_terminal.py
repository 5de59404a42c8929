"""The program in a terminal: its texts, its log lines, its signals, and what becomes of them when
standard streams or the bus are missing."""

import datetime
import fcntl
import itertools
import json
import os
import re
import resource
import select
import signal
import socket
import termios
import time

from desktop import PROGRAM, Desktop
from model import make_link, page_link
from processes import DATA, LIMIT, golden, log_message, status_of
from road import LINK, PAGE, RoadTestCase, descriptors, messages_of, pages

SWITCHES = {
    "usage": ("-help", "/help", "-h", "/h"),
    "changelog": ("-changelog", "/changelog"),
    "showuri": ("-showuri", "/showuri"),
    "log": ("-log", "/log"),
    "jsonlog": ("-jsonlog", "/jsonlog"),
}
TEXTS = ("usage", "changelog", "showuri")
TEXT_OF_FLAG = {"FlagHelp": "usage", "FlagChangeLog": "changelog", "FlagShowUri": "showuri"}

# A page with what a log line has to treat with care. It forms no URL, so nothing is opened.
ODD_PAGE = "a \"quoted\"\\\nline\tof \u0001 K\u00f6ln \u2603 \U0001f4de </b>"
MESSAGES = messages_of(LINK)


def texts_for(asked):
    return golden("banner", *(text for text in TEXTS if text in asked))


class TerminalTest(RoadTestCase):
    maxDiff = None

    def expect_texts(self, result, *asked):
        self.assertEqual((result.output, result.errors, result.status), (texts_for(asked), "", 0))

    # The texts.

    def test_each_spelling_prints_its_text(self):
        desktop = Desktop(self, bus=False)
        for text in TEXTS:
            for spelling in SWITCHES[text]:
                for argument in (spelling, spelling.upper(), spelling.title()):
                    with self.subTest(argument):
                        self.expect_texts(desktop.run(argument), text)

    def test_each_combination_prints_each_text_once_in_the_fixed_order(self):
        desktop = Desktop(self, bus=False)
        for flags in itertools.product((False, True), repeat=len(SWITCHES)):
            asked = [name for name, flag in zip(SWITCHES, flags) if flag]
            if not set(asked) & set(TEXTS):
                continue
            dashes = [SWITCHES[name][0] for name in asked]
            for arguments in (dashes, [*reversed(dashes), *dashes]):
                with self.subTest(arguments=arguments):
                    self.expect_texts(desktop.run(*arguments), *asked)

    def test_each_row_of_the_switch_table_counts_as_it_says(self):
        desktop = Desktop(self, bus=False)
        with open(DATA + "/switches.tsv", encoding="utf-8") as file:
            rows = [line.rstrip("\n").split("\t") for line in file if not line.startswith("#")]
        self.assertGreater(len(rows), 100)
        for quoted, flag in rows:
            argument = json.loads(quoted)
            if "\0" in argument:
                continue
            with self.subTest(argument=argument):
                self.expect_texts(desktop.run(argument, "-help"), "usage", TEXT_OF_FLAG.get(flag))

    def test_the_programs_own_name_may_be_a_switch(self):
        desktop = Desktop(self, bus=False)
        process = desktop.spawn("/ChangeLog", streams={"executable": PROGRAM})
        self.expect_texts(process.finish(), "changelog")

    def test_without_a_printing_switch_it_prints_the_banner_and_stays(self):
        desktop = Desktop(self)
        for arguments in ([], ["--help"], ["help"], ["-help=1"], ["-log"], ["-he"], ["-help "],
                          ["/jsonlog", "-LOG"], [""]):
            with self.subTest(arguments=arguments):
                process = desktop.listen(*arguments)
                self.assertTrue(process.is_running())
                self.expect_silence(process.end())

    def test_printing_switches_never_touch_the_name(self):
        desktop = Desktop(self)
        for text in TEXTS:
            self.expect_texts(desktop.run(SWITCHES[text][0]), text)
        self.assertEqual(desktop.names_seen(), [])

    def test_printing_switches_leave_a_listener_its_name(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_texts(desktop.run("-help", "-log"), "usage")
        self.assertEqual(len(desktop.names_seen()), 1)
        desktop.open(LINK)
        self.expect_messages(listener, LINK)
        desktop.opened()

    def test_a_terminal_may_itself_be_started_by_the_bus(self):
        desktop = Desktop(self)
        first = desktop.listen()
        ours, theirs = os.openpty()
        self.addCleanup(os.close, ours)
        self.addCleanup(os.close, theirs)
        terminal = {"streams": {"stdin": theirs}, "DBUS_STARTER_BUS_TYPE": "session"}
        self.expect_texts(desktop.run("-help", **terminal), "usage")
        self.assertEqual(len(desktop.names_seen()), 1)
        # As anywhere, a newer start takes the links.
        second = desktop.listen("-log", **terminal)
        self.assertEqual(len(desktop.names_seen()), 2)
        desktop.open(LINK)
        self.expect_messages(second, LINK)
        desktop.opened()
        self.assertTrue(first.is_running())

    def test_a_link_with_a_printing_switch_is_opened_before_the_text(self):
        for bus in (False, True):
            with self.subTest(bus=bus):
                desktop = Desktop(self, bus=bus)
                for text in TEXTS:
                    self.expect_texts(desktop.run(LINK, SWITCHES[text][0], "-log"), text)
                    self.assertEqual(desktop.opened(), PAGE)
                # The link comes first: one that ends the program leaves no text.
                result = desktop.run("-help", make_link("[]"))
                self.assertEqual((result.output, result.errors, result.status), ("", "", 70))
                if bus:
                    self.assertEqual(desktop.names_seen(), [])

    def test_a_link_with_a_printing_switch_leaves_a_listener_alone(self):
        desktop = Desktop(self)
        listener = desktop.listen("-log")
        self.expect_texts(desktop.run("-help", LINK), "usage")
        self.assertEqual(desktop.opened(), PAGE)
        self.assertEqual(listener.end().output, "")

    # Standard output that is not there.

    def expect_closing_harms_nothing(self, *numbers):
        desktop = Desktop(self)
        redirections = " ".join(f"{number}>&-" for number in numbers)
        closed = ("/bin/sh", "-c", f'exec "$0" "$@" {redirections}', PROGRAM)
        self.expect_silence(desktop.spawn(*closed, "-help").finish())

        process = desktop.spawn(*closed, "-log", "-jsonlog")
        desktop.wait_for_owner(process.pid)
        # A line that went into the bus would end the connection.
        for _ in range(3):
            desktop.open(LINK)
            self.assertEqual(desktop.opened(), PAGE)
        null = {int(number) for number in descriptors(process.pid)
                if os.readlink(f"/proc/{process.pid}/fd/{number}") == "/dev/null"}
        # Standard input, what was closed, and what takes the place of a reader that is stuck.
        self.assertLessEqual({0, *numbers}, null)
        self.assertEqual(len(null), len({0, *numbers}) + 1)
        self.expect_silence(process.end())

    def test_a_closed_standard_output_harms_nothing(self):
        self.expect_closing_harms_nothing(1)

    def test_no_standard_stream_at_all_harms_nothing(self):
        self.expect_closing_harms_nothing(0, 1, 2)

    def expect_failing_output_harms_nothing(self, output):
        desktop = Desktop(self)
        result = desktop.run("-help", streams={"stdout": output})
        self.assertEqual((result.errors, result.status), ("", 0))
        process = desktop.listen("-log", "-jsonlog", streams={"stdout": output})
        output.close()
        for _ in range(3):
            desktop.open(LINK)
            self.assertEqual(desktop.opened(), PAGE)
        result = process.end()
        self.assertEqual((result.errors, result.status), ("", 0))

    def test_a_full_device_harms_nothing(self):
        self.expect_failing_output_harms_nothing(open("/dev/full", "wb"))

    def test_a_pipe_without_a_reader_harms_nothing(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.expect_failing_output_harms_nothing(os.fdopen(writer, "wb"))

    def test_a_reader_that_leaves_later_harms_nothing(self):
        desktop = Desktop(self)
        process = desktop.listen("-log")
        desktop.open(LINK)
        self.expect_messages(process, LINK)
        process.output.close()
        process.output = None
        desktop.open(LINK)
        self.assertEqual(desktop.opened_all(2), [PAGE, PAGE])
        self.assertEqual(process.end().status, 0)

    def expect_every_byte_for_a_slow_reader(self, blocking):
        desktop = Desktop(self)
        reader, writer = os.pipe()
        fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
        os.set_blocking(writer, blocking)
        process = desktop.start("-log", streams={"stdout": writer})
        os.close(writer)
        with os.fdopen(reader, encoding="utf-8") as output:
            for line in golden("banner").splitlines(keepends=True):
                self.assertEqual(output.readline(), line)
            desktop.wait_for_owner(process.pid)
            link = page_link(PAGE, Note="x" * 60_000)
            desktop.open(link)
            for message in messages_of(link):
                self.assertEqual(log_message(output.readline()[:-1]), message)
            self.assertEqual(desktop.opened(), PAGE)
            # This one waits for room when its reader leaves.
            desktop.open(link)
        self.assertEqual(desktop.opened(), PAGE)
        self.assertEqual(process.end().status, 0)

    def test_a_slow_reader_gets_every_byte(self):
        self.expect_every_byte_for_a_slow_reader(blocking=True)

    def test_a_slow_reader_of_a_pipe_that_does_not_block_gets_every_byte(self):
        self.expect_every_byte_for_a_slow_reader(blocking=False)

    def expect_end_for_a_stuck_reader(self, desktop, output, number=signal.SIGTERM,
                                      stop=lambda: None, command=(PROGRAM,)):
        """Follows links until `output`, which `stop` stops, takes no more; then asks for the end."""
        process = desktop.spawn(*command, "-log", streams={"stdout": output})
        desktop.wait_for_owner(process.pid)
        stop()
        answers = []
        links = [page_link(PAGE, Note="x" * size) for size in (60_000, 1_000_000)]
        for link in (LINK, *links, LINK):
            desktop.call_open([link], answers)
        # Once this is answered, the bus has passed the calls on.
        desktop.ask_bus("GetId")
        deadline = time.monotonic() + LIMIT
        while select.select([], [output], [], 0)[1]:
            self.assertLess(time.monotonic(), deadline)
        process.send(number)
        result = process.finish()
        self.assertEqual((result.errors, result.status), ("", 0))
        # What was followed is not lost with its log lines.
        desktop.wait_until(lambda: len(answers) == 4)
        self.assertEqual(set(answers), {None})
        self.assertEqual(desktop.opened_all(4), [PAGE] * 4)
        self.assertEqual(desktop.names_seen()[-1], "")

    def add_pair(self, pair):
        for each in pair:
            self.addCleanup(os.close, each)
        return pair

    def test_each_signal_ends_a_program_whose_log_reader_is_stuck(self):
        desktop = Desktop(self)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for blocking in (True, False):
                with self.subTest(number, blocking=blocking):
                    reader, writer = self.add_pair(os.pipe())
                    os.set_blocking(writer, blocking)
                    self.expect_end_for_a_stuck_reader(desktop, writer, number)
                    # Our writing end is as it was, and nothing follows the line that broke off.
                    self.assertEqual(os.get_blocking(writer), blocking)
                    *lines, last = os.read(reader, 1 << 20).decode().split("\n")
                    log = [log_message(line) for line in lines[golden("banner").count("\n"):]]
                    self.assertEqual(log, MESSAGES + ["new uri event"])
                    self.assertRegex(last, r"^Log [0-9:]+> process uri: [:/+\w]+\Z")

    def test_a_signal_ends_a_program_whose_terminal_is_stopped(self):
        _, terminal = self.add_pair(os.openpty())
        self.expect_end_for_a_stuck_reader(
            Desktop(self), terminal, stop=lambda: termios.tcflow(terminal, termios.TCOOFF))

    def test_a_signal_ends_a_program_whose_log_goes_into_a_full_socket(self):
        ours, theirs = socket.socketpair()
        self.addCleanup(ours.close)
        self.addCleanup(theirs.close)
        # What is blocked at the start stays blocked in a program.
        self.expect_end_for_a_stuck_reader(Desktop(self), theirs,
                                           command=("env", "--block-signal=ALRM", PROGRAM))

    def test_a_signal_ends_a_program_that_may_not_open_its_output_once_more(self):
        self.addCleanup(os.umask, os.umask(0o022))
        desktop = Desktop(self)
        user, program = desktop.other_user()
        ours, terminal = self.add_pair(os.openpty())
        for output, stop in ((self.add_pair(os.pipe())[1], lambda: None),
                             (terminal, lambda: termios.tcflow(terminal, termios.TCOOFF))):
            with self.subTest(output=output):
                os.fchmod(output, 0)
                self.expect_end_for_a_stuck_reader(desktop, output, stop=stop,
                                                   command=[*user, program])

    def test_lines_stay_whole_behind_one_that_found_no_room(self):
        desktop = Desktop(self)
        path = desktop.folder + "/log"
        with open(path, "wb") as log:
            process = desktop.listen("-log", streams={"stdout": log})
        full = os.path.getsize(path) + 10
        resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (full, resource.RLIM_INFINITY))
        desktop.open(LINK)
        # The answer comes once the link before is done with.
        desktop.open()
        resource.prlimit(process.pid, resource.RLIMIT_FSIZE, [resource.RLIM_INFINITY] * 2)
        desktop.open(LINK)
        process.end()
        self.assertEqual(desktop.opened_all(2), [PAGE, PAGE])
        with open(path, encoding="utf-8") as log:
            broken, *lines = log.read().removeprefix(golden("banner")).splitlines()
        self.assertRegex(broken, r"\ALog [0-9:]{6}\Z")
        self.assertEqual([log_message(line) for line in lines], MESSAGES)

    # Writing.

    def test_each_line_appears_at_once_in_a_pipe(self):
        desktop = Desktop(self)
        process = desktop.listen("-log")
        for _ in range(3):
            desktop.open(LINK)
            self.expect_messages(process, LINK)
            self.assertEqual(desktop.opened(), PAGE)
        self.assertTrue(process.is_running())

    def test_each_line_is_one_write(self):
        # A socket that keeps the borders of what is written.
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.addCleanup(ours.close)
        ours.settimeout(30)

        def writes(count):
            return [ours.recv(1 << 20).decode() for _ in range(count)]

        desktop = Desktop(self)
        self.assertEqual(desktop.run("-h", "-changelog", "-showuri",
                                     streams={"stdout": theirs}).status, 0)
        lines = golden("banner", "usage", "changelog").splitlines(keepends=True)
        # The description of links is one text.
        self.assertEqual(writes(len(lines) + 1), [*lines, golden("showuri")])

        process = desktop.listen("-log", "-jsonlog", streams={"stdout": theirs})
        theirs.close()
        writes(golden("banner").count("\n"))
        desktop.open(make_link({"WebPage": ODD_PAGE}))
        lines = writes(2 * len(MESSAGES))
        for plain, record in zip(lines[::2], lines[1::2]):
            self.assertRegex(plain, r"^Log [^\0]*\n\Z")
            self.assertEqual("Log " + plain[4:12] + "> " + json.loads(record)["message"] + "\n",
                             plain)
        process.end()
        self.assertEqual(ours.recv(1), b"")

    # Log lines.

    def expect_log_forms(self, desktop, offset):
        process = desktop.listen("-jsonlog", "-log")
        # The clock that counts seconds may be a tick behind the other.
        before = datetime.datetime.now(datetime.timezone.utc) - datetime.timedelta(seconds=2)
        desktop.open(LINK)
        for message in MESSAGES:
            plain, record = process.output.next(), process.output.next()
            match = re.fullmatch(r"Log (\d\d:\d\d:\d\d)> (.*)", plain)
            self.assertEqual(match[2], message)
            match_json = re.fullmatch(r'\{"datetime":"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d{4})",'
                                      r'"event":"Log","message":"(.*)"\}', record)
            self.assertEqual(match_json[2], message)
            self.assertEqual(match_json[1][-5:], offset)
            after = datetime.datetime.now(datetime.timezone.utc)
            written = datetime.datetime.strptime(match_json[1], "%Y-%m-%dT%H:%M:%S%z")
            self.assertTrue(before <= written <= after, (before, written, after))
            # The plain line is the earlier one of the two.
            self.assertIn(match[1], [(written - datetime.timedelta(seconds=each)).strftime("%X")
                                     for each in (0, 1)])
        desktop.opened()

    def test_both_forms_carry_the_users_time(self):
        # The second offset is of quarter hours, the third negative.
        for zone, offset in (({}, datetime.datetime.now().astimezone().strftime("%z")),
                             ({"TZ": "Asia/Kathmandu"}, "+0545"),
                             ({"TZ": "America/Caracas"}, "-0400")):
            self.expect_log_forms(Desktop(self, **zone), offset)
            self.doCleanups()

    def test_only_the_form_of_its_switch_is_written(self):
        desktop = Desktop(self)
        for switch, start in (("/LOG", "Log "), ("/JsonLog", "{")):
            with self.subTest(switch):
                process = desktop.listen(switch)
                desktop.open(LINK)
                lines = [process.output.next() for _ in MESSAGES]
                self.assertEqual([log_message(line) for line in lines], MESSAGES)
                self.assertEqual({line[:len(start)] for line in lines}, {start})
                self.assertEqual(desktop.opened(), PAGE)
                self.expect_silence(process.end())

    def test_nothing_is_written_without_a_log_switch(self):
        desktop = Desktop(self)
        process = desktop.listen()
        desktop.open(LINK, "mailto:a@b.test", "screenpop:")
        self.assertEqual(desktop.opened(), PAGE)
        self.expect_silence(process.end())

    def test_a_plain_line_carries_any_message_unchanged(self):
        desktop = Desktop(self)
        process = desktop.listen("-log")
        link = page_link(ODD_PAGE)
        desktop.open(link)
        log = re.sub(r"(?m)^Log \d\d:\d\d:\d\d> ", "Log> ", process.end().output)
        self.assertEqual(log, "".join(f"Log> {message}\n" for message in messages_of(link)))

    def test_a_json_line_stays_one_line_for_any_message(self):
        desktop = Desktop(self)
        process = desktop.listen("-jsonlog")
        link = page_link(ODD_PAGE)
        desktop.open(link)
        log = process.end().output
        self.assertEqual([log_message(line) for line in log.splitlines()], messages_of(link))
        self.assertIn(r'a \"quoted\"\\\nline\tof \u0001 Köln ☃ 📞', log)

    # Arguments that are not UTF-8.

    def test_an_argument_that_is_not_utf8_is_refused_and_the_program_goes_on(self):
        desktop = Desktop(self, bus=False)
        result = desktop.run(b"-h\xff", "-help")
        self.assertEqual(result.errors, "vastel-connect: argument 1 is not UTF-8: ignored\n")
        self.assertEqual((result.output, result.status), (texts_for(["usage"]), 0))

    def test_a_link_that_is_not_utf8_is_refused(self):
        desktop = Desktop(self)
        result = desktop.run("-log", b"screenpop:\xff")
        self.assertEqual(result.errors, "vastel-connect: argument 2 is not UTF-8: ignored\n")
        self.assertEqual((result.output, result.status), ("", 1))
        self.assertEqual(desktop.names_seen(), [])

    # No bus.

    def test_a_bus_that_ends_before_a_link_is_handed_over_is_none(self):
        desktop = Desktop(self, bus=False)
        with socket.socket(socket.AF_UNIX) as bus:
            bus.bind(desktop.folder + "/bus")
            bus.listen()
            process = desktop.start(
                LINK, DBUS_SESSION_BUS_ADDRESS=f"unix:path={desktop.folder}/bus")
            bus.accept()[0].close()
        result = process.finish()
        self.assertEqual((result.output, result.errors, result.status), (
            golden("banner"), "vastel-connect: no session bus, so no link can arrive\n", 1))
        self.assertEqual(desktop.opened(), PAGE)

    def test_without_a_bus_launch_links_are_opened_and_one_line_says_so(self):
        desktop = Desktop(self, bus=False)
        for opened in ([], pages(2)):
            result = desktop.run("-log", *map(page_link, opened), "-jsonlog")
            self.assertEqual((result.output, result.status), (golden("banner"), 1))
            self.assertEqual(result.errors,
                             "vastel-connect: no session bus, so no link can arrive\n")
            self.assertEqual(desktop.opened_all(len(opened)), opened)

    def test_a_bus_that_does_not_answer_is_no_bus(self):
        desktop = Desktop(self, bus=False, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere/at/all")
        result = desktop.run(LINK)
        self.assertEqual((result.output, result.status), (golden("banner"), 1))
        self.assertEqual(result.errors.count("\n"), 1)
        self.assertEqual(desktop.opened(), PAGE)

    # Signals.

    def test_a_signal_to_end_gives_the_name_back(self):
        desktop = Desktop(self)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                self.expect_silence(desktop.listen().end(number))
                self.assertEqual(desktop.names_seen()[-1], "")

    def test_hang_up_stays_ignored(self):
        desktop = Desktop(self)
        process = desktop.spawn("/bin/sh", "-c", "trap '' HUP; exec \"$0\" -log", PROGRAM)
        process.banner()
        desktop.wait_for_owner(process.pid)
        process.send(signal.SIGHUP)
        desktop.open(LINK)
        self.expect_messages(process, LINK)
        self.assertEqual(int(status_of(process.pid)["SigIgn"], 16) & 1, 1)
        desktop.opened()
        self.assertEqual(process.end().status, 0)
