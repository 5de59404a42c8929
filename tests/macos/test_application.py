"""The macOS application as GNUstep's AppKit runs it, on a desktop of its own: a display that nobody
sees, an empty home, and the library that stands in for what GNUstep lacks."""
import datetime
import json
import os
import pathlib
import re
import subprocess

import pytest
from model import expect, make_link, page_link
from processes import SCREEN, Process, adopt_orphans, golden, kill_children

EXECUTABLE = pathlib.Path(os.environ["CONNECT_BUNDLE"]) / "Vastel_Connect"
PAGE = "https://crm.example/48213"

REMOVE_HANDLER = "@remove handler GURL GURL"
WILL_FINISH = [
    "@will finish launching",
    "@set handler GURL GURL AppDelegate UriEventHandlerWithEvent:withReplyEvent:",
]
LAUNCHED = [
    "@methods window setWindow: applicationWillFinishLaunching: applicationDidFinishLaunching: "
    "applicationWillTerminate: UriEventHandlerWithEvent:withReplyEvent: init "
    "applicationSupportsSecureRestorableState: .cxx_destruct .cxx_construct",
    "@window hidden",
]
ENDED_BY_ITSELF = ["@terminate, sender AppDelegate", REMOVE_HANDLER]
ENDED_BY_SYSTEM = ["@terminate, sender (null)", REMOVE_HANDLER]


def text_event(text):
    """A get-URL event with a text as its direct parameter."""
    return {"----": {"text": text}}


def texts(*names):
    """The lines of golden files, one after another."""
    return golden(*names).split("\n")[:-1]


def plain(*messages):
    return [f"Log HH:mm:ss> {message}" for message in messages]


def without_time(line):
    return re.sub(r"^(Log )\d\d:\d\d:\d\d> ", r"\1HH:mm:ss> ", line)


class Application(Process):
    """The running application. Its lines are its own output, and after "@" what it asked of the
    desktop."""

    def lines_until(self, last):
        """The lines before `last`, which has to come."""
        return [without_time(line) for line in iter(self.output.next, last)]

    def rest(self):
        """The lines up to the end of the process."""
        return [without_time(line) for line in self.finish().output.split("\n")[:-1]]

    def start_event(self, event):
        self.write(json.dumps(event) + "\n")

    def send_event(self, event):
        """Sends an event, {} without a parameter, None for no event; gives the lines it caused."""
        self.start_event(event)
        return self.lines_until("@done")

    def terminate(self):
        """Asks the application to end, as the system does; gives the lines it caused."""
        self.write("terminate\n")
        return self.rest()


@pytest.fixture(scope="module")
def variables(tmp_path_factory):
    # What GNUstep starts on the side leaves its parent, and comes to us.
    adopt_orphans()
    home = str(tmp_path_factory.mktemp("home"))
    server = Process(SCREEN, os.environ, stderr=subprocess.DEVNULL)
    yield {
        "PATH": os.environ["PATH"],
        "HOME": home,
        "TEMP": home,  # where GNUstep keeps its ports
        "DISPLAY": ":" + server.output.next(),
        "GNUSTEP_TZ": "UTC",
        "LC_ALL": "C.UTF-8",
        "LD_PRELOAD": os.environ["CONNECT_TEST_DESKTOP"],
    }
    server.discard()
    kill_children()


@pytest.fixture
def start(variables):
    """Starts the application, with the event that launches it if there is one."""
    started = []

    def start(*arguments, launch=None, output=subprocess.PIPE, **more):
        if launch is not None:
            more["CONNECT_TEST_LAUNCH_EVENT"] = json.dumps(launch)
        # What GNUstep complains of stands beside the test's own output.
        started.append(Application([EXECUTABLE, *arguments], {**variables, **more},
                                   stdin=subprocess.PIPE, stdout=output, stderr=None))
        return started[-1]

    yield start
    for application in started:
        application.discard()


@pytest.fixture
def listen(start):
    """Starts the application and passes over its banner."""
    def listen(*arguments, **more):
        application = start(*arguments, **more)
        application.lines_until("@did finish launching")
        application.banner()
        return application

    return listen


@pytest.mark.parametrize("launch, opened", [
    (None, []),
    # Without a log line: the command line is read later.
    (text_event(page_link(PAGE)), ["@open " + PAGE]),
])
def test_registers_and_takes_its_first_link_before_the_command_line(start, launch, opened):
    application = start("-log", "-jsonlog", launch=launch)
    assert application.lines_until("@did finish launching") == WILL_FINISH + LAUNCHED + opened
    application.banner()
    assert application.terminate() == ENDED_BY_SYSTEM
    assert application.wait() == 0


