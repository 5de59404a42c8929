"""Folders with all that says which application opens what, and what becomes of a URL in them."""

import contextlib
import os
import subprocess
import tempfile

from gi.repository import Gio

FIND_DEFAULT_HANDLER = os.environ["CONNECT_FIND_DEFAULT_HANDLER"]
RECORD_LAUNCH = os.environ["CONNECT_RECORD_LAUNCH"]

URL = "http://127.0.0.1:8080/a?b='c'&d=%20$(x);\\\"e\"|*"

ENVIRONMENT = {
    "HOME": "@/home",
    "XDG_CONFIG_HOME": "@/config",
    "XDG_CONFIG_DIRS": "@/etc1:@/etc2",
    "XDG_DATA_HOME": "@/data",
    "XDG_DATA_DIRS": "@/share1:@/share2",
    "XDG_CURRENT_DESKTOP": "Made:GNOME",
    "PATH": "@/bin",
    "DBUS_SESSION_BUS_ADDRESS": "unix:path=@/no-bus",
}
FIFO = None  # In the place of a text: who waits for its writer waits for ever.


class Layout:
    """In the texts, "@/" stands for the folder that holds it all. A variable that is None is not
    set. The programs, in the folder "bin", all print what they were started as."""

    def __init__(self, files, environment=None, url=URL, programs=("one", "two", "env")):
        self.files = files
        self.environment = ENVIRONMENT | (environment or {})
        self.url = url
        self.programs = programs

    def __str__(self):
        texts = [f"{name}={value}" for name, value in self.environment.items()]
        texts += [f"programs: {' '.join(self.programs)}", f"url: {self.url}"]
        for path, text in self.files.items():
            texts += [f"--- {path}", *map(repr, str(text).splitlines(keepends=True))]
        return "\n".join(texts)

    def make(self, root):
        os.makedirs(f"{root}/bin")
        for program in self.programs:
            os.makedirs(os.path.dirname(f"{root}/bin/{program}"), exist_ok=True)
            os.symlink(RECORD_LAUNCH, f"{root}/bin/{program}")
        for path, text in self.files.items():
            os.makedirs(os.path.dirname(f"{root}/{path}"), exist_ok=True)
            if text is FIFO:
                os.mkfifo(f"{root}/{path}")
                continue
            with open(f"{root}/{path}", "wb") as file:
                file.write(text.replace("@/", f"{root}/").encode("utf-8", "surrogateescape"))

    def scheme(self):
        return self.url.partition(":")[0].lower()

    @contextlib.contextmanager
    def made(self):
        """The environment of programs in the layout, and the folder that holds it."""
        with tempfile.TemporaryDirectory() as root:
            self.make(root)
            yield {name: value.replace("@/", f"{root}/")
                   for name, value in self.environment.items() if value is not None}, root

    def ours(self):
        with self.made() as place:
            return Answer.ours(self, *place)

    def answers(self):
        """Our answer and GIO's. GIO launches the URL only when our answer is plain."""
        with self.made() as (environment, root):
            ours = Answer.ours(self, environment, root)
            return ours, Answer.of_gio(self, environment, root, launches=ours.application)


class Answer:
    """The application's name; the program and the arguments that it was, or is to be, started
    with. The application is None where it was not found, or the answer is not plain."""

    def __init__(self, texts):
        self.application = texts[0] if texts else None
        self.launch = texts[1:]

    def __repr__(self):
        return f"{self.application}: {self.launch}"

    def __eq__(self, other):
        return self._compared() == other._compared()

    def _compared(self):
        """GIO's releases differ in whether a program's own name is its path."""
        program, name, arguments = self.launch[:1], self.launch[1:2], self.launch[2:]
        return self.application, program, [os.path.basename(each) for each in name], arguments

    @staticmethod
    def from_bytes(output, root):
        texts = output.decode("utf-8", "surrogateescape").split("\0")[:-1]
        return Answer([text.replace(f"{root}/", "@/") for text in texts])

    @staticmethod
    def ours(layout, environment, root):
        done = subprocess.run(
            [FIND_DEFAULT_HANDLER, layout.scheme(), layout.url],
            env=environment, cwd=root, stdout=subprocess.PIPE, timeout=30, check=True,
        )
        return Answer.from_bytes(done.stdout, root)

    @staticmethod
    def of_gio(layout, environment, root, launches):
        """GIO keeps what it has read, so each question needs a process of its own. It ends before
        the handler does, whose output is at its end when both are gone."""
        reader, writer = os.pipe()
        child = os.fork()
        if child == 0:
            status = 1
            try:
                os.dup2(writer, 1)
                os.dup2(os.open(os.devnull, os.O_WRONLY), 2)
                os.chdir(root)
                os.environ.clear()
                os.environ.update(environment)
                handler = Gio.AppInfo.get_default_for_uri_scheme(layout.scheme())
                if handler:
                    os.write(1, handler.get_id().removesuffix(".desktop").encode() + b"\0")
                    if launches:
                        Gio.AppInfo.launch_default_for_uri(layout.url, None)
                status = 0
            finally:
                os._exit(status)
        os.close(writer)
        with open(reader, "rb") as output:
            answer = Answer.from_bytes(output.read(), root)
        os.waitpid(child, 0)
        return answer