@pytest.mark.parametrize("arguments, passed_over, printed", [
    (["-help"], None, ["help"]),
    (["-HELP"], None, ["help"]),
    (["/help"], "help", ["help"]),
    (["/h"], "h", ["help"]),
    (["/changelog"], "changelog", ["changelog"]),
    (["/showuri"], "showuri", ["showuri"]),
    (["-showuri", "/changelog", "-log", "-help"], None, ["help", "changelog", "showuri"]),
])
def test_prints_and_ends(start, arguments, passed_over, printed):
    application = start(*arguments)
    # What begins with a slash is no file to open.
    files = ["@pass over " + passed_over] if passed_over else []
    assert application.rest() == [*WILL_FINISH, *files, *LAUNCHED, "@did finish launching",
                                  *texts("banner", *printed), *ENDED_BY_ITSELF]
    assert application.wait() == 0


def test_leaves_the_opening_of_files_to_who_asks_for_it(start):
    lines = start("/help", "-NSTreatUnknownArgumentsAsOpen", "YES").rest()
    assert lines[:3] == WILL_FINISH + ["@open file help"]


def test_opens_a_page_by_the_text_that_it_is(listen):
    application = listen("-log")
    for page in (PAGE, "http://h/?q=a%20b&c=%C3%A9#part", "https://Host.Example/Path",
                 "tel:+31201234567", "mailto:someone@example.org?subject=a%2Bb",
                 "custom.scheme+x:opaque"):
        link = page_link(page)
        assert application.send_event(text_event(link)) == \
            plain(*expect(link).messages) + ["@open " + page]
    for page in ("http://h/a b", "http://h/\u00e9", "a%zz:", "", "foo", "/etc/passwd", "--help"):
        link = page_link(page)
        assert application.send_event(text_event(link)) == plain(*expect(link).messages)


@pytest.mark.parametrize("managed, setting, opened", [
    ("AllowedSchemes", "(HTTPS, tel)", [PAGE, "tel:1"]),
    ("AllowedSchemes", "({https=1;}, tel)", ["tel:1"]),
    ("AllowedSchemes", "()", []),
    ("AllowedSchemes", "https", []),  # No array.
    ("", "(tel)", [PAGE, "tel:1", "other:page"]),
])
def test_opens_pages_of_permitted_schemes_alone_where_the_setting_is_managed(
        listen, managed, setting, opened):
    application = listen("-log", "-AllowedSchemes", setting, CONNECT_TEST_MANAGED=managed)
    for page in (PAGE, "tel:1", "other:page"):
        link = page_link(page)
        assert application.send_event(text_event(link)) == \
            plain(*expect(link).messages) + ["@open " + page] * (page in opened)


def test_tells_of_an_event_before_it_looks_into_it(listen):
    application = listen("-log")
    for event in (None, {}, {"----": {}}, {"---x": {"text": "screenpop:e30="}}):
        assert application.send_event(event) == plain("new uri event", "no event data")
    assert application.send_event({"watched": True, **text_event("no colon")}) == [
        *plain("new uri event"), "@asked for ----",
        *plain("process uri: no colon", "invalid protocol")]


def test_is_stopped_by_an_array(listen):
    application = listen("-log")
    link = make_link('[{"WebPage":"https://crm.example/"}]')
    application.start_event(text_event(link))
    assert application.rest() == plain(*expect(link).messages)
    assert application.wait() != 0


@pytest.mark.parametrize("zone, offset", [("UTC", "+0000"), ("Asia/Kathmandu", "+0545"),
                                          ("Etc/GMT+3", "-0300")])
def test_tells_the_local_time_in_both_forms(listen, zone, offset):
    application = listen("-log", "-jsonlog", GNUSTEP_TZ=zone)
    before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
    application.start_event({})
    clock, stamp = application.output.next(), json.loads(application.output.next())["datetime"]
    after = datetime.datetime.now(datetime.timezone.utc)
    assert stamp.endswith(offset)
    moment = datetime.datetime.strptime(stamp, "%Y-%m-%dT%H:%M:%S%z")
    assert before <= moment <= after
    seconds = range(int((after - before).total_seconds()) + 1)
    assert re.fullmatch(r"Log (.*)> new uri event", clock)[1] in [
        (moment - datetime.timedelta(seconds=i)).strftime("%H:%M:%S") for i in seconds]


def test_is_not_ended_by_a_log_without_a_reader(start):
    reader, writer = os.pipe()
    os.close(reader)
    application = start("-log", "/help", output=writer)
    os.close(writer)
    assert application.wait() == 0
